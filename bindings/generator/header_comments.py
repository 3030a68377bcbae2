# SPDX-License-Identifier: Apache-2.0
"""The comments of a header: which belongs to which declaration, and what it says.

A comment that begins with two stars belongs to the declaration behind it; with two stars and < to that in
front of it. A comment "Title ---" begins a section; a plain comment right behind it is the section's text.
"""

from __future__ import annotations

import re
import textwrap
from dataclasses import dataclass

from header_model import Doc, Section

_COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
_TITLE = re.compile(r"/\* (.+?) -{3,} \*/$")
_TAG = re.compile(r"(?:^|(?<=\s))@(?:param\s+(?P<parameter>\w+)|(?P<returns>return))\s+")


@dataclass(frozen=True)
class _Comment:
    start: int
    end: int
    text: str

    @property
    def is_doc(self) -> bool:
        return self.text.startswith("/**")

    @property
    def is_behind(self) -> bool:
        return self.text.startswith("/**<")


def _words(comment: str) -> str:
    """Without its stars and their margin."""
    inside = re.sub(r"^/\*+<?", "", comment).removesuffix("*/")
    first, *others = inside.split("\n")
    others = [re.sub(r"^\s*\*", "", line).rstrip() for line in others]
    return "\n".join([first.strip(), textwrap.dedent("\n".join(others))]).strip()


def parse_doc(comment: str) -> Doc:
    words = _words(comment)
    tags = list(_TAG.finditer(words))
    ends = [tag.start() for tag in tags[1:]] + [len(words)]
    text = words[: tags[0].start()] if tags else words
    parameters, returns = {}, ""
    for tag, end in zip(tags, ends):
        said = " ".join(words[tag.end() : end].split())
        if tag["parameter"]:
            parameters[tag["parameter"]] = said
        else:
            returns = said
    return Doc(text.strip(), parameters, returns)


class Comments:
    """Of one header, whose text is handed over."""

    def __init__(self, text: str) -> None:
        self._text = text
        self._comments = [_Comment(m.start(), m.end(), m.group()) for m in _COMMENT.finditer(text)]
        self._code = _COMMENT.sub(lambda m: re.sub(r"[^\n]", " ", m.group()), text)

    def head(self) -> Doc:
        """What is said of the whole header: its first doc comment."""
        return parse_doc(next(one.text for one in self._comments if one.is_doc))

    def sections(self) -> list[tuple[int, Section]]:
        """Each with the place where it begins."""
        found = []
        for one, behind in zip(self._comments, [*self._comments[1:], None]):
            if title := _TITLE.match(one.text):
                follows = behind and not behind.is_doc and not self._code[one.end : behind.start].strip()
                text = _words(behind.text) if behind and follows else ""
                found.append((one.start, Section(title[1], text)))
        return found

    def place(self, name: str, line: int) -> int:
        """Where a name stands, on this line (from 1 on) or behind it."""
        start = [0, *(m.end() for m in re.finditer("\n", self._code))][line - 1]
        found = re.compile(rf"\b{re.escape(name)}\b").search(self._code, start)
        if not found:
            raise ValueError(f"{name} does not stand behind line {line}")
        return found.start()

    def of(self, place: int, end: str) -> Doc:
        """Of the declaration with its name at this place, which ends with one of these characters."""
        for one in self._comments:
            if one.is_behind and one.start > place:
                between = self._code[place : one.start].strip()
                if not re.search(f"[{end}{{}}]", between[:-1]):
                    return parse_doc(one.text)
                break
        in_front = [one for one in self._comments if one.end <= place and one.is_doc and not one.is_behind]
        between = self._code[in_front[-1].end : place].strip().removeprefix("#define")
        if not re.search(f"[{end}{{}}#]", between):
            return parse_doc(in_front[-1].text)
        return Doc()

    def code_until(self, place: int, end: str) -> str:
        """The code of the line at this place, up to this character, on one line."""
        start = self._code.rfind("\n", 0, place) + 1
        return " ".join(self._code[start : self._code.index(end, place)].split())
