# SPDX-License-Identifier: Apache-2.0
"""What the tests share: ports, the simulated register as a child process, and receipts.

VELNO_REGISTER names velno-register, VELNO_LIBRARY the folder with the libraries.
"""

from __future__ import annotations

import ctypes
import itertools
import json
import os
import queue
import random
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import unittest
from decimal import Decimal
from pathlib import Path
from typing import Any

PYTHON = sys.executable
BINDING = Path(__file__).resolve().parents[1]
ROOT = BINDING.parents[1]
sys.path.insert(0, str(BINDING))

LONGEST_WAIT = 30  # seconds, for a machine under load

# Ports below those that systems give to outgoing connections; each process has a hundred of its own, as in
# the tests written in C++, because a register that looks for its application must not find another test's.
_LOWEST_PORT, _PROCESSES, _PORTS_EACH = 10_000, 200, 100
_SET_PARENT_DEATH_SIGNAL = 1


def _own_ports() -> int:
    """The first, whose UDP port is held until the process ends."""
    for _ in range(100 * _PROCESSES):
        first = _LOWEST_PORT + _PORTS_EACH * random.SystemRandom().randrange(_PROCESSES)
        held = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        try:
            held.bind(("0.0.0.0", first))
            held.detach()
            return first
        except OSError:
            held.close()
    raise RuntimeError("no free ports")


_first_port = _own_ports()
_ports_given = 0


def free_port() -> int:
    global _ports_given
    for _ in range(_PORTS_EACH):
        port = _first_port + _ports_given % _PORTS_EACH
        _ports_given += 1
        with socket.socket() as tried:
            # As the library listens: connections of the last minute, another process's too, leave the port free.
            tried.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            try:
                tried.bind(("0.0.0.0", port))
                return port
            except OSError:
                continue
    raise RuntimeError("no free port")


def ends_with_test() -> None:
    """In the child: it does not outlive a test that crashes."""
    ctypes.CDLL(None).prctl(_SET_PARENT_DEATH_SIGNAL, signal.SIGKILL)


class RegisterProcess:
    """The real velno-register, which connects to this port."""

    def __init__(self, serial: str, port: int, *arguments: str) -> None:
        where = ["--serial", serial, "--connect", f"127.0.0.1:{port}"]
        self._process = subprocess.Popen(
            [os.environ["VELNO_REGISTER"], "--json", *where, *arguments],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            text=True,
            preexec_fn=ends_with_test,
        )
        self.events: queue.SimpleQueue[dict[str, Any]] = queue.SimpleQueue()
        self._kept: list[dict[str, Any]] = []
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        self.wait_for("ready")

    def _read(self) -> None:
        assert self._process.stdout
        for line in self._process.stdout:
            self.events.put(json.loads(line))

    def wait_for(self, event: str, **fields: Any) -> dict[str, Any]:
        """The next event of this name with these fields."""
        while True:
            self._kept.append(self.events.get(timeout=LONGEST_WAIT))
            if self._kept[-1]["event"] == event and fields.items() <= self._kept[-1].items():
                return self._kept[-1]
            if self._kept[-1]["event"] == "error":
                raise ValueError(self._kept[-1]["message"])

    def printed(self) -> list[str]:
        """The kinds of what it has printed. Its faults are off then."""
        self.fault("none")  # its answer comes behind everything else
        return [one["kind"] for one in self.told("printed")]

    def told(self, event: str) -> list[dict[str, Any]]:
        """The events of this name, up to the one that was waited for."""
        return [one for one in self._kept if one["event"] == event]

    def say(self, line: str, answer: str) -> None:
        """A line on its standard input, and the event that it gives."""
        assert self._process.stdin
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()
        self.wait_for(answer)

    def fault(self, name: str) -> None:
        self.say(f"fault {name}", "fault")

    def kill(self) -> None:
        self._process.kill()
        self._process.wait(LONGEST_WAIT)

    def stop(self) -> None:
        self._process.terminate()
        self._process.wait(LONGEST_WAIT)
        self._reader.join(LONGEST_WAIT)
        for pipe in (self._process.stdin, self._process.stdout):
            assert pipe
            pipe.close()


class RegisterTest(unittest.TestCase):
    """Each test has a serial number, a port and a folder, and registers that end with it."""

    _serials = itertools.count()

    def setUp(self) -> None:
        self.serial = f"UB{next(self._serials):010}"  # for another register the library holds no keys
        self.port = free_port()
        self.listen = f"127.0.0.1:{self.port}"
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def start_register(self, *arguments: str) -> RegisterProcess:
        register = RegisterProcess(self.serial, self.port, *arguments)
        self.addCleanup(register.stop)
        return register

    def readme_examples(self, binding: Path, language: str) -> list[tuple[str, str]]:
        """Each example in the README that has its output below it; with this test's register and port."""
        text = (binding / "README.md").read_text(encoding="utf-8")
        block = rf"^```{language}\n(.*?)^```\n\n```\n(.*?)^```$"
        return [
            (self._with_own_register(example), output)
            for example, output in re.findall(block, text, re.DOTALL | re.MULTILINE)
        ]

    def _with_own_register(self, example: str) -> str:
        for stands, taken in ("UB1234567890", self.serial), ("0.0.0.0:4100", self.listen):
            self.assertEqual(example.count(stands), 1)
            example = example.replace(stands, taken)
        return example


def run_python(
    *arguments: str, cwd: Path | None = None, **environment: str
) -> subprocess.CompletedProcess[str]:
    """A program in Python, which finds the package unless the environment says another PYTHONPATH."""
    everything = {**os.environ, "PYTHONPATH": str(BINDING), **environment}
    command = [PYTHON, "-B", *arguments]
    return subprocess.run(command, env=everything, cwd=cwd, capture_output=True, text=True, check=False)


def bread(price: str = "12.50", name: str = "Ekmek") -> dict[str, Any]:
    return {"items": [{"name": name, "price": Decimal(price), "section": 1}], "payments": [{"cash": "rest"}]}
