# SPDX-License-Identifier: Apache-2.0
"""What the public headers say, as values: the model that every back end of the generator writes from.

    api = header_reader.read_api(root)  # velnoext.h and velnotill.h, in this order
    for header in api.headers:
        for function in header.functions: ...
    layout = api.layout(api.structures["VelnoSaleItem"], pointer_bytes=8)  # layout.offsets["name"] is 24

Api         the headers, and look-ups by name over all of them
Header      one file: the text at its head, sections, functions, structures, enums, constants, callbacks and
            handles
Section     a part of a header: its title, and what is said there for all its functions
Function    name, result, parameters, its declaration as it stands in the header, and its manual
Parameter   name and type; what is said of it is in the function's manual
Structure   name, fields and packing; api.layout() tells size and offsets for a word size
Enum        a named set of whole numbers; a value's `short` is its name without the enum's
Constant    a number that is a macro
Callback    the type of a function that the application hands over; one without a name of its own gets that
            of the function and the parameter, "velnoext_set_log_line"
Type        a C type; see there
Doc         a comment: its text, and what it says of parameters and of the result

Everything is in the order in which it stands in the header.
"""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass, field

# Bytes of the types that have the same size everywhere; a pointer's are the caller's word size.
SCALAR_BYTES: Mapping[str, int] = {
    "bool": 1,
    "char": 1,
    "signed char": 1,
    "unsigned char": 1,
    "unsigned short": 2,
    "int": 4,
    "unsigned int": 4,
    "long long": 8,
    "unsigned long long": 8,
}


@dataclass(frozen=True)
class Type:
    """`const char *` is Type("char", pointers=1, is_const=True), `int a[5]` is Type("int", length=5).

    `name` is one of SCALAR_BYTES, "void", or the name of a structure, an enum, a handle or a callback. A
    callback is a pointer by itself and has pointers=0.
    """

    name: str
    pointers: int = 0
    is_const: bool = False  # what is pointed to is only read
    length: int = 0  # of an array; 0: none


@dataclass(frozen=True)
class Doc:
    """Paragraphs are separated by an empty line; examples are indented by four spaces."""

    text: str = ""
    parameters: Mapping[str, str] = field(default_factory=dict)
    returns: str = ""

    @property
    def summary(self) -> str:
        """The first sentence, on one line."""
        paragraph = " ".join(self.text.split("\n\n")[0].split())
        end = paragraph.find(". ")
        return paragraph if end < 0 else paragraph[: end + 1]


@dataclass(frozen=True)
class Parameter:
    name: str
    type: Type


@dataclass(frozen=True)
class Function:
    name: str
    result: Type
    parameters: tuple[Parameter, ...]
    declaration: str  # in C, on one line, without the semicolon and the macro in front
    doc: Doc
    section: str  # title of its section


@dataclass(frozen=True)
class Callback:
    name: str
    result: Type
    parameters: tuple[Parameter, ...]
    doc: Doc


@dataclass(frozen=True)
class Field:
    name: str
    type: Type
    doc: Doc


@dataclass(frozen=True)
class Structure:
    name: str
    fields: tuple[Field, ...]
    pack: int  # the largest alignment that a field gets
    doc: Doc


@dataclass(frozen=True)
class EnumValue:
    name: str  # "VelnoResult_NoPaper"
    short: str  # "NoPaper"
    value: int
    doc: Doc


@dataclass(frozen=True)
class Enum:
    name: str
    values: tuple[EnumValue, ...]
    doc: Doc


@dataclass(frozen=True)
class Constant:
    name: str
    value: int
    doc: Doc


@dataclass(frozen=True)
class Handle:
    """A structure that is known by its pointer alone."""

    name: str
    doc: Doc


@dataclass(frozen=True)
class Section:
    title: str
    text: str


@dataclass(frozen=True)
class Header:
    file_name: str
    doc: Doc
    sections: tuple[Section, ...]
    functions: tuple[Function, ...]
    structures: tuple[Structure, ...]
    enums: tuple[Enum, ...]
    constants: tuple[Constant, ...]
    callbacks: tuple[Callback, ...]
    handles: tuple[Handle, ...]


@dataclass(frozen=True)
class Layout:
    size: int
    alignment: int
    offsets: Mapping[str, int]


class Api:
    def __init__(self, headers: tuple[Header, ...]) -> None:
        self.headers = headers
        self.structures = {one.name: one for header in headers for one in header.structures}
        self.enums = {one.name: one for header in headers for one in header.enums}
        self.callbacks = {one.name: one for header in headers for one in header.callbacks}
        self.handles = {one.name: one for header in headers for one in header.handles}

    def layout(self, structure: Structure, pointer_bytes: int) -> Layout:
        """Where the fields lie: each behind the one before, at a multiple of its alignment."""
        end, alignment, offsets = 0, 1, {}
        for one in structure.fields:
            size, natural = self._size_and_alignment(one.type, pointer_bytes)
            packed = min(natural, structure.pack)
            offsets[one.name] = -(-end // packed) * packed
            end = offsets[one.name] + size
            alignment = max(alignment, packed)
        return Layout(-(-end // alignment) * alignment, alignment, offsets)

    def _size_and_alignment(self, kind: Type, pointer_bytes: int) -> tuple[int, int]:
        if kind.pointers or kind.name in self.callbacks:
            size = alignment = pointer_bytes
        elif kind.name in self.structures:
            inner = self.layout(self.structures[kind.name], pointer_bytes)
            size, alignment = inner.size, inner.alignment
        else:
            size = alignment = SCALAR_BYTES["int" if kind.name in self.enums else kind.name]
        return size * (kind.length or 1), alignment
