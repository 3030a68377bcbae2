# SPDX-License-Identifier: Apache-2.0
"""The low level of the Python binding: a module of ctypes for each header.

Whole numbers are int, texts that are only read bytes or None. A `char *` that is written is a c_void_p, as is
a handle; other pointers are what ctypes.byref() makes, an array, or None. Structures have `_pack_`, and are
compared with the offsets of the model when the module is imported.
"""

from __future__ import annotations

import re
import textwrap

from header_model import Api, Callback, Doc, Enum, Function, Header, Structure, Type

FOLDER = "bindings/python/velno"
LONGEST_LINE = 100

_SCALARS = {
    "bool": "c_bool",
    "char": "c_char",
    "signed char": "c_byte",
    "unsigned char": "c_ubyte",
    "unsigned short": "c_ushort",
    "int": "c_int",
    "unsigned int": "c_uint",
    "long long": "c_longlong",
    "unsigned long long": "c_ulonglong",
}


def write(api: Api) -> dict[str, str]:
    """The files of this back end: path from the root, and text."""
    modules = {f"{FOLDER}/_{_stem(header)}.py": _Module(api, header).text() for header in api.headers}
    return {**modules, f"{FOLDER}/_version.py": _version(api)}


def _version(api: Api) -> str:
    """In a module of its own: the tool that packs the binding reads it without loading a library."""
    numbers = {one.name: one.value for header in api.headers for one in header.constants}
    version = ".".join(str(numbers[f"VELNOEXT_VERSION_{part}"]) for part in ("MAJOR", "MINOR", "PATCH"))
    return (
        "# SPDX-License-Identifier: Apache-2.0\n"
        '"""The version that this binding belongs to. Made by scripts/generate: do not edit."""\n\n'
        f'VERSION = "{version}"\n'
    )


def _stem(header: Header) -> str:
    return header.file_name.removesuffix(".h")


def upper_words(name: str) -> str:
    """NeedsPerson as Python writes a constant: NEEDS_PERSON; ZReport: Z_REPORT."""
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name).upper()


def _filled(words: str) -> str:
    """A paragraph; an example stays as it is."""
    return words if words.startswith("    ") else textwrap.fill(" ".join(words.split()), LONGEST_LINE)


def _hanging(words: str) -> str:
    return textwrap.fill(words, LONGEST_LINE, subsequent_indent="    ")


def _docstring(doc: Doc, indent: str, declaration: str = "") -> str:
    paragraphs = [_filled(words) for words in doc.text.split("\n\n")]
    paragraphs.append("\n".join(_hanging(f"{name}: {words}") for name, words in doc.parameters.items()))
    paragraphs.append(_hanging(f"Returns {doc.returns}") if doc.returns else "")
    paragraphs.append(_hanging(f"{declaration};") if declaration else "")
    text = textwrap.indent("\n\n".join(filter(None, paragraphs)), indent).strip().replace("\\", "\\\\")
    end = f"\n{indent}" if "\n" in text or text.endswith('"') or len(text) > LONGEST_LINE - 10 else ""
    return f'{indent}"""{text}{end}"""\n'


def _comment(text: str, indent: str) -> str:
    lines = textwrap.wrap(" ".join(text.split()), LONGEST_LINE - len(indent))
    return "".join(f"{indent}# {line}\n" for line in lines)


def _listed(head: str, items: list[str], tail: str) -> str:
    """On one line, or on one for each item."""
    line = f"{head}{', '.join(items)}{tail}\n"
    if len(line) <= LONGEST_LINE:
        return line
    return f"{head}\n" + "".join(f"    {one},\n" for one in items) + f"{tail}\n"


