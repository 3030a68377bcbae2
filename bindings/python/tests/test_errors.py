# SPDX-License-Identifier: Apache-2.0
"""An exception class for each result: each can be had, and says what happened."""

from __future__ import annotations

import os
import subprocess
import unittest
from collections.abc import Callable
from pathlib import Path

import support
import velno
from velno import _velnoext as low
from velno import errors

Step = Callable[[velno.Register], object]


def start(register: velno.Register) -> None:
    with register.sale():
        pass


def section_nowhere(register: velno.Register) -> None:
    register.command(low.velnoext_ecr_state, 1000, None)


# Each class, the options of velno-register, and the step that fails; without one connecting fails.
WAYS: list[tuple[type[velno.RegisterError], int, list[str], Step | None]] = [
    (velno.ConnectionFailed, velno.Cause.CLOSED_WHILE_WAITING, ["--fault", "close=login"],
     velno.Register.login),
    (velno.NullArgument, velno.Cause.NULL_ARGUMENT, [], section_nowhere),
    (velno.BadValue, velno.Cause.BAD_ARGUMENT, [], lambda register: register.section(9)),
    (velno.ReplyUnreadable, velno.Cause.ANSWER_TOO_SHORT, ["--fault", "short-reply"],
     velno.Register.current_z),
    (velno.WrongState, velno.Cause.OF_STATE + 8, ["--state", "8"], start),
    (velno.StepNotTaken, velno.Cause.WRONG_KEY, ["--fault", "error=1"], start),
    (velno.Refused, velno.Cause.SAID_NO, ["--fault", "refuse=login"], velno.Register.login),
    (velno.NoPaper, velno.Cause.PRINTER_EMPTY, ["--no-paper"],
     lambda register: register.command(low.velnoext_check_printer_paper, 1000)),
    (velno.PairingFailed, velno.Cause.CERTIFICATE_NOT_TRUSTED, ["--fault", "wrong-authority"], None),
    (velno.NotAuthentic, velno.Cause.MAC_WRONG, ["--fault", "bad-mac"], velno.Register.login),
    (velno.MalformedReply, velno.Cause.ELEMENTS_WRONG, ["--fault", "no-mac"], velno.Register.login),
]  # fmt: skip

WITHOUT_ITS_FILE = """
import os, sys
sys.path.insert(0, sys.argv[1])
import velno
os.unlink(sys.argv[2])
try:
    velno.Register("UB1234567890", listen=sys.argv[3], app=5)
except velno.NoApplicationHash as problem:
    print(int(problem.result), problem.cause_name)
"""


class Results(support.RegisterTest):
    def fails(
        self, wanted: type[velno.RegisterError], cause: int, options: list[str], step: Step | None
    ) -> None:
        self.setUp()
        process = support.RegisterProcess(self.serial, self.port, *options)
        try:
            with self.assertRaises(wanted) as caught:
                with velno.Register(self.serial, listen=self.listen, app=5) as register:
                    assert step
                    step(register)
        finally:
            process.stop()
        problem = caught.exception
        self.assertEqual(problem.cause, cause)
        for text in problem.result_text, problem.cause_text:
            self.assertEqual(len(text.splitlines()), 3)
        self.assertIn(f"({problem.result_name}, {int(problem.result)})", str(problem))
        self.assertIn(f"({problem.cause_name}, {cause})", str(problem))

    def test_each_can_be_had_from_the_simulated_register(self) -> None:
        for wanted, cause, options, step in WAYS:
            with self.subTest(wanted.__name__):
                self.fails(wanted, cause, options, step)

    def test_a_register_that_is_closed_is_not_ready(self) -> None:
        self.start_register()
        with velno.Register(self.serial, listen=self.listen, app=5) as register:
            pass
        with self.assertRaises(velno.NotReady) as caught:
            register.state()
        self.assertEqual(caught.exception.cause, velno.Cause.NOT_CONNECTED)

    def test_a_program_without_its_file_cannot_pair(self) -> None:
        self.start_register()
        copy = self.folder / "python"
        copy.write_bytes(Path(support.PYTHON).resolve().read_bytes())
        copy.chmod(0o700)
        done = subprocess.run(
            [str(copy), "-B", "-c", WITHOUT_ITS_FILE, str(support.BINDING), str(copy), self.listen],
            env={**os.environ, "PYTHONHOME": "/usr"},
            capture_output=True,
            text=True,
            check=False,
        )
        self.assertEqual((done.stdout, done.returncode), ("13 program-unreadable\n", 0), done.stderr)


class Classes(unittest.TestCase):
    def test_every_result_has_one(self) -> None:
        self.assertEqual(set(errors._OF_RESULT), set(velno.Result) - {velno.Result.SUCCESS})
        self.assertEqual(set(errors._OF_TILL_RESULT), set(velno.TillResult) - {velno.TillResult.DONE})
        ways = {wanted for wanted, *_ in WAYS} | {velno.NotReady, velno.NoApplicationHash}
        self.assertEqual(set(errors._OF_RESULT.values()), ways)

    def test_each_is_a_velno_error_with_words(self) -> None:
        for result, kind in errors._OF_TILL_RESULT.items():
            problem = kind(result)
            self.assertIsInstance(problem, velno.Error)
            self.assertTrue(str(problem) and problem.result_name != "unknown")

    def test_success_is_none(self) -> None:
        errors.check("velnoext_login", 0)
        errors.check_till(0)


if __name__ == "__main__":
    unittest.main()
