# SPDX-License-Identifier: Apache-2.0
"""Makes the manual pages of the C libraries from their headers: one for each function, one for each header.

function_pages.py ROOT COMPILER VERSION DATE FOLDER; what lies in the folder from before is removed.
"""

import re
import sys
import textwrap
from pathlib import Path

import roff

sys.path.insert(0, str(Path(__file__).parent.parent / "bindings" / "generator"))
import header_reader  # noqa: E402  (its folder is named above)
from header_model import Callback, Doc, Enum, Function, Header, Structure, Type  # noqa: E402

_FUNCTION = re.compile(r"\b(velno(?:ext|till)_[a-z_]+)\(\)")


def _said(words: str) -> str:
    """Functions become references to their pages; a word between ** or ` is bold."""
    said = roff.text(words)
    said = re.sub(r"\*\*(.+?)\*\*|\\\(ga(.+?)\\\(ga", lambda match: f"\\fB{match[1] or match[2]}\\fP", said)
    return _FUNCTION.sub(r"\\fB\1\\fP(3)", said)


def _joined_examples(text: str) -> str:
    """An empty line within an example does not end it."""
    return re.sub(r"(?m)(^    .*)\n\n(?=    )", r"\1\n \n", text)


def paragraphs(text: str) -> str:
    """Paragraphs of a comment, behind a heading; what is set in stands as it is."""
    page = ""
    for part in _joined_examples(text).split("\n\n"):
        if part.startswith("  "):
            page += roff.example(textwrap.dedent(part))
        elif part.strip():
            page += f".PP\n{_said(' '.join(part.split()))}\n"
    return page.removeprefix(".PP\n")


def _head(name: str, summary: str, version: str, date: str) -> str:
    return (f'.TH {name.upper()} 3 {date} "Velno {version}" "Velno"\n.SH NAME\n{name} \\- {_said(summary)}\n')


def _summary(doc: Doc, section: str) -> str:
    words = doc.summary.rstrip(".") or section
    return words[:1].lower() + words[1:] if not words[:2].isupper() else words


def _declaration(function: Function) -> str:
    return f".nf\n.B {roff.typed(function.declaration)};\n.fi\n"


def _library(header: Header) -> str:
    return header.file_name.removesuffix(".h")


def _returns(function: Function, before: Function | None) -> str:
    """"As above" in the header means the function that stands before it there."""
    returns = function.doc.returns
    if before is not None and returns.startswith("as above"):
        returns = f"as {before.name}(){returns.removeprefix('as above')}"
    return returns[:1].upper() + returns[1:]


def function_page(
    header: Header, function: Function, before: Function | None, version: str, date: str
) -> str:
    section = next((one for one in header.sections if one.title == function.section), None)
    page = _head(function.name, _summary(function.doc, function.section), version, date)
    page += f".SH SYNOPSIS\n.B #include <{header.file_name}>\n.PP\n{_declaration(function)}"
    page += f".PP\nLink with \\fI\\-l{_library(header)}\\fP.\n"
    if function.doc.text or function.doc.parameters:
        page += f".SH DESCRIPTION\n{paragraphs(function.doc.text)}"
    for name, said in function.doc.parameters.items():
        page += roff.tagged(f"\\fI{roff.typed(name)}\\fP", _said(" ".join(said.split())))
    if returns := _returns(function, before):
        page += f".SH RETURN VALUE\n{_said(' '.join(returns.split()))}\n"
    if section and section.text:
        page += f".SH {roff.text(section.title.upper())}\n{paragraphs(section.text)}"
    others = [one.name for one in header.functions if one.section == function.section and one is not function]
    return page + _see_also([_library(header), *others])


def _see_also(names: list[str]) -> str:
    lines = [f".BR {roff.typed(name)} (3)" for name in names]
    return ".SH SEE ALSO\n" + ",\n".join(lines) + "\n"


def _type(kind: Type) -> str:
    stars = "*" * kind.pointers
    return f"{'const ' if kind.is_const else ''}{kind.name}{' ' + stars if stars else ' '}"


def _structure(structure: Structure) -> str:
    page = f".SS struct {structure.name}\n{paragraphs(structure.doc.text)}"
    for one in structure.fields:
        length = f"[{one.type.length}]" if one.type.length else ""
        page += roff.tagged(f"{roff.typed(_type(one.type))}\\fB{one.name}\\fP{length}",
                            _said(" ".join(one.doc.text.split())) or "\\&")
    return page


def _enum(enum: Enum) -> str:
    page = f".SS enum {enum.name}\n{paragraphs(enum.doc.text)}"
    for one in enum.values:
        said = _said(" ".join(one.doc.text.split()))
        page += roff.tagged(f"\\fB{one.name}\\fP ({one.value})", said or "\\&")
    return page


def _callback(callback: Callback) -> str:
    page = f".SS {callback.name}\n{paragraphs(callback.doc.text)}"
    return page + "".join(roff.tagged(f"\\fI{name}\\fP", _said(" ".join(said.split())))
                          for name, said in callback.doc.parameters.items())


def header_page(header: Header, version: str, date: str) -> str:
    """What holds for all functions, a line for each, and the types."""
    summary, _, text = header.doc.text.partition("\n\n")
    words = " ".join(summary.split()).partition(": ")[2].partition(". ")
    page = _head(_library(header), words[0].rstrip("."), version, date)
    page += f".SH SYNOPSIS\n.B #include <{header.file_name}>\n.PP\n"
    page += f"Link with \\fI\\-l{_library(header)}\\fP.\n"
    page += f".SH DESCRIPTION\n{paragraphs(words[2] + chr(10) * 2 + text)}"
    page += ".SH FUNCTIONS\n"
    for section in dict.fromkeys(function.section for function in header.functions):
        page += f".SS {roff.text(section)}\n"
        for function in header.functions:
            if function.section == section:
                summary = _said(_summary(function.doc, function.section))
                page += roff.tagged(f"\\fB{function.name}\\fP(3)", summary)
    page += ".SH TYPES\n" + "".join(map(_structure, header.structures)) + "".join(map(_enum, header.enums))
    named = [one for one in header.callbacks if not one.name.startswith("velno")]
    return page + "".join(map(_callback, named)) + _see_also_programs(header)


def _see_also_programs(header: Header) -> str:
    other = "velnoext" if header.file_name == "velnotill.h" else "velnotill"
    return f".SH SEE ALSO\n.BR velnoctl (1),\n.BR {other} (3)\n"


def main() -> None:
    root, compiler, version, date, output = sys.argv[1:]
    folder = Path(output)
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("*.3"):
        old.unlink()
    for header in header_reader.read_api(Path(root), compiler).headers:
        (folder / f"{_library(header)}.3").write_text(header_page(header, version, date), encoding="utf-8")
        for before, function in zip((None, *header.functions), header.functions):
            page = function_page(header, function, before, version, date)
            (folder / f"{function.name}.3").write_text(page, encoding="utf-8")


if __name__ == "__main__":
    main()
