# SPDX-License-Identifier: Apache-2.0
"""Amounts, quantities, times and texts: as Python has them, and as the libraries take them.

What does not fit is refused in words; nothing is rounded and no text is cut.
"""

from __future__ import annotations

import re
from decimal import Decimal
from enum import IntEnum
from typing import TypeVar

_E = TypeVar("_E", bound=IntEnum)

Amount = Decimal | str  # lira: Decimal("12.50") or "12.50"
Quantity = Decimal | str | int  # units, up to three decimals

RELAY = "255.255.255.255"  # `listen`, for registers that are reached through the relay server

_HIGHEST_AMOUNT = 999_999_999_999  # kuruş
_HIGHEST_QUANTITY = 2**31 - 1  # thousandths
_NO_LIMIT = 0xFFFF_FFFF  # ms


def plain_decimal(value: Decimal) -> str:
    """Without exponent and without zeros at the end. Exact, whatever the context's precision."""
    if not value.is_finite() or value.adjusted() > 15 or int(value.as_tuple().exponent) < -30:
        raise ValueError(f"{value} is no amount or quantity")
    text = format(value, "f")
    return text.rstrip("0").rstrip(".") if "." in text else text


def _in_parts(value: Decimal | str | int, decimals: int, highest: int, what: str, accepted: str) -> int:
    text = plain_decimal(value) if isinstance(value, Decimal) else str(value)
    match = re.fullmatch(rf"([0-9]+)(?:\.([0-9]{{1,{decimals}}}))?", text)
    if not match:
        raise ValueError(f"{what}: {text}; accepted: {accepted}")
    parts: int = int(match[1]) * 10**decimals + int((match[2] or "").ljust(decimals, "0"))
    if parts > highest:
        raise ValueError(f"{what}: {text}; accepted: {accepted}")
    return parts


def kurus(amount: Amount, what: str = "amount") -> int:
    if not isinstance(amount, Decimal | str):
        raise TypeError(
            f"{what}: {amount!r} is of type {type(amount).__name__}; an amount is lira as Decimal or text, "
            'Decimal("12.50") or "12.50"'
        )
    return _in_parts(amount, 2, _HIGHEST_AMOUNT, what, 'lira, "0.00" to "9999999999.99"')


def lira(amount: int) -> Decimal:
    sign = "-" if amount < 0 else ""
    return Decimal(f"{sign}{abs(amount) // 100}.{abs(amount) % 100:02d}")


def thousandths(quantity: Quantity, what: str = "quantity") -> int:
    if isinstance(quantity, bool) or not isinstance(quantity, Decimal | str | int):
        raise TypeError(
            f"{what}: {quantity!r} is of type {type(quantity).__name__}; a quantity is a Decimal, a text, or "
            'whole units, Decimal("1.250"), "1.250" or 2'
        )
    return _in_parts(quantity, 3, _HIGHEST_QUANTITY, what, 'up to three decimals, "0.001" to "2147483.647"')


def milliseconds(seconds: float | None, what: str) -> int:
    """None is no limit."""
    if seconds is None:
        return _NO_LIMIT
    if not 0.001 <= seconds <= 4_000_000:
        raise ValueError(f"{what}: {seconds} s; accepted: 0.001 to 4,000,000 seconds")
    return round(seconds * 1000)


def c_text(text: str, what: str) -> bytes:
    """UTF-8 for a function that reads up to a zero."""
    if not isinstance(text, str):
        raise TypeError(f"{what}: {text!r} is of type {type(text).__name__}; it must be a text")
    if "\0" in text:
        raise ValueError(f"{what}: a zero character would end it")
    return text.encode("utf-8")


def field_text(text: str, room: int, what: str) -> bytes:
    """UTF-8 for a field of so many bytes; never cut."""
    encoded = c_text(text, what)
    if len(encoded) > room:
        raise ValueError(f"{what}: {len(encoded)} bytes in UTF-8; at most {room} fit: {text}")
    return encoded


def python_text(text: bytes | None) -> str:
    """What a library has handed out."""
    return (text or b"").decode("utf-8", errors="replace")


def listening_place(listen: str) -> tuple[bytes, int]:
    """Address and port of "0.0.0.0:4100", "[::]:4100" or RELAY, whose port is the library's."""
    if listen == RELAY:
        return RELAY.encode(), 1
    match = re.fullmatch(r"\[?([0-9A-Za-z.:%_-]+?)\]?:([0-9]{1,5})", listen)
    if not match or not 0 < int(match[2]) < 65536:
        raise ValueError(f'listen: "{listen}"; accepted: ADDRESS:PORT, as "0.0.0.0:4100", or velno.RELAY')
    return match[1].encode(), int(match[2])


def known(enum: type[_E], number: int) -> _E | int:
    """The number by its name if it has one: a register may tell numbers of its own."""
    try:
        return enum(number)
    except ValueError:
        return number
