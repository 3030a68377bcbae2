# SPDX-License-Identifier: Apache-2.0
"""Reads velnoext.h and velnotill.h into the model of header_model.py.

The C compiler's preprocessor and Debian's python3-pycparser read the declarations, header_comments.py what is
said of them. What neither understands ends in an error: nothing is passed over.
"""

from __future__ import annotations

import re
import subprocess
import tempfile
from collections.abc import Callable
from pathlib import Path

from pycparser import c_ast, c_parser

from header_comments import Comments
from header_model import (
    Api,
    Callback,
    Constant,
    Doc,
    Enum,
    EnumValue,
    Field,
    Function,
    Handle,
    Header,
    Parameter,
    Structure,
    Type,
)

HEADERS = ("ExtDevice/velnoext/velnoext.h", "till/velnotill.h")

_DEFINED = re.compile(r"^#define (\w+)(?!\()[ \\\n]+(?!__attribute__)\S", re.MULTILINE)
_MEASURE = "value_of_"  # an enum behind the header tells what its macros come to

_OPERATORS: dict[str, Callable[[int, int], int]] = {
    "+": int.__add__,
    "-": int.__sub__,
    "*": int.__mul__,
    "|": int.__or__,
    "<<": int.__lshift__,
}


def read_api(root: Path, compiler: str = "cc") -> Api:
    return Api(tuple(_Reader(root / name, root, compiler).read() for name in HEADERS))


