# SPDX-License-Identifier: Apache-2.0
"""The low level of the Java binding, on JNA: a class for each header, which holds everything of it.

A `const char *` that is handed over is a byte[] with its zero; every other pointer is a Pointer. A structure
is a view of memory with explicit offsets, by the word size where they depend on it.
"""

from __future__ import annotations

import textwrap

from header_model import Api, Callback, Doc, Enum, Field, Function, Header, Layout, Parameter, Structure, Type
from python_back_end import upper_words

FOLDER = "bindings/java/velno/low"
LONGEST_LINE = 100

# Java's type, and the word in the names of JNA's methods.
_SCALARS = {
    "bool": ("byte", "Byte"),
    "char": ("byte", "Byte"),
    "signed char": ("byte", "Byte"),
    "unsigned char": ("byte", "Byte"),
    "unsigned short": ("short", "Short"),
    "int": ("int", "Int"),
    "unsigned int": ("int", "Int"),
    "long long": ("long", "Long"),
    "unsigned long long": ("long", "Long"),
    "void": ("void", ""),
}
_POINTER = ("Pointer", "Pointer")


def write(api: Api) -> dict[str, str]:
    """The files of this back end: path from the root, and text."""
    return {f"{FOLDER}/{_class(header)}.java": _File(api, header).text() for header in api.headers}


def _class(header: Header) -> str:
    return header.file_name.removesuffix(".h").capitalize()


def _comment(doc: Doc, indent: str, more: str = "") -> str:
    said = [doc.text] if doc.text else []
    said += [f"{name}: {words}" for name, words in doc.parameters.items()]
    said += [f"Returns {doc.returns}"] if doc.returns else []
    said += [more] if more else []
    plain = [" ".join(words.split()).replace("*/", "* /").replace("@", "(at)") for words in said]
    lines = [line for words in plain for line in textwrap.wrap(words, LONGEST_LINE - len(indent))]
    if not lines:
        return ""
    if len(lines) == 1:
        return f"{indent}/** {lines[0]} */\n"
    return f"{indent}/**\n" + "".join(f"{indent} * {line}\n" for line in lines) + f"{indent} */\n"


