# SPDX-License-Identifier: Apache-2.0
"""Whole receipts under a key: one call, one receipt, through lost answers and power cuts.

    with velno.Till("UB1234567890", listen="0.0.0.0:4100", app=5, ledger="till.ledger") as till:
        outcome = till.sell(receipt, key="4711")
        print(outcome.message())
"""

from __future__ import annotations

import contextlib
import ctypes
import json
import os
from collections.abc import Callable, Iterable
from datetime import timedelta
from types import TracebackType
from typing import Any

from . import _velnotill as low
from ._calls import interruptible
from ._values import c_text, listening_place, milliseconds, python_text
from .errors import NotOpen, check_till
from .outcome import Event, Outcome, event_of, outcome_of, taken_text
from .receipt import Content, to_json

Progress = Callable[[low.VelnoTillStage, Outcome], None]

ALL_STATES = tuple(low.VelnoTillState)
UNSETTLED_STATES = tuple(one for one in low.VelnoTillState if low.VELNOTILL_UNSETTLED_STATES >> one & 1)


class Till:
    """A register's ledger, open in this process: one at a time.

    A method that has to do with the register blocks until the order is settled, waits, or needs a person.
    Ctrl-C, and interrupt() on another thread, end that soon; the order goes on when it is handed over again.
    Every method may be called from any thread. What fails raises a TillError.
    """

    def __init__(
        self,
        serial: str,
        *,
        listen: str,
        app: int,
        ledger: str | os.PathLike[str],
        progress: Progress | None = None,
        connect_timeout: float = 10,
        answer_limit: float = 120,
        patience: float = 30,
    ) -> None:
        """Asks no register: orders do.

        listen: ADDRESS:PORT of this computer, where the register connects; or velno.RELAY
        app: number of the application
        ledger: path of the file, which is made when it is not there
        progress: called with a stage and the order, on the thread that works. It may call interrupt() and
            message() alone; what it raises is told to sys.unraisablehook and changes nothing
        connect_timeout: seconds for the register to connect
        answer_limit: seconds for an answer, in which somebody may have to act
        patience: seconds for a register that is busy, before the order waits
        """
        address, port = listening_place(listen)
        settings = low.VelnoTillSettings(
            size=ctypes.sizeof(low.VelnoTillSettings),
            appNo=app,
            port=port,
            connectTimeout=milliseconds(connect_timeout, "connect_timeout"),
            answerLimit=milliseconds(answer_limit, "answer_limit"),
            patience=milliseconds(patience, "patience"),
            serial=c_text(serial, "serial"),
            address=address,
            ledger=os.fsencode(ledger),
        )
        self._progress = progress
        self._listener = low.VelnoTillListener(self._hear)  # must live as long as the till
        self._till = ctypes.c_void_p()
        self._is_open = False
        check_till(low.velnotill_open(ctypes.byref(self._till), ctypes.byref(settings)))
        self._is_open = True
        if progress:
            check_till(low.velnotill_set_listener(self._till, self._listener, None))

    def __enter__(self) -> Till:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, problem: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.close()

    def close(self) -> None:
        """Interrupts what is under way and closes the ledger, which keeps all that was accepted."""
        if self._is_open:
            with contextlib.suppress(NotOpen):  # another thread was first
                interruptible(lambda: check_till(low.velnotill_close(self._till)), self.interrupt)
            self._is_open = False

    def interrupt(self) -> None:
        """Ends the work under way, whose call raises Interrupted. From any thread; never blocks."""
        low.velnotill_interrupt(self._till)  # which knows whether it is open

    def accept(self, receipt: Content, *, key: str) -> Outcome:
        """Puts a receipt on record, where it survives a power cut, and does nothing more."""
        content = to_json(receipt, "receipt")
        return self._order(key, lambda name, out: low.velnotill_accept(self._till, name, content, out))

    def sell(self, receipt: Content, *, key: str) -> Outcome:
        """Sells a receipt, once, however often the same is handed over. The outcome's state tells the rest.

        receipt: a mapping with the fields of docs/receipt-json.md (see velno.Receipt), or JSON
        key: 1 to 200 bytes; what your own books know the sale by
        """
        content = to_json(receipt, "receipt")
        return self._order(key, lambda name, out: low.velnotill_sell(self._till, name, content, out))

    def print_slip(self, slip: Content, *, key: str) -> Outcome:
        """Prints a slip of free text, once."""
        content = to_json(slip, "slip")
        return self._order(key, lambda name, out: low.velnotill_print_slip(self._till, name, content, out))

    def z_report(self, *, key: str) -> Outcome:
        """Makes a Z report, which ends the day, once for each key."""
        return self._order(key, lambda name, out: low.velnotill_z_report(self._till, name, out))

    def x_report(self, *, key: str) -> Outcome:
        """Makes an X report, the totals of the day so far."""
        return self._order(key, lambda name, out: low.velnotill_x_report(self._till, name, out))

    def work(self) -> None:
        """Works off every order that can go on: when the program starts, and when a register is back."""
        self._call(lambda: low.velnotill_work(self._till))

    def answer(self, key: str, answer: low.VelnoTillAnswer, *, person: str) -> Outcome:
        """A person's answer to the question of an order. work(), or handing it over again, acts upon it."""
        who = c_text(person, "person")
        return self._order(
            key, lambda name, out: low.velnotill_answer(self._till, name, int(answer), who, out)
        )

    def find(self, key: str) -> Outcome:
        """How an order stands. Asks no register. UnknownKey when there is none."""
        return self._order(key, lambda name, out: low.velnotill_find(self._till, name, out))

    def orders(self, states: Iterable[low.VelnoTillState] = ALL_STATES) -> list[Outcome]:
        """The orders of these states, as accepted. LedgerFailed when not all could be read."""
        found: list[Outcome] = []

        def visit(key: bytes, outcome: Any, _context: Any) -> None:
            found.append(outcome_of(python_text(key), outcome.contents))

        mask = sum({1 << state for state in states})
        visitor = low.VelnoTillVisitor(visit)
        self._call(lambda: low.velnotill_list(self._till, mask, visitor, None))
        return found

    def history(self, key: str) -> list[Event]:
        """Everything that happened to an order, from the first on."""
        events: list[Event] = []

        def note(event: Any, _context: Any) -> None:
            events.append(event_of(event.contents))

        historian = low.VelnoTillHistorian(note)
        name = c_text(key, "key")
        self._call(lambda: low.velnotill_history(self._till, name, historian, None))
        return events

    def record(self, key: str) -> dict[str, Any]:
        """An order with its content and history, as docs/receipts.md describes it: for a log, or a screen."""
        text = ctypes.c_void_p()
        name = c_text(key, "key")
        self._call(lambda: low.velnotill_json(self._till, name, ctypes.byref(text)))
        record: dict[str, Any] = json.loads(taken_text(text))
        return record

    def prune(self, age: timedelta) -> int:
        """Forgets settled orders that have not changed for so long, and tells how many.

        A key that is forgotten is a new one: choose an age at which nobody hands it over any more.
        """
        seconds = int(age.total_seconds())
        if not 0 <= seconds < 2**32:
            raise ValueError(f"age: {age}; accepted: 0 seconds to 136 years")
        count = ctypes.c_int()
        self._call(lambda: low.velnotill_prune(self._till, seconds, ctypes.byref(count)))
        return count.value

    def _order(self, key: str, function: Callable[[bytes, Any], int]) -> Outcome:
        name = c_text(key, "key")
        outcome = low.VelnoTillOutcome(size=ctypes.sizeof(low.VelnoTillOutcome))
        self._call(lambda: function(name, ctypes.byref(outcome)))
        return outcome_of(key, outcome)

    def _call(self, function: Callable[[], int]) -> None:
        if not self._is_open:
            raise NotOpen(low.VelnoTillResult.NOT_OPEN)
        interruptible(lambda: check_till(function()), self.interrupt)

    def _hear(self, key: bytes, stage: int, outcome: Any, _context: Any) -> None:
        if self._progress:
            self._progress(low.VelnoTillStage(stage), outcome_of(python_text(key), outcome.contents))
