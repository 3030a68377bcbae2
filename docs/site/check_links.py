# SPDX-License-Identifier: Apache-2.0
"""Checks a site on the disk: check_links.py FOLDER

Each link to a page of the site must lead to a file, and to a place in it if it names one; every page is in the
menu, which is that of the first one; nothing is loaded from elsewhere, so that the site can be read without a
network.
"""

import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit


class Page(HTMLParser):
    def __init__(self, path: Path) -> None:
        super().__init__()
        self.links: list[str] = []
        self.loaded: list[str] = []
        self.places: set[str] = set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        values = {name: value or "" for name, value in attrs}
        self.places |= {values[name] for name in ("id", "name") if name in values}
        if tag == "a" and "href" in values:
            self.links.append(values["href"])
        elif tag in ("script", "img", "iframe") and values.get("src"):
            self.loaded.append(values["src"])
        elif tag == "link" and values.get("rel") == "stylesheet":
            self.loaded.append(values["href"])


def target_of(link: str, path: Path) -> Path:
    named = unquote(urlsplit(link).path)
    target = (path.parent / named).resolve() if named else path
    return target / "index.html" if target.is_dir() else target


def problem_of(link: str, path: Path, pages: dict[Path, Page], is_loaded: bool) -> str:
    """Empty when it leads somewhere."""
    parts = urlsplit(link)
    if parts.scheme or parts.netloc:
        return "is loaded from elsewhere" if is_loaded and parts.scheme in ("", "http", "https") else ""
    target = target_of(link, path)
    if not target.is_file():
        return "leads nowhere"
    if parts.fragment and target in pages and unquote(parts.fragment) not in pages[target].places:
        return "names a place that is not there"
    return ""


def main() -> None:
    pages = {path: Page(path) for path in sorted(Path(sys.argv[1]).resolve().rglob("*.html"))}
    problems = []
    for path, page in pages.items():
        for link in [*page.links, *page.loaded]:
            if link != "#" and (problem := problem_of(link, path, pages, link in page.loaded)):
                problems.append(f"{path}: {link} {problem}")
    first = Path(sys.argv[1], "index.html").resolve()
    menu = {target_of(link, first) for link in pages[first].links if not urlsplit(link).scheme}
    problems += [f"{path}: not in the menu" for path in pages if "api" not in path.parts and path not in menu]
    if problems or len(pages) < 2:
        sys.exit("\n".join(problems) or f"{sys.argv[1]}: no site")
    print(f"{len(pages)} pages, {sum(len(page.links) for page in pages.values())} links")


if __name__ == "__main__":
    main()
