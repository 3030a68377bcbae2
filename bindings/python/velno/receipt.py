# SPDX-License-Identifier: Apache-2.0
"""Receipts and slips as Python writes them: dictionaries with the fields of docs/receipt-json.md.

    {"items": [{"name": "Ekmek", "price": Decimal("12.50"), "section": 1}], "payments": [{"cash": "rest"}]}

An amount is lira as Decimal or text; a whole number without a point is kuruş, as in JSON. A float is refused.
The types below are for editors and type checkers: any mapping will do, and a text is JSON as it is.
"""

from __future__ import annotations

import json
from collections.abc import Mapping, Sequence
from decimal import Decimal
from typing import Any, Literal, TypedDict

from ._values import c_text, plain_decimal
from ._velnotill import velnotill_check_receipt, velnotill_check_slip
from .errors import check_till

Money = Decimal | str | int
Unit = Literal["piece", "kilogram", "gram", "litre", "metre", "squareMetre", "cubicMetre", "hour"]


class _NamedItem(TypedDict):
    name: str
    price: Money


class Item(_NamedItem, total=False):
    section: int
    quantity: Decimal | str | int
    unit: Unit
    percentage: int
    discount: Money


class Payment(TypedDict, total=False):
    """One field of the two; "rest" is what is left to pay."""

    cash: Money
    card: Money


class Medical(TypedDict):
    amount: Money
    person: str


class _TypedInvoice(TypedDict):
    type: Literal["paper", "electronic", "archived"]


class Invoice(_TypedInvoice, total=False):
    person: str
    company: str
    reference: str
    deliveryNote: bool


class Slip(TypedDict):
    """A line is a text, or a mapping: text, left and right, or feed."""

    encoding: Literal["UTF-8", "windows-1254", "ISO-8859-9"]
    lines: Sequence[str | Mapping[str, Any]]


class _PaidReceipt(TypedDict):
    payments: list[Payment]


class Receipt(_PaidReceipt, total=False):
    items: list[Item]
    medical: Medical
    invoice: Invoice
    total: Money
    reenterCash: bool
    slip: Slip


Content = Mapping[str, Any] | str  # a receipt or slip as it is handed over


def to_json(content: Content, what: str) -> bytes:
    if isinstance(content, str):
        return c_text(content, what)
    if not isinstance(content, Mapping):
        raise TypeError(f"{what}: {type(content).__name__}; it must be a mapping, or JSON as a text")
    return json.dumps(_plain(content, what), ensure_ascii=False).encode("utf-8")


def _plain(value: Any, path: str) -> Any:
    """As json writes it; a float would have lost a kuruş somewhere."""
    if isinstance(value, Decimal):
        return plain_decimal(value)
    if value is None or isinstance(value, bool | int | str):
        return value
    if isinstance(value, Mapping):
        return {_name(name, path): _plain(one, f"{path}.{name}") for name, one in value.items()}
    if isinstance(value, list | tuple):
        return [_plain(one, f"{path}[{place}]") for place, one in enumerate(value)]
    if isinstance(value, float):
        raise TypeError(f'{path}: {value!r} is a float; write Decimal("12.50") or "12.50" for an amount')
    raise TypeError(f"{path}: {type(value).__name__}; accepted: mapping, list, text, Decimal, int, bool")


def _name(name: Any, path: str) -> str:
    if not isinstance(name, str):
        raise TypeError(f"{path}: {name!r} names a field; it must be a text")
    return name


def check_receipt(receipt: Content) -> None:
    """Judges a receipt without a register or a ledger. Raises BadContent with a line for each fault."""
    check_till(velnotill_check_receipt(to_json(receipt, "receipt")))


def check_slip(slip: Content) -> None:
    """The same of a slip."""
    check_till(velnotill_check_slip(to_json(slip, "slip")))
