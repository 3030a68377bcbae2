# SPDX-License-Identifier: Apache-2.0
"""The low level of the C# binding: a file for each header, in C# 7.

A `const char *` that is handed over is a byte[] with its zero; one that is returned, any other `char *` and a
handle are an IntPtr; other pointers are pointers. Structures are blittable: with explicit offsets where these
are the same for every word size, otherwise in sequence with the header's packing, which comes to the same.
"""

from __future__ import annotations

import textwrap
from xml.sax.saxutils import escape

from header_model import SCALAR_BYTES, Api, Callback, Doc, Enum, Function, Header, Parameter, Structure, Type

FOLDER = "bindings/csharp/Velno"
LONGEST_LINE = 100

_SCALARS = {
    "bool": "bool",
    "char": "byte",
    "signed char": "sbyte",
    "unsigned char": "byte",
    "unsigned short": "ushort",
    "int": "int",
    "unsigned int": "uint",
    "long long": "long",
    "unsigned long long": "ulong",
    "void": "void",
}
_KEYWORDS = {"out", "ref", "params", "object", "string", "event", "lock", "base", "in", "is"}


def write(api: Api) -> dict[str, str]:
    """The files of this back end: path from the root, and text."""
    return {f"{FOLDER}/{_class(header)}.cs": _File(api, header).text() for header in api.headers}


def _stem(header: Header) -> str:
    return header.file_name.removesuffix(".h")


def _class(header: Header) -> str:
    return _stem(header).capitalize()


def _named(name: str) -> str:
    return f"@{name}" if name in _KEYWORDS else name


def _summary(doc: Doc, indent: str, more: str = "") -> str:
    """As a comment of documentation."""
    said = [doc.text] if doc.text else []
    said += [f"{name}: {words}" for name, words in doc.parameters.items()]
    said += [f"Returns {doc.returns}"] if doc.returns else []
    said += [more] if more else []
    if not said:
        return ""
    width = LONGEST_LINE - len(indent)
    lines = [line for words in said for line in textwrap.wrap(" ".join(words.split()), width)]
    if len(lines) == 1 and len(lines[0]) < width - len("/// <summary></summary>") + 8:
        return f"{indent}/// <summary>{escape(lines[0])}</summary>\n"
    inner = "".join(f"{indent}/// {escape(line)}\n" for line in lines)
    return f"{indent}/// <summary>\n{inner}{indent}/// </summary>\n"


class _File:
    def __init__(self, api: Api, header: Header) -> None:
        self._api = api
        self._header = header

    def text(self) -> str:
        header = self._header
        parts = [self._enum(one) for one in header.enums]
        parts += [self._structure(one) for one in header.structures]
        parts += [self._delegate(one) for one in header.callbacks]
        parts += [self._functions()]
        return (
            "// SPDX-License-Identifier: Apache-2.0\n"
            f"// {header.file_name} for C#. Made by scripts/generate from the header: do not edit.\n\n"
            "using System;\nusing System.Runtime.InteropServices;\n\n"
            "namespace Velno.Native\n{\n" + "\n".join(parts) + "}\n"
        )

    def _enum(self, enum: Enum) -> str:
        text = f"{_summary(enum.doc, '    ')}    public enum {enum.name}\n    {{\n"
        for one in enum.values:
            text += f"{_summary(one.doc, ' ' * 8)}        {one.short} = {one.value},\n"
        return text + "    }\n"

    def _structure(self, structure: Structure) -> str:
        narrow, wide = (self._api.layout(structure, pointer_bytes) for pointer_bytes in (4, 8))
        is_explicit = narrow == wide
        layout = f"LayoutKind.Explicit, Size = {wide.size}" if is_explicit else "LayoutKind.Sequential"
        text = _summary(structure.doc, "    ")
        text += f"    [StructLayout({layout}, Pack = {structure.pack})]\n"
        text += f"    public unsafe struct {structure.name}\n    {{\n"
        for one in structure.fields:
            text += _summary(one.doc, " " * 8)
            for name, kind, place in self._parts(one.name, one.type, wide.offsets[one.name]):
                offset = f"[FieldOffset({place})] " if is_explicit else ""
                text += f"        {offset}public {kind} {name};\n"
        return text + "    }\n"

    def _parts(self, name: str, kind: Type, place: int) -> list[tuple[str, str, int]]:
        """Name, type and offset; several for an array of structures, which C# cannot hold by value."""
        element = Type(kind.name, kind.pointers, kind.is_const)
        if not kind.length:
            return [(_named(name), "IntPtr" if kind.pointers else self._type(kind), place)]
        if kind.name in SCALAR_BYTES:
            return [(f"{_named(name)}[{kind.length}]", f"fixed {self._type(element)}", place)]
        size = self._api.layout(self._api.structures[kind.name], 8).size
        return [(f"{name}{number}", kind.name, place + number * size) for number in range(kind.length)]

    def _delegate(self, callback: Callback) -> str:
        arguments = ", ".join(self._argument(one, is_told=True) for one in callback.parameters)
        return (
            f"{_summary(callback.doc, '    ')}"
            "    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]\n"
            f"    public unsafe delegate {self._type(callback.result)} {callback.name}(\n"
            f"        {arguments});\n"
        )

    def _functions(self) -> str:
        header, stem = self._header, _stem(self._header)
        text = f"    /// <summary>The functions of {header.file_name}.</summary>\n"
        text += f"    public static unsafe class {_class(header)}\n    {{\n"
        text += f'        private const string Library = "lib{stem}.so.0";\n'
        for one in header.constants:
            text += f"\n{_summary(one.doc, ' ' * 8)}        public const int {one.name} = {one.value};\n"
        return text + "".join(f"\n{self._function(one)}" for one in header.functions) + "    }\n"

    def _function(self, function: Function) -> str:
        arguments = [self._argument(one) for one in function.parameters]
        result = "IntPtr" if function.result.pointers else self._type(function.result)
        head = f"        public static extern {result} {function.name}("
        line = f"{head}{', '.join(arguments)});\n"
        if len(line) > LONGEST_LINE + 8:
            line = head + "\n" + ",\n".join(f"            {one}" for one in arguments) + ");\n"
        return (
            _summary(function.doc, " " * 8, f"{function.declaration};")
            + "        [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]\n"
            + line
        )

    def _argument(self, parameter: Parameter, is_told: bool = False) -> str:
        kind = parameter.type
        if kind.name == "bool" and not kind.pointers:
            return f"[MarshalAs(UnmanagedType.I1)] bool {_named(parameter.name)}"
        if kind.name == "char" and kind.pointers == 1 and kind.is_const and not is_told:
            return f"byte[] {_named(parameter.name)}"
        return f"{self._type(kind)} {_named(parameter.name)}"

    def _type(self, kind: Type) -> str:
        is_opaque = kind.name in self._api.handles or kind.name in ("char", "void")
        if kind.pointers and is_opaque:
            return "IntPtr" + "*" * (kind.pointers - 1)
        return _SCALARS.get(kind.name, kind.name) + "*" * kind.pointers
