# SPDX-License-Identifier: Apache-2.0
"""Writes everything that is made from the public headers and committed."""

from __future__ import annotations

import argparse
import sys
from collections.abc import Callable
from pathlib import Path

import csharp_back_end
import java_back_end
import python_back_end
from header_model import Api
from header_reader import read_api

ROOT = Path(__file__).resolve().parents[2]

# Each back end gets the model and returns its files: path from the root, and text.
BACK_ENDS: tuple[Callable[[Api], dict[str, str]], ...] = (
    csharp_back_end.write,
    java_back_end.write,
    python_back_end.write,
)


def generated(root: Path = ROOT) -> dict[str, str]:
    api = read_api(root)
    return {path: text for write in BACK_ENDS for path, text in write(api).items()}


def differing(files: dict[str, str], root: Path = ROOT) -> list[str]:
    """The paths of what is not as it would be written."""
    return [path for path, text in files.items() if not _holds(root / path, text)]


def _holds(path: Path, text: str) -> bool:
    return path.is_file() and path.read_bytes() == text.encode("utf-8")


def main() -> int:
    parser = argparse.ArgumentParser(prog="scripts/generate", description=__doc__)
    parser.add_argument("--check", action="store_true", help="write nothing; fail when a file differs")
    asked = parser.parse_args()
    files = generated()
    for path in differing(files):
        if asked.check:
            print(f"{path} is not what the headers say; run scripts/generate", file=sys.stderr)
            continue
        (ROOT / path).parent.mkdir(parents=True, exist_ok=True)
        (ROOT / path).write_text(files[path], encoding="utf-8")
        print(f"written: {path}")
    return 1 if asked.check and differing(files) else 0


if __name__ == "__main__":
    sys.exit(main())
