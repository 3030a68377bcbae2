# SPDX-License-Identifier: Apache-2.0
"""What every binding that is compiled has to show: its tests derive from CompiledBindingTest and say how programs of
their language are compiled and run."""

from __future__ import annotations

import fcntl
import os
import pty
import re
import signal
import subprocess
import sys
import tempfile
import termios
from pathlib import Path

BINDINGS = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(BINDINGS / "python" / "tests"), str(BINDINGS / "generator")]

import support
import test_layout


class CompiledBindingTest(support.RegisterTest):
    """The programs Checks and Market are compiled once, into `built`."""

    language: str  # of the binding's folder, and of the blocks in its README
    connecting: str  # how the language writes a stage's name
    card_payment: str
    statuses_after_ctrl_c: tuple[int, ...]
    built: Path

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.built = Path(folder.name)
        cls.compile_all()

    @classmethod
    def folder_of_binding(cls) -> Path:
        return BINDINGS / cls.language

    @classmethod
    def compile_all(cls) -> None:
        """Compiles the binding with its checks and its example."""
        raise NotImplementedError

    def compile_readme(self, text: str) -> str:
        """Compiles the lines of the README. Returns the program's name."""
        raise NotImplementedError

    def command_of(self, program: str) -> list[str]:
        """What runs a program that has been compiled."""
        raise NotImplementedError

    def run_program(
        self, program: str, *arguments: str, **environment: str
    ) -> subprocess.CompletedProcess[str]:
        command = [*self.command_of(program), *arguments]
        everything = {**os.environ, **environment}
        return subprocess.run(
            command, cwd=self.folder, env=everything, capture_output=True, text=True, check=False
        )

    def check(self, *arguments: str) -> str:
        done = self.run_program("Checks", *arguments)
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        return done.stdout

    def test_every_function_is_bound(self) -> None:
        declared = {
            f"{name} {len(getattr(module._library, name).argtypes)}"
            for module in test_layout.HEADERS
            for name in vars(module)
            if re.match(r"velno(ext|till)_(?!set_log_line)\w+$", name)
        }
        self.assertEqual(set(self.check("functions").splitlines()), declared)

    def test_values_are_written_exactly_or_refused(self) -> None:
        self.check("values")

    def test_the_libraries_lie_where_the_loader_looks(self) -> None:
        done = self.run_program(
            "Checks", "values", VELNO_LIBRARY="", LD_LIBRARY_PATH=os.environ["VELNO_LIBRARY"]
        )
        self.assertEqual((done.stderr, done.returncode), ("", 0))

    def test_the_folder_that_is_named_is_the_only_one(self) -> None:
        named = str(self.folder)
        done = self.run_program(
            "Checks", "values", VELNO_LIBRARY=named, LD_LIBRARY_PATH=os.environ["VELNO_LIBRARY"]
        )
        self.assertNotEqual(done.returncode, 0)
        self.assertIn(f"{named}/libvelnoext.so.0", done.stderr)
        self.assertIn("VELNO_LIBRARY", done.stderr)

    def test_receipts(self) -> None:
        process = self.start_register()
        self.check("till", self.serial, self.listen, "ledger")
        self.assertEqual(process.printed(), ["receipt", "x-report", "z-report", "slip"])

    def test_waits_can_be_ended(self) -> None:
        self.check("alone", self.serial, self.listen, "ledger")

    def test_single_commands(self) -> None:
        process = self.start_register()
        self.check("register", self.serial, self.listen)
        self.assertEqual(process.printed(), ["receipt", "cancelled", "cancelled", "x-report", "z-report"])

    def test_what_a_register_tells(self) -> None:
        self.start_register("--z", "12", "--last-z", "1000", "--clock", "2000", "--sale-limit", "123456",
                            "--no-paper")
        self.check("queries", self.serial, self.listen)

    def test_slips_sales_and_invoices(self) -> None:
        process = self.start_register()
        self.check("sales", self.serial, self.listen)
        self.assertEqual(process.printed(), ["slip", "receipt", "invoice"])
        lines = process.told("printed")[0]["lines"]
        self.assertTrue([line for line in lines if "İYİ GÜNLER" in line])
        self.assertTrue([line for line in lines if line.startswith("Masa") and line.endswith("7")])

    def test_a_markets_sale_comes_through_lost_answers(self) -> None:
        process = self.start_register("--fault", "lost-answer=change-state*3")
        arguments = [self.serial, self.listen, "ledger", "4711"]
        first, again = self.run_program("Market", *arguments), self.run_program("Market", *arguments)
        self.assertEqual((first.stderr, first.returncode), ("", 0))
        stages, told = first.stdout.split("Receipt", 1)
        self.assertRegex(told, r"^ 1 of Z 1 is closed: total 115.38 TL, cash 50.00 TL, card 65.38 TL,")
        self.assertIn(f"  4711: {self.card_payment}\n", stages)
        self.assertEqual((again.stderr, again.returncode, again.stdout), ("", 0, f"Receipt{told}"))
        self.assertEqual(process.printed(), ["receipt"])

    def test_ctrl_c_ends_the_markets_wait(self) -> None:
        for _ in range(3):  # one that does not wait for the till often has the time, too
            problems, status = self.type_ctrl_c("Market", self.serial, self.listen, "ledger", "4711")
            self.assertIn(problems, ("", "Interrupted; the order goes on when it is asked for again.\n"))
            self.assertIn(status, self.statuses_after_ctrl_c)
            self.assertEqual([one.name for one in self.folder.iterdir()], ["ledger"])

    def type_ctrl_c(self, program: str, *arguments: str) -> tuple[str, int]:
        """On a terminal, when the program connects. Returns what it says as an error, and its status."""
        typed, terminal = pty.openpty()
        self.addCleanup(os.close, typed)
        with subprocess.Popen(
            [*self.command_of(program), *arguments],
            cwd=self.folder,
            env={**os.environ, "TERM": "xterm"},
            stdin=terminal,
            stdout=terminal,
            stderr=subprocess.PIPE,
            text=True,
            start_new_session=True,
            preexec_fn=own_terminal,
        ) as running:
            os.close(terminal)
            told = b""
            while f": {self.connecting}".encode() not in told:
                told += os.read(typed, 1000)
            os.write(typed, b"\x03")
            _, problems = running.communicate(timeout=support.LONGEST_WAIT)
        return problems, running.returncode

    def test_the_readmes_lines_sell(self) -> None:
        [[example, output]] = self.readme_examples(self.folder_of_binding(), self.language)
        self.assertLessEqual(example.count("\n"), 10)
        program = self.compile_readme(example)
        process = self.start_register()
        for _ in range(2):
            done = self.run_program(program)
            self.assertEqual((done.stderr, done.stdout), ("", output))
        self.assertEqual(process.printed(), ["receipt"])


def own_terminal() -> None:
    """In the child: its input is the terminal whose Ctrl-C it hears, also where tests run without one."""
    fcntl.ioctl(0, termios.TIOCSCTTY, 0)
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    support.ends_with_test()


def run_or_fail(*command: str) -> None:
    """Raises RuntimeError with what the command said."""
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(done.stdout + done.stderr)
