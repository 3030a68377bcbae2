# SPDX-License-Identifier: Apache-2.0
"""Ctrl-C, interrupt() and asyncio, while a call waits for a register."""

from __future__ import annotations

import asyncio
import concurrent.futures
import os
import signal
import subprocess
import threading
import time
import unittest
from unittest import mock

import support
import velno
from velno import _calls

# Prints how a call ended by SIGINT has ended; `waits` is said when the call is about to be made.
PROGRAM = """
import sys
sys.path.insert(0, sys.argv[1])
import velno
serial, listen, ledger = sys.argv[2:]
def told(stage, order):
    print(stage.name, flush=True)
try:
    if ledger:
        options = {"listen": listen, "app": 5, "connect_timeout": 1000}
        with velno.Till(serial, ledger=ledger, progress=told, **options) as till:
            try:
                receipt = {"items": [{"name": "a", "price": 1, "section": 1}], "payments": [{"cash": "rest"}]}
                till.sell(receipt, key="1")
            finally:
                print(till.find("1").state.name)
    else:
        print("CONNECTING", flush=True)
        velno.Register(serial, listen=listen, app=5, connect_timeout=None)
except KeyboardInterrupt:
    print("interrupted")
"""


def signal_at_command(process: support.RegisterProcess, number: int) -> threading.Thread:
    """Sends it to this process when the register has got the next command."""

    def run() -> None:
        process.wait_for("command")
        os.kill(os.getpid(), number)

    thread = threading.Thread(target=run)
    thread.start()
    return thread


class CtrlC(support.RegisterTest):
    def interrupted(self, ledger: str) -> list[str]:
        """The last lines of a program that waits for a register which never comes."""
        arguments = [str(support.BINDING), self.serial, self.listen, ledger]
        with subprocess.Popen(
            [support.PYTHON, "-B", "-c", PROGRAM, *arguments],
            stdout=subprocess.PIPE,
            text=True,
            preexec_fn=support.ends_with_test,
        ) as program:
            assert program.stdout
            self.assertEqual(program.stdout.readline(), "CONNECTING\n")
            program.send_signal(signal.SIGINT)
            lines = program.stdout.read().splitlines()
            self.assertEqual(program.wait(support.LONGEST_WAIT), 0)
        return lines

    def test_ends_a_wait_for_a_register_to_connect(self) -> None:
        self.assertEqual(self.interrupted(""), ["interrupted"])

    def test_ends_a_receipt_which_stays_on_record(self) -> None:
        self.assertEqual(self.interrupted(str(self.folder / "ledger"))[-2:], ["ACCEPTED", "interrupted"])

    def test_ends_a_wait_for_an_answer(self) -> None:
        process = self.start_register("--fault", "mute=login")
        with velno.Register(self.serial, listen=self.listen, app=5) as register:
            killer = signal_at_command(process, signal.SIGINT)
            began = time.monotonic()
            with self.assertRaises(KeyboardInterrupt):
                register.login()
            self.assertLess(time.monotonic() - began, support.LONGEST_WAIT)
            killer.join()
            process.fault("none")
            register.connect()
            register.login()

    def test_handlers_of_other_signals_run_while_a_call_waits(self) -> None:
        process = self.start_register("--fault", "mute=login")
        seen: list[int] = []

        def handle(number: int, _frame: object) -> None:
            seen.append(number)
            register.interrupt()

        before = signal.signal(signal.SIGUSR1, handle)
        self.addCleanup(signal.signal, signal.SIGUSR1, before)
        register = velno.Register(self.serial, listen=self.listen, app=5)
        self.addCleanup(register.close)
        killer = signal_at_command(process, signal.SIGUSR1)
        with self.assertRaises(velno.ConnectionFailed) as caught:
            register.login()
        killer.join()
        self.assertEqual((seen, caught.exception.cause), ([signal.SIGUSR1], velno.Cause.INTERRUPTED))


class OtherThreads(support.RegisterTest):
    def test_interrupt_ends_the_call_of_another_thread(self) -> None:
        ledger = self.folder / "ledger"
        till = velno.Till(self.serial, listen=self.listen, app=5, ledger=ledger, connect_timeout=1000)
        self.addCleanup(till.close)
        problems: list[BaseException] = []

        def sell() -> None:
            try:
                till.sell(support.bread(), key="4711")
            except velno.Error as problem:
                problems.append(problem)

        seller = threading.Thread(target=sell)
        seller.start()
        while seller.is_alive():  # the first may come before the call
            till.interrupt()
            seller.join(0.02)
        self.assertIsInstance(problems[0], velno.Interrupted)

    def test_no_wait_of_the_main_thread_outlasts_a_signal_that_came_too_early_for_it(self) -> None:
        with mock.patch.object(_calls, "wait", wraps=concurrent.futures.wait) as waits:
            _calls.interruptible(lambda: time.sleep(0.3), lambda: None)
        self.assertGreater(waits.call_count, 1)
        self.assertTrue(all(one.args[1] < 1 for one in waits.call_args_list))

    def test_a_handler_may_call_while_the_main_thread_waits(self) -> None:
        answers: list[str] = []

        def handle(_number: int, _frame: object) -> None:
            _calls.interruptible(lambda: answers.append("handler"), lambda: None)
            handled.set()

        handled = threading.Event()
        before = signal.signal(signal.SIGUSR1, handle)
        self.addCleanup(signal.signal, signal.SIGUSR1, before)

        def call() -> None:
            os.kill(os.getpid(), signal.SIGUSR1)
            self.assertTrue(handled.wait(support.LONGEST_WAIT))
            answers.append("call")

        _calls.interruptible(call, lambda: None)
        self.assertEqual(answers, ["handler", "call"])

    def test_a_call_that_was_not_begun_is_never_made(self) -> None:
        made: list[str] = []
        with mock.patch.object(_calls, "_worker", side_effect=KeyboardInterrupt):
            with self.assertRaises(KeyboardInterrupt):
                _calls.interruptible(lambda: made.append("made"), lambda: made.append("interrupted"))
        self.assertEqual(made, [])


class Coroutines(support.RegisterTest):
    def open_till(self) -> velno.Till:
        ledger = self.folder / "ledger"
        till = velno.Till(self.serial, listen=self.listen, app=5, ledger=ledger, connect_timeout=1000)
        self.addCleanup(till.close)
        return till

    def test_a_coroutine_sells_while_others_run(self) -> None:
        till = self.open_till()

        async def main() -> velno.Outcome:
            selling = asyncio.create_task(velno.in_thread(till.sell, support.bread(), key="4711"))
            while not till.orders():  # the loop runs on while the register is waited for
                await asyncio.sleep(0)
            self.assertFalse(selling.done())
            self.start_register()
            return await selling

        self.assertTrue(asyncio.run(main()).is_closed)

    def test_a_cancelled_task_ends_the_call(self) -> None:
        till = self.open_till()

        async def main() -> None:
            selling = asyncio.create_task(velno.in_thread(till.sell, support.bread(), key="4711"))
            while not till.orders():
                await asyncio.sleep(0)
            selling.cancel()
            await selling

        self.assertRaises(asyncio.CancelledError, asyncio.run, main())
        self.assertEqual(till.find("4711").state, velno.State.ACCEPTED)

    def test_errors_come_out_and_other_functions_are_refused(self) -> None:
        till = self.open_till()
        self.assertRaises(velno.UnknownKey, asyncio.run, velno.in_thread(till.find, "none"))
        self.assertRaisesRegex(TypeError, "a method of", asyncio.run, velno.in_thread(time.sleep, 1))


if __name__ == "__main__":
    unittest.main()
