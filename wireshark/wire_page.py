#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fills the examples of docs/wire.md from the capture beside it: bytes with their names, and what tshark shows.

An example is the fenced block behind a comment: <!-- frame N -->, <!-- frame N, decrypted -->, <!-- words of frame N -->
or <!-- list -->. With --check nothing is written: the page must say already what the capture holds.
"""

from __future__ import annotations

import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from collections.abc import Iterator
from functools import cache
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/wire.md"
EXAMPLE = re.compile(r"^<!-- ([^>]+) -->\n```\n(?:.*?\n)??```$", re.MULTILINE | re.DOTALL)
LONGEST = 20  # bytes of a value that are shown whole
COLUMN = 3 * LONGEST + 2


class Capture:
    """What tshark says of the page's capture."""

    def __init__(self, tshark: str, home: str) -> None:
        self._command = [tshark, "-X", f"lua_script:{ROOT}/wireshark/velno.lua", "-r", f"{ROOT}/docs/wire/sale.pcap",
                         "-o", f"velno.key_log:{ROOT}/docs/wire/sale.keys"]
        self._environment = {**os.environ, "HOME": home, "XDG_CONFIG_HOME": home, "TZ": "UTC", "LC_ALL": "C.UTF-8"}

    def run(self, *arguments: str) -> str:
        done = subprocess.run([*self._command, *arguments], env=self._environment, capture_output=True, text=True)
        if done.returncode != 0 or "Lua" in done.stderr:
            sys.exit(f"wire_page.py: tshark failed: {done.stderr}")
        return done.stdout

    def of_frame(self, number: str, *arguments: str) -> str:
        text = self.run("-Y", f"frame.number == {number}", *arguments)
        if not text.strip():
            sys.exit(f"wire_page.py: the capture has no frame {number}")
        return text

    @cache
    def document(self) -> ElementTree.Element:
        return ElementTree.fromstring(self.run("-Y", "velno", "-T", "pdml"))

    @cache
    def sources(self, number: str) -> dict[str, bytes]:
        """The runs of bytes that a frame consists of, by tshark's names for them."""
        name = "Frame"  # which has no title when there is no other
        found = {name: b""}
        for line in self.of_frame(number, "-x").splitlines():
            if title := re.fullmatch(r"(.+) \(\d+ bytes\):", line):
                name = title[1]
                found[name] = b""
            elif line:
                found[name] += bytes.fromhex(line[6:53])
        return found


Part = tuple[int, int, str]  # where it begins and ends, what it is


def parts_of(element: ElementTree.Element, data: bytes) -> Iterator[Part]:
    """The named parts of a frame, in order; what was decrypted is another run of bytes and left out."""
    for field in element.findall("field"):
        position, size = int(field.get("pos", "0")), int(field.get("size", "0"))
        text = field.get("showname") or field.get("show", "")
        if field.get("name") == "velno.message":
            field_of_length = data[position + 3]
            yield position, position + 4 + (field_of_length & 3 if field_of_length > 127 else 0), text
            yield from parts_of(field, data)
        elif any(part.get("name", "").startswith("velno.") for part in field):
            yield from parts_of(field, data)
        elif size > 0:
            name = text.split(":")[0].removesuffix(" [truncated]")
            yield position, position + size, f"{name}, {size} bytes" if size > LONGEST else text


def row(data: bytes, text: str) -> str:
    digits = data.hex(" ").upper()
    if len(data) > LONGEST + 6:
        digits = f"{data[:12].hex(' ').upper()} ... {data[-3:].hex(' ').upper()}"
    return f"{digits:<{COLUMN}}{text}".rstrip()


def rows(parts: Iterator[Part], data: bytes, begin: int) -> str:
    lines = []
    for start, end, text in parts:
        if end > begin:  # a part may be shown under two names
            lines.append(row(data[begin:end], text))
            begin = end
    return "\n".join(lines)


def bytes_of(capture: Capture, number: str, decrypted: bool) -> str:
    frame = capture.document().find(
        f"./packet/proto[@name='geninfo']/field[@name='num'][@show='{number}']/../../proto[@name='velno']")
    assert frame is not None, f"frame {number} is none of ours"
    sources = capture.sources(number)
    if decrypted:
        inside = frame.find("./proto[@name='velno']")
        assert inside is not None, f"frame {number} is not decrypted"
        return rows(parts_of(inside, sources["Decrypted"]), sources["Decrypted"], 0)
    data = sources.get("Reassembled TCP", sources["Frame"])
    return rows(parts_of(frame, data), data, int(frame.get("pos", "0")))


def example(capture: Capture, what: str) -> str:
    if what == "list":
        return capture.run("-Y", "velno").rstrip()
    if words := re.fullmatch(r"words of frame (\d+)", what):
        return capture.of_frame(words[1], "-O", "velno").rstrip()
    if frame := re.fullmatch(r"frame (\d+)(, decrypted)?", what):
        return bytes_of(capture, frame[1], frame[2] is not None)
    sys.exit(f"wire_page.py: docs/wire.md: no example is called \"{what}\"")


def main() -> None:
    checks = sys.argv[1:2] == ["--check"]
    arguments = sys.argv[2:] if checks else sys.argv[1:]
    if len(arguments) > 1:
        print("Usage: wire_page.py [--check] [TSHARK]", file=sys.stderr)
        sys.exit(64)
    page = PAGE.read_text(encoding="utf-8")
    if not EXAMPLE.search(page):
        sys.exit("wire_page.py: docs/wire.md has no example")
    with tempfile.TemporaryDirectory() as home:
        capture = Capture(arguments[0] if arguments else "tshark", home)
        filled = EXAMPLE.sub(lambda found: f"<!-- {found[1]} -->\n```\n{example(capture, found[1])}\n```", page)
    if checks and filled != page:
        sys.exit("wire_page.py: docs/wire.md does not say what its capture holds: run wireshark/wire_page.py")
    if not checks:
        PAGE.write_text(filled, encoding="utf-8")


if __name__ == "__main__":
    main()
