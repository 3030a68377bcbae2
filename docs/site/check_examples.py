# SPDX-License-Identifier: Apache-2.0
"""Checks that in the C API each function shows an example of its use: check_examples.py API-FOLDER HEADER..."""

import re
import sys
from pathlib import Path

_FUNCTION = re.compile(r"^VELNO(?:EXT|TILL)_API .*?\b(velno\w+)\(", re.M)
_TITLE = re.compile(r'<h2 class="memtitle">.*?(\w+)\(\)</h2>')


def described(folder: Path) -> dict[str, str]:
    """What the pages say of each function."""
    texts: dict[str, str] = {}
    for page in sorted(folder.glob("group__*.html")):
        pieces = _TITLE.split(page.read_text(encoding="utf-8"))
        texts.update(zip(pieces[1::2], pieces[2::2], strict=True))
    return texts


def main() -> None:
    texts = described(Path(sys.argv[1]))
    functions = [name for header in sys.argv[2:]
                 for name in _FUNCTION.findall(Path(header).read_text(encoding="utf-8"))]
    lacking = [name for name in functions if 'class="section examples"' not in texts.get(name, "")]
    if lacking or not functions:
        sys.exit(f"without an example: {', '.join(lacking) or 'no function was found'}")
    print(f"{len(functions)} functions of the C API, each with an example")


if __name__ == "__main__":
    main()
