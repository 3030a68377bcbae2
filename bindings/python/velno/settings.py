# SPDX-License-Identifier: Apache-2.0
"""What holds for the whole process."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any

from . import _velnoext as low
from ._values import c_text, milliseconds, python_text
from .errors import check

_logs: list[Any] = []  # what the library calls, or may be calling still


def library_version() -> str:
    return python_text(low.velnoext_library_version())


def set_language(language: str) -> None:
    """Of the texts of registers' errors, from now on: "en" or "tr"; names stay as they are."""
    check("velnoext_set_language", low.velnoext_set_language(c_text(language, "language")))


def set_answer_limit(seconds: float | None) -> None:
    """For the whole wait for a register's answer; None: none, as at the start. A Till has one of its own."""
    check("velnoext_set_answer_limit", low.velnoext_set_answer_limit(milliseconds(seconds, "seconds")))


def set_log(line: Callable[[str], object] | None) -> None:
    """Called with each line that tells what goes wrong in a pairing; None: standard output.

    It must not call this package.
    """
    kind = low.velnoext_set_log_line

    def told(text: bytes, _context: Any) -> None:
        if line:
            line(python_text(text))

    called = kind(told) if line else kind(0)
    _logs.append(called)
    low.velnoext_set_log(called, None)
