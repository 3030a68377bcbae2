# SPDX-License-Identifier: Apache-2.0
"""Texts as they stand in a manual page (the macros of man(7))."""

import re

# A quote, a tilde and a caret would be shown as typographic ones, and what is typed must be what is shown.
_SIGNS = {"\\": "\\e", "'": "\\(aq", "`": "\\(ga", "^": "\\(ha", "~": "\\(ti"}


def text(words: str) -> str:
    """Running text; a line that begins with a dot is no macro."""
    said = "".join(_SIGNS.get(sign, sign) for sign in words)
    return re.sub(r"^\.", r"\\&.", said, flags=re.M)


def typed(words: str) -> str:
    """What a person types: a minus is a minus."""
    return text(words).replace("-", "\\-")


def bold(words: str) -> str:
    return f"\\fB{typed(words)}\\fP"


def slanted(words: str) -> str:
    return f"\\fI{typed(words)}\\fP"


def tagged(tag: str, said: str) -> str:
    """A paragraph behind a tag, which is roff already."""
    return f".TP\n{tag}\n{said}\n"


def example(lines: str) -> str:
    """Lines as they stand, set in."""
    return f".PP\n.RS 4\n.nf\n{typed(lines)}\n.fi\n.RE\n"
