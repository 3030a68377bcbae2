# SPDX-License-Identifier: Apache-2.0
"""A slip of free text that is collected line by line, see Register.slip()."""

from __future__ import annotations

import codecs
import ctypes
from collections.abc import Callable
from typing import Any

from . import _velnoext as low
from ._values import c_text
from .errors import check


class SlipLines:
    def __init__(self, encoding: str) -> None:
        codecs.lookup(encoding)  # refuses what is none
        self._encoding = encoding
        self._lines: list[tuple[Callable[..., int], tuple[Any, ...]]] = []
        self._add(low.velnoext_printer_set_encoding, c_text(encoding, "encoding"))

    def text(self, text: str, *, size: int = 0, style_a: bool = False, style_b: bool = False) -> None:
        """size: 0 to 5; what the styles look like the register defines."""
        if not 0 <= size <= 5:
            raise ValueError(f"size: {size}; accepted: 0 to 5")
        encoded = self._encoded(text)
        style = low.VelnoTextStyle(size, style_a, style_b)
        self._add(low.velnoext_printer_add_text, encoded, ctypes.byref(style))

    def pair(self, left: str, right: str, *, style_a: bool = False, style_b: bool = False) -> None:
        """A text at each end of a line."""
        ends = (self._encoded(left), self._encoded(right))
        style = low.VelnoTextStyle(0, style_a, style_b)
        self._add(low.velnoext_printer_add_justified_text, *ends, ctypes.byref(style))

    def feed(self, count: int = 1) -> None:
        """1 to 20 line feeds."""
        if not 1 <= count <= 20:
            raise ValueError(f"feed: {count}; accepted: 1 to 20")
        self._add(low.velnoext_printer_add_line_feed, count)

    def send(self) -> None:
        """Hands them to the library, in whose one slip they must not meet others."""
        for function, arguments in self._lines:
            check(function.__name__, function(*arguments))

    def _encoded(self, text: str) -> bytes:
        """In the slip's encoding; a letter that it cannot write is refused."""
        if not text:
            raise ValueError("a text of a slip must not be empty")
        c_text(text, "text")
        return text.encode(self._encoding)

    def _add(self, function: Callable[..., int], *arguments: Any) -> None:
        self._lines.append((function, arguments))
