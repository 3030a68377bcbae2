# SPDX-License-Identifier: Apache-2.0
"""Orders as they are on record."""

from __future__ import annotations

import ctypes
from dataclasses import dataclass, field
from datetime import datetime, timedelta, timezone
from decimal import Decimal
from typing import NamedTuple

from . import _velnotill as low
from ._values import c_text, known, lira, python_text
from ._velnoext import VelnoCause, VelnoEcrSaleTotals, VelnoReceiptRef
from .errors import check_till


class Reference(NamedTuple):
    """Two numbers by which the register knows a receipt."""

    z: int
    number: int


@dataclass(frozen=True)
class Totals:
    to_pay: Decimal
    tax: Decimal  # within it
    cash: Decimal  # as handed over
    card: Decimal
    change: Decimal  # what of the cash goes back
    lines: int


@dataclass(frozen=True)
class Outcome:
    """An order. **Having one does not mean "sold"**: the state tells; message() says it to a cashier."""

    key: str
    kind: low.VelnoTillKind
    state: low.VelnoTillState
    question: low.VelnoTillQuestion
    answer: low.VelnoTillAnswer  # one that was given and not yet acted upon
    paper: low.VelnoTillPaper
    slip_unsure: bool  # the slip may not have been printed
    code: int  # a VelnoResult, behind refused and waiting
    cause: VelnoCause | int  # with it
    z: int | None  # of a Z report: the register's number before it
    reference: Reference | None  # of the receipt that it is entered on, or was closed on
    totals: Totals | None  # of a closed receipt
    give_back: Decimal  # cash that was taken on cancelled receipts, and stands on none
    accepted_at: datetime
    changed_at: datetime
    _in_c: low.VelnoTillOutcome = field(repr=False, compare=False)

    @property
    def is_closed(self) -> bool:
        """The receipt counts, the report is made, the slip is printed."""
        return self.state == low.VelnoTillState.CLOSED

    @property
    def is_settled(self) -> bool:
        """Nothing more is done about it."""
        return not low.VELNOTILL_UNSETTLED_STATES >> self.state & 1

    @property
    def needs_person(self) -> bool:
        return self.state == low.VelnoTillState.NEEDS_PERSON

    def message(self, language: str = "en") -> str:
        """What a cashier is told: how it stands, what is to be done, and the question if there is one."""
        text, chosen = ctypes.c_void_p(), c_text(language, "language")
        check_till(low.velnotill_message(ctypes.byref(self._in_c), chosen, ctypes.byref(text)))
        return taken_text(text)


@dataclass(frozen=True)
class Event:
    """A line of an order's history."""

    time: datetime
    state: low.VelnoTillState  # the order's behind it
    code: int
    cause: VelnoCause | int
    text: str
    person: str  # who answered; empty: the program


def taken_text(text: ctypes.c_void_p) -> str:
    """A text that a function of velnotill.h has handed out, which is given back."""
    try:
        return python_text(ctypes.string_at(text.value or 0))
    finally:
        low.velnotill_free_text(text)


def _time(milliseconds: int) -> datetime:
    return datetime(1970, 1, 1, tzinfo=timezone.utc) + timedelta(milliseconds=milliseconds)


def reference_of(numbers: VelnoReceiptRef) -> Reference | None:
    return Reference(numbers.first, numbers.second) if numbers.first or numbers.second else None


def totals_of(totals: VelnoEcrSaleTotals) -> Totals:
    to_pay, tax, cash, card, change = (lira(one) for one in totals.values)
    return Totals(to_pay, tax, cash, card, change, totals.number)


def outcome_of(key: str, told: low.VelnoTillOutcome) -> Outcome:
    state = low.VelnoTillState(told.state)
    is_closed_receipt = state == low.VelnoTillState.CLOSED and told.kind == low.VelnoTillKind.RECEIPT
    return Outcome(
        key=key,
        kind=low.VelnoTillKind(told.kind),
        state=state,
        question=low.VelnoTillQuestion(told.question),
        answer=low.VelnoTillAnswer(told.answer),
        paper=low.VelnoTillPaper(told.paper),
        slip_unsure=bool(told.slipUnsure),
        code=told.code,
        cause=known(VelnoCause, told.cause),
        z=told.z or None,
        reference=reference_of(told.reference),
        totals=totals_of(told.totals) if is_closed_receipt else None,
        give_back=lira(told.giveBack),
        accepted_at=_time(told.acceptedAt),
        changed_at=_time(told.changedAt),
        _in_c=low.VelnoTillOutcome.from_buffer_copy(told),
    )


def event_of(told: low.VelnoTillEvent) -> Event:
    return Event(
        time=_time(told.time),
        state=low.VelnoTillState(told.state),
        code=told.code,
        cause=known(VelnoCause, told.cause),
        text=python_text(told.text),
        person=python_text(told.person),
    )
