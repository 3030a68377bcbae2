# SPDX-License-Identifier: Apache-2.0
"""The low level says what a C compiler says of the headers, and all of it."""

from __future__ import annotations

import ctypes
import enum
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path
from types import ModuleType

import support
import velno
from velno import _library, _velnoext, _velnotill

HEADERS = {_velnoext: "ExtDevice/velnoext/velnoext.h", _velnotill: "till/velnotill.h"}


def header_text(module: ModuleType) -> str:
    return (support.ROOT / HEADERS[module]).read_text(encoding="utf-8")


def structures(module: ModuleType) -> list[type[ctypes.Structure]]:
    own = [one for one in vars(module).values() if getattr(one, "__module__", "") == module.__name__]
    return [one for one in own if isinstance(one, type) and issubclass(one, ctypes.Structure)]


def places(structure: type[ctypes.Structure]) -> dict[str, int]:
    fields = {name: getattr(structure, name) for name, *_ in structure._fields_}
    found = {f"offsetof({structure.__name__}, {name})": one.offset for name, one in fields.items()}
    sizes = {f"sizeof((({structure.__name__} *)0)->{name})": one.size for name, one in fields.items()}
    return {f"sizeof({structure.__name__})": ctypes.sizeof(structure), **found, **sizes}


def told_by_compiler(expressions: list[str]) -> dict[str, int]:
    lines = "".join(f'    printf("%lld\\n", (long long)({one}));\n' for one in expressions)
    with tempfile.TemporaryDirectory() as folder:
        source, program = Path(folder, "told.c"), Path(folder, "told")
        source.write_text(f'#include <stdio.h>\n#include "velnotill.h"\n\nint main(void)\n{{\n{lines}}}\n')
        places = [f"-I{(support.ROOT / header).parent}" for header in HEADERS.values()]
        compiler = os.environ.get("VELNO_C_COMPILER", "cc")
        subprocess.run([compiler, *places, str(source), "-o", str(program)], check=True)
        told = subprocess.run([str(program)], capture_output=True, text=True, check=True).stdout.split()
    return dict(zip(expressions, map(int, told), strict=True))


class Layout(unittest.TestCase):
    def test_structures_are_as_the_compiler_lays_them_out(self) -> None:
        all_structures = structures(_velnoext) + structures(_velnotill)
        ours = {name: place for one in all_structures for name, place in places(one).items()}
        self.assertIn("offsetof(VelnoSaleItem, section)", ours)
        self.assertIn("sizeof(VelnoTillSettings)", ours)
        self.assertEqual(ours, told_by_compiler(list(ours)))

    def test_every_structure_of_the_headers_is_there(self) -> None:
        for module in HEADERS:
            declared = set(re.findall(r"typedef struct (\w+)\n\{", header_text(module)))
            self.assertEqual({one.__name__ for one in structures(module)}, declared)

    def test_values_are_the_headers(self) -> None:
        ours = {}
        for module in HEADERS:
            for name in re.findall(r"typedef enum (\w+) \{", header_text(module)):
                declared = re.findall(rf"^    ({name}_\w+)\b", header_text(module), re.MULTILINE)
                values = list(getattr(module, name))
                self.assertTrue(all(isinstance(one, enum.IntEnum) for one in values))
                ours.update(dict(zip(declared, map(int, values), strict=True)))
            numbers = r"^#define (VELNO\w+)(?= [0-9]|  +\\\n)"
            for name in re.findall(numbers, header_text(module), re.MULTILINE):
                ours[name] = getattr(module, name)
        self.assertEqual(len([name for name in ours if name.startswith("VELNO")]), 6)
        self.assertEqual(ours, told_by_compiler(list(ours)))

    def test_a_structure_with_another_layout_is_refused(self) -> None:
        class Wrong(ctypes.Structure):
            _fields_ = [("a", ctypes.c_char), ("b", ctypes.c_longlong)]

        word = ctypes.sizeof(ctypes.c_void_p)
        size, offset = ctypes.sizeof(Wrong), Wrong.b.offset
        _library.check_layout(Wrong, {word: size}, {"b": {word: offset}})
        for sizes, offsets in ({word: size + 1}, {word: offset}), ({word: size}, {word: offset + 1}):
            with self.assertRaisesRegex(ImportError, "Wrong has another layout"):
                _library.check_layout(Wrong, sizes, {"b": offsets})


class Functions(unittest.TestCase):
    def test_every_function_of_the_headers_is_bound_with_its_parameters(self) -> None:
        for module in HEADERS:
            text = re.sub(r"/\*.*?\*/", "", header_text(module), flags=re.DOTALL)
            declared = re.findall(r"^VELNO\w*_API\s+[^;(]*?(\w+)\((.*?)\);", text, re.DOTALL | re.MULTILINE)
            self.assertGreater(len(declared), 20)
            bound = {name for name in vars(module) if re.match(r"velno(ext|till)_\w+$", name)}
            bound -= {"velnoext_set_log_line"}  # the type of its callback
            self.assertEqual(bound, {name for name, _ in declared})
            for name, parameters in declared:
                inner = re.sub(r"\([^()]*\)", "", parameters)
                count = 0 if inner == "void" else inner.count(",") + 1
                self.assertEqual(len(getattr(module._library, name).argtypes), count, name)
                self.assertTrue(getattr(module, name).__doc__, name)


class Finding(unittest.TestCase):
    def import_with(self, folder: str) -> subprocess.CompletedProcess[str]:
        code = "import velno; print(velno.library_version())"
        return support.run_python("-c", code, VELNO_LIBRARY=folder)

    def test_the_folder_named_is_the_one_taken(self) -> None:
        found = self.import_with(os.environ["VELNO_LIBRARY"])
        self.assertEqual((found.returncode, found.stderr), (0, ""))
        parts = [getattr(_velnoext, f"VELNOEXT_VERSION_{part}") for part in ("MAJOR", "MINOR", "PATCH")]
        self.assertEqual(found.stdout.strip(), ".".join(map(str, parts)))
        self.assertEqual(found.stdout.strip(), velno.__version__)

    def test_a_folder_without_libraries_is_told_in_words(self) -> None:
        with tempfile.TemporaryDirectory() as empty:
            found = self.import_with(empty)
        self.assertEqual(found.returncode, 1)
        [line] = [line for line in found.stderr.splitlines() if line.startswith("ImportError: ")]
        self.assertIn(f"{empty}/libvelnoext.so.0 cannot be loaded", line)
        self.assertIn("Install the package libvelnoext0, or set VELNO_LIBRARY", line)


if __name__ == "__main__":
    unittest.main()