def _preprocessed(text: str, folders: list[Path], compiler: str) -> str:
    """In C99, by a compiler that shows no extension of its own, on empty standard headers."""
    with tempfile.TemporaryDirectory() as empty:
        for name in ("stddef.h", "stdbool.h"):
            Path(empty, name).touch()
        options = ["-E", "-xc", "-std=c99", "-U__GNUC__", "-nostdinc", "-Dbool=_Bool", f"-I{empty}"]
        command = [compiler, *options, *(f"-I{folder}" for folder in folders), "-"]
        done = subprocess.run(command, input=text, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise ValueError(done.stderr)
    return done.stdout


def _type_words(names: list[str]) -> str:
    return " ".join(names).replace("_Bool", "bool")


class _Reader:
    """Of one header."""

    def __init__(self, path: Path, root: Path, compiler: str) -> None:
        self._name = path.name
        self._text = path.read_text(encoding="utf-8")
        self._comments = Comments(self._text)
        self._sections = self._comments.sections()
        self._pack = 0
        self._known: dict[str, int] = {}  # enum values, those of included headers too
        self._functions: list[Function] = []
        self._structures: list[Structure] = []
        self._enums: list[Enum] = []
        self._callbacks: list[Callback] = []
        self._handles: list[Handle] = []
        guard = re.compile(r"_H$|_API$")
        macros = [name for name in _DEFINED.findall(self._text) if not guard.search(name)]
        values = ", ".join(f"{_MEASURE}{name} = {name}" for name in macros)
        source = f'#include "{path.name}"\n' + (f"enum values {{ {values} }};\n" if macros else "")
        folders = [root / Path(name).parent for name in HEADERS]
        self._tree = c_parser.CParser().parse(_preprocessed(source, folders, compiler))
        self._macros = macros

    def read(self) -> Header:
        for node in self._tree.ext:
            if isinstance(node, c_ast.Pragma):
                self._set_pack(node.string)
            else:
                self._declaration(node)
        constants = tuple(self._constant(name) for name in self._macros)
        return Header(
            file_name=self._name,
            doc=self._comments.head(),
            sections=tuple(section for _, section in self._sections),
            functions=tuple(self._functions),
            structures=tuple(self._structures),
            enums=tuple(self._enums),
            constants=constants,
            callbacks=tuple(self._callbacks),
            handles=tuple(self._handles),
        )

    def _set_pack(self, words: str) -> None:
        pushed = re.fullmatch(r"pack\(push, (\d+)\)", words)
        if not pushed and words != "pack(pop)":
            raise ValueError(f"{self._name}: a pragma that is not known: {words}")
        self._pack = int(pushed[1]) if pushed else 0

    def _declaration(self, node: c_ast.Node) -> None:
        is_ours = Path(node.coord.file).name == self._name
        kind = node.type.type if isinstance(node, c_ast.Typedef) else node.type
        if isinstance(kind, c_ast.Enum):
            self._enum(kind, is_ours)
        elif not is_ours or isinstance(node.type, c_ast.ArrayDecl):
            return  # an included header's, or a statement about a layout
        elif isinstance(node, c_ast.Decl) and isinstance(node.type, c_ast.FuncDecl):
            self._function(node)
        elif isinstance(kind, c_ast.Struct):
            self._structure(kind)
        elif isinstance(node.type, c_ast.PtrDecl) and isinstance(kind, c_ast.FuncDecl):
            place = self._comments.place(node.name, node.coord.line)
            result, doc = self._type(kind.type, ""), self._comments.of(place, ";")
            self._callbacks.append(Callback(node.name, result, self._parameters(kind), doc))
        else:
            raise ValueError(f"{self._name}:{node.coord.line}: a declaration of a kind that is not known")

    def _enum(self, kind: c_ast.Enum, is_ours: bool) -> None:
        values: list[EnumValue] = []
        for one in kind.values.enumerators:
            value = self._number(one.value) if one.value else values[-1].value + 1 if values else 0
            self._known[one.name] = value
            if is_ours:
                doc = self._comments.of(self._comments.place(one.name, one.coord.line), ",")
                values.append(EnumValue(one.name, one.name.removeprefix(f"{kind.name}_"), value, doc))
        if is_ours:
            doc = self._comments.of(self._comments.place(kind.name, kind.coord.line), ";")
            self._enums.append(Enum(kind.name, tuple(values), doc))

    def _number(self, node: c_ast.Node) -> int:
        if isinstance(node, c_ast.Constant):
            return int(node.value.rstrip("uUlL"), 0)
        if isinstance(node, c_ast.ID):
            return self._known[node.name]
        if isinstance(node, c_ast.BinaryOp):
            return _OPERATORS[node.op](self._number(node.left), self._number(node.right))
        raise ValueError(f"{self._name}:{node.coord.line}: a value of a kind that is not known")

    def _constant(self, name: str) -> Constant:
        lines = self._text.split("\n")
        line = next(number for number, text in enumerate(lines, 1) if re.match(rf"#define {name}\b", text))
        doc = self._comments.of(self._comments.place(name, line), "#;")
        return Constant(name, self._known[_MEASURE + name], doc)

    def _structure(self, kind: c_ast.Struct) -> None:
        doc = self._comments.of(self._comments.place(kind.name, kind.coord.line), ";")
        if kind.decls is None:
            self._handles.append(Handle(kind.name, doc))
            return
        if not self._pack:
            raise ValueError(f"{self._name}: {kind.name} is not packed")
        fields = []
        for one in kind.decls:
            place = self._comments.place(one.name, one.coord.line)
            kind_of_field = self._type(one.type, f"{kind.name}_{one.name}")
            fields.append(Field(one.name, kind_of_field, self._comments.of(place, ";")))
        self._structures.append(Structure(kind.name, tuple(fields), self._pack, doc))

    def _function(self, node: c_ast.Decl) -> None:
        place = self._comments.place(node.name, node.coord.line)
        section = [one.title for start, one in self._sections if start < place]
        declaration = self._comments.code_until(place, ";").split("_API ", 1)[1]
        self._functions.append(
            Function(
                name=node.name,
                result=self._type(node.type.type, ""),
                parameters=self._parameters(node.type, f"{node.name}_"),
                declaration=declaration,
                doc=self._comments.of(place, ";"),
                section=section[-1] if section else "",
            )
        )

    def _parameters(self, node: c_ast.FuncDecl, prefix: str = "") -> tuple[Parameter, ...]:
        listed = node.args.params if node.args else []
        named = [one for one in listed if one.name]  # (void) has none
        return tuple(Parameter(one.name, self._type(one.type, prefix + one.name)) for one in named)

    def _type(self, node: c_ast.Node, callback_name: str) -> Type:
        if isinstance(node, c_ast.ArrayDecl):
            inner = self._type(node.type, callback_name)
            return Type(inner.name, inner.pointers, inner.is_const, self._number(node.dim))
        if isinstance(node, c_ast.PtrDecl) and isinstance(node.type, c_ast.FuncDecl):
            result = self._type(node.type.type, "")
            self._callbacks.append(Callback(callback_name, result, self._parameters(node.type), Doc()))
            return Type(callback_name)
        if isinstance(node, c_ast.PtrDecl):
            inner = self._type(node.type, callback_name)
            return Type(inner.name, inner.pointers + 1, inner.is_const)
        return Type(_type_words(node.type.names), is_const="const" in node.quals)
