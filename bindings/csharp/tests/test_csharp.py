# SPDX-License-Identifier: Apache-2.0
"""The C# binding, compiled and run by Mono: VELNO_MCS and VELNO_MONO name its compiler and its runtime."""

from __future__ import annotations

import os
import re
import sys
import unittest
from pathlib import Path

BINDING = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(BINDING.parent / "tests"))

import compiled_binding
import test_layout
import velno


class CSharp(compiled_binding.CompiledBindingTest):
    language = "csharp"
    card_payment = "CardPayment"

    @classmethod
    def compile_all(cls) -> None:
        library = sorted((BINDING / "Velno").glob("*.cs"))
        cls.compile("-target:library", f"-out:{cls.built}/Velno.dll", *map(str, library))
        for program in BINDING / "tests" / "Checks.cs", BINDING / "examples" / "Market.cs":
            cls.compile_program(program)

    @classmethod
    def compile(cls, *arguments: str) -> None:
        options = ["-langversion:7.2", "-unsafe", "-warnaserror"]
        compiled_binding.compile_or_fail(os.environ["VELNO_MCS"], *options, *arguments)

    @classmethod
    def compile_program(cls, source: Path) -> None:
        cls.compile(f"-r:{cls.built}/Velno.dll", f"-out:{cls.built}/{source.stem}.exe", str(source))

    def compile_readme(self, text: str) -> str:
        source = self.built / "Readme.cs"
        source.write_text(text, encoding="utf-8")
        self.compile_program(source)
        return source.stem

    def command_of(self, program: str) -> list[str]:
        return [os.environ["VELNO_MONO"], str(self.built / f"{program}.exe")]

    def test_layouts_and_values_are_a_compilers(self) -> None:
        told = dict(line.split("=") for line in self.check("layout").splitlines())
        self.assertIn("offsetof(VelnoSaleItemList, items9)", told)
        self.assertIn("VelnoCause_WrongKey", told)
        ours = {re.sub(r"items(\d)\)", r"items[\1])", name): int(value) for name, value in told.items()}
        self.assertEqual(ours, test_layout.told_by_compiler(list(ours)))
        for module in test_layout.HEADERS:
            text = test_layout.header_text(module)
            declared = re.findall(r"typedef struct (\w+)\n\{", text)
            self.assertLessEqual({f"sizeof({name})" for name in declared}, set(ours))
            values = re.findall(r"^    (Velno\w+_\w+)(?: =|,)", text, re.MULTILINE)
            self.assertLessEqual(set(values), set(ours))

    def test_the_packages_version_is_the_librarys(self) -> None:
        self.assertIn(f"<Version>{velno.__version__}</Version>", (BINDING / "Velno.csproj").read_text())


if __name__ == "__main__":
    unittest.main()
