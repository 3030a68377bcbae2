# SPDX-License-Identifier: Apache-2.0
"""The C# binding, compiled and run by Mono: VELNO_MCS and VELNO_MONO name its compiler and its runtime."""

from __future__ import annotations

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BINDING = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(BINDING.parent / "python" / "tests"))

import support
import test_layout
import velno


def compiled(folder: Path, *sources: Path, library: bool = False) -> Path:
    """The library, or a program that refers to it there."""
    made = folder / ("Velno.dll" if library else f"{sources[0].stem}.exe")
    kind = ["-target:library"] if library else [f"-r:{folder}/Velno.dll"]
    options = ["-langversion:7.2", "-unsafe", "-warnaserror", *kind, f"-out:{made}"]
    command = [os.environ["VELNO_MCS"], *options, *map(str, sources)]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(done.stdout + done.stderr)
    return made


class CSharp(support.RegisterTest):
    built: Path

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.built = Path(folder.name)
        compiled(cls.built, *sorted((BINDING / "Velno").glob("*.cs")), library=True)
        compiled(cls.built, BINDING / "tests" / "Checks.cs")
        compiled(cls.built, BINDING / "examples" / "Market.cs")

    def run_program(self, program: str, *arguments: str) -> subprocess.CompletedProcess[str]:
        command = [os.environ["VELNO_MONO"], str(self.built / f"{program}.exe"), *arguments]
        return subprocess.run(command, cwd=self.folder, capture_output=True, text=True, check=False)

    def check(self, *arguments: str) -> str:
        done = self.run_program("Checks", *arguments)
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        return done.stdout

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

    def test_every_function_is_bound(self) -> None:
        bound = set(self.check("functions").splitlines())
        modules = test_layout.HEADERS
        declared = {
            f"{name} {len(getattr(module._library, name).argtypes)}"
            for module in modules
            for name in vars(module)
            if re.match(r"velno(ext|till)_(?!set_log_line)\w+$", name)
        }
        self.assertEqual(bound, declared)

    def test_values_are_written_exactly_or_refused(self) -> None:
        self.check("values")

    def test_receipts(self) -> None:
        process = self.start_register()
        self.check("till", self.serial, self.listen, "ledger")
        self.assertEqual(process.printed(), ["receipt", "x-report", "z-report", "slip"])

    def test_waits_can_be_ended(self) -> None:
        self.check("alone", self.serial, self.listen, "ledger")

    def test_single_commands(self) -> None:
        process = self.start_register()
        self.check("register", self.serial, self.listen)
        self.assertEqual(process.printed(), ["receipt", "cancelled", "cancelled", "x-report", "z-report"])

    def test_a_markets_sale_comes_through_lost_answers(self) -> None:
        process = self.start_register("--fault", "lost-answer=change-state*3")
        arguments = [self.serial, self.listen, "ledger", "4711"]
        first, again = self.run_program("Market", *arguments), self.run_program("Market", *arguments)
        self.assertEqual((first.stderr, first.returncode), ("", 0))
        stages, told = first.stdout.split("Receipt", 1)
        self.assertRegex(told, r"^ 1 of Z 1 is closed: total 115.38 TL, cash 50.00 TL, card 65.38 TL,")
        self.assertIn("  4711: CardPayment\n", stages)
        self.assertEqual((again.stderr, again.returncode, again.stdout), ("", 0, f"Receipt{told}"))
        self.assertEqual(process.printed(), ["receipt"])

    def test_the_readmes_lines_sell(self) -> None:
        text = (BINDING / "README.md").read_text(encoding="utf-8")
        block = r"^```csharp\n(.*?)^```\n\n```\n(.*?)^```$"
        [[example, output]] = re.findall(block, text, re.DOTALL | re.MULTILINE)
        self.assertLessEqual(example.count("\n"), 10)
        for stands, taken in ("UB1234567890", self.serial), ("0.0.0.0:4100", self.listen):
            self.assertIn(stands, example)
            example = example.replace(stands, taken)
        source = self.built / "Readme.cs"
        source.write_text(example, encoding="utf-8")
        compiled(self.built, source)
        process = self.start_register()
        for _ in range(2):
            done = self.run_program("Readme")
            self.assertEqual((done.stderr, done.stdout), ("", output))
        self.assertEqual(process.printed(), ["receipt"])

    def test_the_packages_version_is_the_librarys(self) -> None:
        self.assertIn(f"<Version>{velno.__version__}</Version>", (BINDING / "Velno.csproj").read_text())


if __name__ == "__main__":
    unittest.main()