class _Module:
    def __init__(self, api: Api, header: Header) -> None:
        self._api = api
        self._header = header

    def text(self) -> str:
        header = self._header
        parts = [self._head()]
        parts += [f"{one.name} = {one.value}\n" for one in header.constants]
        parts += ["\n\n" + self._enum(one) for one in header.enums]
        parts += ["\n\n" + self._structure(one) for one in header.structures]
        parts += ["\n\n"] + [self._callback(one) for one in header.callbacks]
        parts += ["\n\n" + self._function(one) for one in header.functions]
        return "".join(parts)

    def _head(self) -> str:
        stem, name = _stem(self._header), self._header.file_name
        others = [one for one in self._api.headers if one is not self._header]
        borrowed = [one.name for other in others for one in other.structures if self._uses(one.name)]
        imports = ["from ._library import check_layout, load\n"]
        imports += [f"from ._velnoext import {', '.join(borrowed)}\n"] if borrowed else []
        return (
            "# SPDX-License-Identifier: Apache-2.0\n"
            f'"""{name} for ctypes. Made by scripts/generate from the header: do not edit."""\n\n'
            "from __future__ import annotations\n\n"
            "import ctypes\nfrom enum import IntEnum\nfrom typing import Any\n\n"
            f'{"".join(imports)}\n_library = load("{stem}")\n\n'
        )

    def _uses(self, name: str) -> bool:
        types = [one.type for structure in self._header.structures for one in structure.fields]
        types += [one.type for function in self._header.functions for one in function.parameters]
        return any(one.name == name for one in types)

    def _enum(self, enum: Enum) -> str:
        text = f"class {enum.name}(IntEnum):\n{_docstring(enum.doc, '    ')}\n"
        for one in enum.values:
            text += _comment(one.doc.text, "    ") + f"    {upper_words(one.short)} = {one.value}\n"
        return text

    def _structure(self, structure: Structure) -> str:
        text = f"class {structure.name}(ctypes.Structure):\n{_docstring(structure.doc, '    ')}\n"
        text += f"    _pack_ = {structure.pack}\n    _fields_ = [\n"
        for one in structure.fields:
            text += _comment(one.doc.text, " " * 8) + f'        ("{one.name}", {self._c_type(one.type)}),\n'
        text += "    ]\n"
        text += "".join(f"    {one.name}: {self._seen_type(one.type)}\n" for one in structure.fields)
        layouts = [self._api.layout(structure, pointer_bytes) for pointer_bytes in (4, 8)]
        sizes = "{" + ", ".join(f"{bits}: {one.size}" for bits, one in zip((4, 8), layouts)) + "}"
        text += f"\n\ncheck_layout(\n    {structure.name},\n    {sizes},\n    {{\n"
        for one in structure.fields:
            places = ", ".join(f"{bits}: {layout.offsets[one.name]}" for bits, layout in zip((4, 8), layouts))
            text += f'        "{one.name}": {{{places}}},\n'
        return text + "    },\n)\n"

    def _callback(self, callback: Callback) -> str:
        types = [self._c_type(one) for one in (callback.result, *(one.type for one in callback.parameters))]
        return _comment(callback.doc.text, "") + _listed(f"{callback.name} = ctypes.CFUNCTYPE(", types, ")")

    def _function(self, function: Function) -> str:
        name, parameters = function.name, function.parameters
        types = [self._c_type(one.type) for one in parameters]
        arguments = [f"{one.name}: {self._argument_type(one.type)}" for one in parameters]
        call = f"_library.{name}({', '.join(one.name for one in parameters)})"
        result, returned = "None", f"    {call}\n"
        if function.result != Type("void"):
            result = self._seen_type(function.result)
            returned = f"    returned: {result} = {call}\n    return returned\n"
        return (
            f"_library.{name}.restype = {self._c_type(function.result)}\n"
            + _listed(f"_library.{name}.argtypes = [", types, "]")
            + _listed(f"\n\ndef {name}(", arguments, f") -> {result}:")
            + _docstring(function.doc, "    ", function.declaration)
            + returned
        )

    def _c_type(self, kind: Type) -> str:
        is_handle = kind.name in self._api.handles
        if kind.length:
            return f"{self._c_type(Type(kind.name))} * {kind.length}"
        if kind.name == "char" and kind.pointers == 1 and kind.is_const:
            return "ctypes.c_char_p"
        if kind.pointers == 1 and (is_handle or kind.name in ("char", "void")):
            return "ctypes.c_void_p"
        if kind.pointers:
            return f"ctypes.POINTER({self._c_type(Type(kind.name, kind.pointers - 1, kind.is_const))})"
        if kind.name == "void":
            return "None"
        return f"ctypes.{_SCALARS[kind.name]}" if kind.name in _SCALARS else kind.name

    def _argument_type(self, kind: Type) -> str:
        """As the caller hands it over."""
        return self._seen_type(kind) if not kind.pointers or kind.is_const and kind.name == "char" else "Any"

    def _seen_type(self, kind: Type) -> str:
        """As Python sees a value of it."""
        if kind.name == "char" and kind.pointers == 1 and kind.is_const:
            return "bytes | None"
        if kind.name == "char" and kind.length:
            return "bytes"
        if kind.length:
            return f"ctypes.Array[{self._c_type(Type(kind.name))}]"
        if kind.pointers or kind.name in self._api.callbacks:
            return "Any"
        return {"bool": "bool"}.get(kind.name, "int" if kind.name in _SCALARS else kind.name)
