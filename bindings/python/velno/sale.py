# SPDX-License-Identifier: Apache-2.0
"""An open sale, see Register.sale()."""

from __future__ import annotations

import ctypes
from collections.abc import Sequence
from dataclasses import dataclass
from typing import TYPE_CHECKING, NamedTuple

from . import _velnoext as low
from ._values import Amount, Quantity, field_text, kurus, thousandths
from .errors import ConnectionFailed, Error, NotReady, PaymentNotTaken, SaleStillOpen, WrongState
from .outcome import Reference, Totals, totals_of

if TYPE_CHECKING:
    from .register import Register

_NAME_BYTES = 52
_MOST_AT_ONCE = 10


@dataclass(frozen=True)
class Line:
    """A line of a sale. With price "0" the name is a remark on the receipt."""

    name: str  # up to 52 bytes in UTF-8
    price: Amount  # of one unit
    quantity: Quantity = 1
    section: int = 1  # 1 to 8: it decides the tax
    unit: low.VelnoItemType = low.VelnoItemType.PIECE
    percentage: int = 0  # -10: ten percent off
    discount: Amount = "0"  # counts while percentage is 0

    def in_c(self) -> low.VelnoSaleItem:
        return low.VelnoSaleItem(
            price=kurus(self.price, "price"),
            quantity=thousandths(self.quantity),
            percentage=_number(self.percentage, "percentage", -100, 100),
            amount=kurus(self.discount, "discount"),
            name=field_text(self.name, _NAME_BYTES, "name"),
            section=_number(self.section, "section", 1, 8),
            type=_number(self.unit, "unit", 0, 7),
        )


def _number(value: int, what: str, lowest: int, highest: int) -> int:
    """A structure would take the last bits of a larger one."""
    if not isinstance(value, int) or not lowest <= value <= highest:
        raise ValueError(f"{what}: {value!r}; accepted: {lowest} to {highest}")
    return int(value)


class SaleState(NamedTuple):
    first: int  # the first number of the register's list: its state
    totals: Totals
    reference: Reference  # of the receipt of this sale


class Sale:
    def __init__(self, register: Register) -> None:
        self._register = register
        self.is_over = False  # its end was asked for, whatever came of it

    def interrupt(self) -> None:
        self._register.interrupt()

    def add(
        self,
        name: str,
        *,
        price: Amount,
        quantity: Quantity = 1,
        section: int = 1,
        unit: low.VelnoItemType = low.VelnoItemType.PIECE,
        percentage: int = 0,
        discount: Amount = "0",
    ) -> Totals:
        """Adds one line; see Line."""
        line = Line(name, price, quantity, section, unit, percentage, discount)
        return self._register.totals(low.velnoext_add_sale_item, ctypes.byref(line.in_c()))

    def add_all(self, lines: Sequence[Line]) -> Totals:
        """Adds one to ten lines at once, all or none."""
        if not 1 <= len(lines) <= _MOST_AT_ONCE:
            raise ValueError(f"{len(lines)} lines; accepted: 1 to {_MOST_AT_ONCE}")
        listed = low.VelnoSaleItemList(count=len(lines))
        for place, line in enumerate(lines):
            listed.items[place] = line.in_c()
        return self._register.totals(low.velnoext_add_multiple_sale_items, ctypes.byref(listed))

    def delete_last(self) -> Totals:
        return self._register.totals(low.velnoext_delete_last_sale_item)

    def delete(self, index: int) -> Totals:
        """Takes out the line of this index, from 0; the others keep theirs."""
        return self._register.totals(low.velnoext_delete_sale_item, _number(index, "index", 0, 2**31 - 1))

    def add_medical(self, amount: Amount, *, person: str) -> None:
        """Adds a medical contribution. person: 11 digits; "11111111111" stands for anybody."""
        if not (len(person) == 11 and person.isascii() and person.isdigit()):
            raise ValueError("person: accepted are 11 digits")
        function = low.velnoext_add_medical_contribution
        self._register.command(function, self._register.timeout_ms, kurus(amount), int(person))

    def state(self) -> SaleState:
        """How it stands; an error of keys before is told here."""
        first, totals, numbers = ctypes.c_int(), low.VelnoEcrSaleTotals(), low.VelnoReceiptRef()
        outputs = (ctypes.byref(first), ctypes.byref(totals), ctypes.byref(numbers))
        self._register.command(low.velnoext_sale_state, self._register.timeout_ms, *outputs)
        return SaleState(first.value, totals_of(totals), Reference(numbers.first, numbers.second))

    def acquirers(self) -> list[int]:
        """The banks of its card payments."""
        return self._register.numbers(low.velnoext_acquirers_of_sale)

    def pay(self, amount: Amount, *, card: bool = False) -> Totals:
        """Pays an amount in cash, or by card. PaymentNotTaken when the totals stay as they were."""
        before = self.state().totals
        self._register.command(low.velnoext_add_payment, _key(card), kurus(amount))
        after = self.state().totals
        if after == before:
            raise PaymentNotTaken(f"the register has not taken the payment of {amount}: it shows why")
        return after

    def end(self, *, card: bool = False) -> None:
        """Ends it; what is left is paid in cash, or by card. SaleStillOpen when it has not ended."""
        self.is_over = True
        self._register.command(low.velnoext_end_sale, _key(card))
        if self._register.state() == low.VelnoEcrState.SALE_OPEN:
            raise SaleStillOpen("the register has not ended the sale: it shows why")

    def end_with_invoice(
        self,
        kind: low.VelnoInvoiceType,
        *,
        person: str = "",
        company: str = "",
        reference: str = "",
        card: bool = False,
        delivery_note: bool = False,
    ) -> None:
        """Ends it with an invoice; what is left is paid in cash, or by card.

        person, company: one of both: an identity number of 11 digits, or a tax number of 10
        reference: with a paper invoice the form's number, 6 to 16 characters
        delivery_note: the invoice takes its place
        """
        if bool(person) == bool(company):
            raise ValueError("an invoice has a person or a company")
        mode = low.VelnoInvoiceMode.REST_BY_CARD if card else low.VelnoInvoiceMode.REST_IN_CASH
        invoice = low.VelnoInvoice(
            invoiceType=_number(kind, "kind", 0, 2),
            idKind=low.VelnoIdKind.PERSON if person else low.VelnoIdKind.COMPANY,
            idNumber=field_text(person or company, 11, "person or company"),
            reference=field_text(reference, 16, "reference"),
            mode=mode,
            flag=delivery_note,
        )
        self.is_over = True
        self._register.command(low.velnoext_end_sale_with_invoice, ctypes.byref(invoice))

    def cancel(self) -> None:
        """Cancels it, and waits until the register is idle."""
        self.is_over = True
        self._register.command(low.velnoext_cancel_sale, self._register.timeout_ms)

    def abandon(self, problem: BaseException) -> None:
        """Cancels it because of a problem, and notes there what hinders that. An end that was sent stands."""
        if self.is_over:
            return
        try:
            self._cancel_connected()
        except WrongState:
            return  # the register has cancelled it by itself
        except Error as hindrance:
            problem.add_note(f"the sale could not be cancelled and may be open on the register: {hindrance}")

    def _cancel_connected(self) -> None:
        """Behind a lost answer there is no connection."""
        try:
            self.cancel()
        except (ConnectionFailed, NotReady):
            self._register.connect()
            self.cancel()


def _key(card: bool) -> low.VelnoPaymentKey:
    return low.VelnoPaymentKey.F11 if card else low.VelnoPaymentKey.F10
