# SPDX-License-Identifier: Apache-2.0
"""Single commands to a register, for who wants to sell step by step.

    with velno.Register("UB1234567890", listen="0.0.0.0:4100", app=5) as register:
        with register.sale() as sale:
            sale.add("Ekmek", price=Decimal("12.50"))

What a lost answer leaves behind is the caller's to find out; a Till does that by itself.
"""

from __future__ import annotations

import ctypes
import threading
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from decimal import Decimal
from types import TracebackType
from typing import Any, NamedTuple

from . import _velnoext as low
from ._calls import interruptible
from ._values import c_text, known, lira, listening_place, milliseconds, python_text
from .errors import NoPaper, check
from .outcome import Reference, Totals, totals_of
from .sale import Sale
from .slip import SlipLines

# The library has one active register, one cause and one slip: what belongs to a call must stay with it.
_together = threading.RLock()

_MOST_ACQUIRERS = 256


class Section(NamedTuple):
    name: str
    number: int  # that the register defines; the simulated one: its tax rate in per cent


class Register:
    """A register that is connected. Any number of them may be, at different ports.

    Ctrl-C, and interrupt() on another thread, end a call that waits with ConnectionFailed; connect() then
    connects afresh. Every method may be called from any thread. What fails raises a RegisterError.
    """

    def __init__(
        self, serial: str, *, listen: str, app: int, connect_timeout: float | None = 30, timeout: float = 5
    ) -> None:
        """Waits for the register to connect, and pairs with it if need be.

        serial: 12 characters
        listen: ADDRESS:PORT of this computer, where the register connects; or velno.RELAY
        app: number of the application
        connect_timeout: seconds for it to connect; None: no limit
        timeout: seconds of silence allowed in the rest of an answer; see also velno.set_answer_limit()
        """
        self.serial = serial
        self._name = c_text(serial, "serial")
        self._place = listening_place(listen)
        self._app = app
        self._connect_timeout = milliseconds(connect_timeout, "connect_timeout")
        self._timeout = milliseconds(timeout, "timeout")
        self.connect()

    def __enter__(self) -> Register:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, problem: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.close()

    def connect(self) -> None:
        """Connects afresh, without pairing again: after ConnectionFailed."""
        address, port = self._place
        arguments = (self._app, self._name, address, port, self._connect_timeout)
        self._alone(low.velnoext_initialize, *arguments, selects=False)

    def close(self) -> None:
        """Ends the connection; the keys stay. Harmless when there is none."""

        def close() -> None:
            with _together:
                if low.velnoext_set_active_device(self._name) == 0:
                    low.velnoext_close()

        interruptible(close, low.velnoext_interrupt)

    def forget(self) -> None:
        """Closes, and drops the keys: for a register that has lost its own. The next connect() pairs anew."""
        self._alone(low.velnoext_forget_device, self._name, selects=False)

    def interrupt(self) -> None:
        """Ends the call that is under way in this process. From any thread; never blocks."""
        low.velnoext_interrupt()

    @contextmanager
    def sale(self, *, invoice: bool = False) -> Iterator[Sale]:
        """Starts a sale. Leaving the block ends it, what is left being paid in cash, unless end() was called
        before. An exception cancels it.

        invoice: it is to end with Sale.end_with_invoice(), which must be called
        """
        start = low.velnoext_start_sale_with_invoice if invoice else low.velnoext_start_sale
        self.command(start, self._timeout)
        sale = Sale(self)
        try:
            yield sale
            if invoice and not sale.is_over:
                raise ValueError("a sale with invoice ends with end_with_invoice()")
            if not sale.is_over:
                sale.end()
        except BaseException as problem:
            sale.abandon(problem)
            raise

    @contextmanager
    def slip(self, encoding: str = "UTF-8", *, flag: bool = False) -> Iterator[SlipLines]:
        """Collects a slip of free text, which is printed when the block is left without an exception."""
        lines = SlipLines(encoding)
        yield lines

        def send() -> None:
            with _together:
                self._select()
                lines.send()
                check("velnoext_print_slip", low.velnoext_print_slip(self._timeout, flag))

        interruptible(send, low.velnoext_interrupt)

    def login(self) -> None:
        """Opens the application's session; a register in the field may want it before it sells."""
        self.command(low.velnoext_login, self._timeout)

    def logout(self) -> None:
        self.command(low.velnoext_logout, self._timeout)

    def has_paper(self) -> bool:
        try:
            self.command(low.velnoext_check_printer_paper, self._timeout)
        except NoPaper:
            return False
        return True

    def state(self) -> low.VelnoEcrState | int:
        return known(low.VelnoEcrState, self._number(low.velnoext_ecr_state))

    def current_z(self) -> int:
        """The number of the current Z report."""
        return self._number(low.velnoext_current_z)

    def last_z_time(self) -> int:
        """When the last Z report was made; the register's number, the simulated one's seconds since 1970."""
        return self._number(low.velnoext_last_z_datetime)

    def clock(self) -> int:
        """A number like last_z_time()."""
        return self._number(low.velnoext_ecr_datetime)

    def sale_limit(self) -> Decimal:
        limit = ctypes.c_longlong()
        self.command(low.velnoext_sale_limit, self._timeout, ctypes.byref(limit))
        return lira(limit.value)

    def own_serial(self) -> str:
        """The serial number that it gave when it was paired. Asks nobody."""
        buffer = ctypes.create_string_buffer(64)
        self.command(low.velnoext_ecr_serialno, buffer)
        return python_text(buffer.value)

    def acquirers(self) -> list[int]:
        """The banks that it takes cards for, by their numbers."""
        return self.numbers(low.velnoext_active_acquirers)

    def section(self, number: int) -> Section:
        """What it knows of a section (department), 1 to 8."""
        item = low.VelnoSaleItem(section=number if -128 <= number < 128 else 0)
        self.command(low.velnoext_section_data, self._timeout, ctypes.byref(item))
        return Section(python_text(item.name), item.quantity)

    def receipt(self, reference: Reference) -> Totals:
        """The totals of a receipt that has been closed."""
        numbers = low.VelnoReceiptRef(reference.z, reference.number)
        return self.totals(low.velnoext_receipt_data, ctypes.byref(numbers))

    def x_report(self) -> None:
        """Prints the totals of the day so far."""
        self.command(low.velnoext_x_report)

    def z_report(self) -> None:
        """Prints a Z report, which ends the day."""
        self.command(low.velnoext_z_report)

    # For a sale, and for functions of velnoext.h that have no method here.

    def command(self, function: Callable[..., int], *arguments: Any) -> None:
        """Calls a function of velno._velnoext with this register active, and raises what it returns."""
        self._alone(function, *arguments, selects=True)

    def totals(self, function: Callable[..., int], *arguments: Any) -> Totals:
        """The same of a function that ends with an output for totals."""
        totals = low.VelnoEcrSaleTotals()
        self.command(function, self._timeout, *arguments, ctypes.byref(totals))
        return totals_of(totals)

    def numbers(self, function: Callable[..., int]) -> list[int]:
        """The same of a function that fills a list of numbers."""
        listed = (ctypes.c_int * _MOST_ACQUIRERS)()
        count = ctypes.c_int(_MOST_ACQUIRERS)
        self.command(function, self._timeout, listed, ctypes.byref(count))
        return list(listed[: count.value])

    @property
    def timeout_ms(self) -> int:
        return self._timeout

    def _number(self, function: Callable[..., int]) -> int:
        number = ctypes.c_int()
        self.command(function, self._timeout, ctypes.byref(number))
        return number.value

    def _alone(self, function: Callable[..., int], *arguments: Any, selects: bool) -> None:
        def call() -> None:
            with _together:
                if selects:
                    self._select()
                check(function.__name__, function(*arguments))

        interruptible(call, low.velnoext_interrupt)

    def _select(self) -> None:
        check("velnoext_set_active_device", low.velnoext_set_active_device(self._name))
