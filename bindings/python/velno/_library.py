# SPDX-License-Identifier: Apache-2.0
"""Finds the two shared libraries, and refuses one that does not fit."""

from __future__ import annotations

import ctypes
import os
from collections.abc import Mapping
from pathlib import Path

_INTERFACE = "0"  # the number in the libraries' names, which velnoext_version() tells, too


def _place(file_name: str) -> str:
    """In the folder that VELNO_LIBRARY names and nowhere else; else beside this file, or by the loader."""
    if folder := os.environ.get("VELNO_LIBRARY"):
        return str(Path(folder, file_name))
    beside = Path(__file__).with_name(file_name)
    return str(beside) if beside.exists() else file_name


def load(stem: str) -> ctypes.CDLL:
    """`stem` is velnoext or velnotill, in this order: the second finds the first in the process."""
    file_name = f"lib{stem}.so.{_INTERFACE}"
    path = _place(file_name)
    try:
        return ctypes.CDLL(path)
    except OSError as problem:
        raise ImportError(
            f"{path} cannot be loaded: {problem}. Install the package libvelnoext0, or set VELNO_LIBRARY to"
            f" the folder that holds libvelnoext.so.{_INTERFACE} and libvelnotill.so.{_INTERFACE}."
        ) from problem


def check_layout(
    structure: type[ctypes.Structure], sizes: Mapping[int, int], offsets: Mapping[str, Mapping[int, int]]
) -> None:
    """Compares with what the header says, by the bytes of a pointer: a wrong one would damage memory."""
    word = ctypes.sizeof(ctypes.c_void_p)
    found = {name: getattr(structure, name).offset for name in offsets}
    wanted = {name: places[word] for name, places in offsets.items()}
    if ctypes.sizeof(structure) != sizes[word] or found != wanted:
        raise ImportError(f"{structure.__name__} has another layout in this Python than in the header")