class _File:
    def __init__(self, api: Api, header: Header) -> None:
        self._api = api
        self._header = header

    def text(self) -> str:
        header, name = self._header, _class(self._header)
        parts = [
            f"{_comment(one.doc, '    ')}    public static final int {one.name} = {one.value};\n"
            for one in header.constants
        ]
        parts += [self._enum(one) for one in header.enums]
        parts += [self._structure(one) for one in header.structures]
        parts += [self._callback(one) for one in header.callbacks]
        parts += [self._functions()]
        before = self._api.headers[: self._api.headers.index(header)]
        imports = [f"import velno.low.{_class(one)}.*;\n" for one in before]
        return (
            "// SPDX-License-Identifier: Apache-2.0\n"
            f"// {header.file_name} for Java. Made by scripts/generate from the header: do not edit.\n"
            "package velno.low;\n\n"
            "import com.sun.jna.Callback;\nimport com.sun.jna.Library;\nimport com.sun.jna.Memory;\n"
            f"import com.sun.jna.Native;\nimport com.sun.jna.Pointer;\n{''.join(imports)}\n"
            f"/** What {header.file_name} declares. */\n"
            f"public final class {name} {{\n    private {name}() {{\n    }}\n\n" + "\n".join(parts) + "}\n"
        )

    def _enum(self, enum: Enum) -> str:
        text = f"{_comment(enum.doc, '    ')}    public enum {enum.name} {{\n"
        indent = " " * 8
        values = [
            f"{_comment(one.doc, indent)}{indent}{upper_words(one.short)}({one.value})" for one in enum.values
        ]
        return text + ",\n".join(values) + (
            ";\n\n        public final int value;\n\n"
            f"        {enum.name}(int value) {{\n            this.value = value;\n        }}\n\n"
            "        /** Null for a number that has no name. */\n"
            f"        public static {enum.name} of(int value) {{\n"
            f"            for ({enum.name} one : values())\n"
            "                if (one.value == value)\n                    return one;\n"
            "            return null;\n        }\n    }\n"
        )

    def _structure(self, structure: Structure) -> str:
        layouts = [self._api.layout(structure, pointer_bytes) for pointer_bytes in (4, 8)]
        name = structure.name
        text = f"{_comment(structure.doc, '    ')}    public static final class {name} {{\n"
        text += f"        public static final long BYTES = {_by_word(*(one.size for one in layouts))};\n"
        text += "        public final Pointer at;\n\n"
        text += f"        public {name}() {{\n            Memory memory = new Memory(BYTES);\n"
        text += "            memory.clear();\n            at = memory;\n        }\n\n"
        text += f"        public {name}(Pointer at) {{\n            this.at = at;\n        }}\n"
        return text + "".join(self._field(one, layouts) for one in structure.fields) + "    }\n"

    def _field(self, field: Field, layouts: list[Layout]) -> str:
        kind, name, comment = field.type, field.name, _comment(field.doc, " " * 8)
        place = _by_word(*(one.offsets[name] for one in layouts))
        text = f"\n        public static final long {upper_words(name)} = {place};\n\n{comment}"
        if kind.name in self._api.structures and not kind.pointers:
            index, offset = ("int index", f" + index * {kind.name}.BYTES") if kind.length else ("", "")
            where = f"at.share({upper_words(name)}{offset}, {kind.name}.BYTES)"
            return text + (
                f"        public {kind.name} {name}({index}) {{\n"
                f"            return new {kind.name}({where});\n        }}\n"
            )
        java, word = _POINTER if kind.pointers else _SCALARS[kind.name]
        if kind.length:
            return text + (
                f"        public {java}[] {name}() {{\n"
                f"            return at.get{word}Array({upper_words(name)}, {kind.length});\n        }}\n\n"
                f"        public void {name}({java}[] value) {{\n"
                f"            if (value.length > {kind.length})\n"
                f'                throw new IllegalArgumentException("{name}: more than {kind.length}");\n'
                f"            at.write({upper_words(name)}, value, 0, value.length);\n        }}\n"
            )
        return text + (
            f"        public {java} {name}() {{\n"
            f"            return at.get{word}({upper_words(name)});\n        }}\n\n"
            f"        public void {name}({java} value) {{\n"
            f"            at.set{word}({upper_words(name)}, value);\n        }}\n"
        )

    def _callback(self, callback: Callback) -> str:
        arguments = ", ".join(f"{self._type(one.type)} {one.name}" for one in callback.parameters)
        return (
            f"{_comment(callback.doc, '    ')}    public interface {callback.name} extends Callback {{\n"
            f"        {self._type(callback.result)} invoke({arguments});\n    }}\n"
        )

    def _functions(self) -> str:
        text = f"    /** The functions of {self._header.file_name}, see Loading. */\n"
        text += "    public interface Functions extends Library {\n"
        return text + "\n".join(self._function(one) for one in self._header.functions) + "    }\n"

    def _function(self, function: Function) -> str:
        arguments = [self._argument(one) for one in function.parameters]
        head = f"        {self._type(function.result)} {function.name}("
        line = f"{head}{', '.join(arguments)});\n"
        if len(line) > LONGEST_LINE + 8:
            line = head + "\n" + ",\n".join(f"            {one}" for one in arguments) + ");\n"
        return _comment(function.doc, " " * 8, f"{function.declaration};") + line

    def _argument(self, parameter: Parameter) -> str:
        kind = parameter.type
        is_text = kind.name == "char" and kind.pointers == 1 and kind.is_const
        return f"{'byte[]' if is_text else self._type(kind)} {parameter.name}"

    def _type(self, kind: Type) -> str:
        if kind.pointers:
            return "Pointer"
        return kind.name if kind.name in self._api.callbacks else _SCALARS[kind.name][0]


def _by_word(narrow: int, wide: int) -> str:
    return f"{wide}" if narrow == wide else f"Native.POINTER_SIZE == 8 ? {wide} : {narrow}"
