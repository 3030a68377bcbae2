# SPDX-License-Identifier: Apache-2.0
"""Shows doxygen a header as it wants it: header_filter.py FILE

The comment at the head is the file's; each section, from its line of dashes on, is a group, with what is said there
for all its functions.
"""

import re
import sys
from pathlib import Path

_SECTION = re.compile(r"^/\* (?P<title>[^\n]*?) -{3,} \*/\n(?:\n/\* (?P<text>.*?)\*/\n)?", re.M | re.S)


def main() -> None:
    path = Path(sys.argv[1])
    text = path.read_text(encoding="utf-8").replace("/**\n", "/**\n * @file\n *\n", 1)
    closing = ""

    def group(match: re.Match[str]) -> str:
        nonlocal closing
        name = f"{path.stem}_{re.sub(r'[^a-z]+', '_', match['title'].lower())}"
        before, closing = closing, "/** @} */\n"
        heading = f"/** @defgroup {name} {path.stem}: {match['title']}\n *\n * {match['text'] or ''}*/\n"
        return f"{before}{heading}/** @{{ */\n"

    text = re.sub(r"(?<=[^\n])#(?=[a-z])", r"\\#", _SECTION.sub(group, text))  # "#if" in a sentence is no link
    head, end, tail = text.rpartition("#ifdef __cplusplus\n}")
    sys.stdout.write(f"{head}{closing}{end}{tail}" if end else text)


if __name__ == "__main__":
    main()
