# SPDX-License-Identifier: Apache-2.0
"""The Java binding, compiled by VELNO_JAVAC and run by VELNO_JAVA with JNA, VELNO_JNA."""

from __future__ import annotations

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BINDING = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(BINDING.parent / "python" / "tests"), str(BINDING.parent / "generator")]

import support
import test_layout
from python_back_end import upper_words


class Java(support.RegisterTest):
    built: Path

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.built = Path(folder.name)
        programs = [BINDING / "tests" / "Checks.java", BINDING / "examples" / "Market.java"]
        cls.compile(*sorted((BINDING / "velno").rglob("*.java")), *programs)

    @classmethod
    def compile(cls, *sources: Path) -> None:
        options = ["--release", "17", "-encoding", "UTF-8", "-Xlint:all,-try", "-Werror"]
        places = ["-d", str(cls.built), "-cp", cls.places()]
        command = [os.environ["VELNO_JAVAC"], *options, *places, *map(str, sources)]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise RuntimeError(done.stdout + done.stderr)

    @classmethod
    def places(cls) -> str:
        return f"{cls.built}:{os.environ['VELNO_JNA']}"

    def run_program(self, program: str, *arguments: str) -> subprocess.CompletedProcess[str]:
        options = ["-Dstdout.encoding=UTF-8", "-Dfile.encoding=UTF-8", "-cp", self.places()]
        command = [os.environ["VELNO_JAVA"], *options, program, *arguments]
        return subprocess.run(command, cwd=self.folder, capture_output=True, text=True, check=False)

    def check(self, *arguments: str) -> str:
        done = self.run_program("Checks", *arguments)
        self.assertEqual((done.stderr, done.returncode), ("", 0))
        return done.stdout

    def test_layouts_and_values_are_a_compilers(self) -> None:
        lines = [line.split() for line in self.check("layout").splitlines()]
        told = {(one, name): int(number) for one, name, number in lines}
        expressions = {}
        for module in test_layout.HEADERS:
            for one in test_layout.structures(module):
                expressions[one.__name__, "BYTES"] = f"sizeof({one.__name__})"
                for name, *_ in one._fields_:
                    expressions[one.__name__, upper_words(name)] = f"offsetof({one.__name__}, {name})"
            text = test_layout.header_text(module)
            for kind, short in re.findall(r"^    (Velno[A-Za-z]+)_(\w+)(?: =|,)", text, re.MULTILINE):
                expressions[kind, upper_words(short)] = f"{kind}_{short}"
        self.assertIn(("VelnoTillSettings", "LEDGER"), expressions)
        by_compiler = test_layout.told_by_compiler(list(expressions.values()))
        self.assertEqual(told, {one: by_compiler[expression] for one, expression in expressions.items()})

    def test_every_function_is_bound(self) -> None:
        declared = {
            f"{name} {len(getattr(module._library, name).argtypes)}"
            for module in test_layout.HEADERS
            for name in vars(module)
            if re.match(r"velno(ext|till)_(?!set_log_line)\w+$", name)
        }
        self.assertEqual(set(self.check("functions").splitlines()), declared)

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
        self.assertIn("  4711: CARD_PAYMENT\n", stages)
        self.assertEqual((again.stderr, again.returncode, again.stdout), ("", 0, f"Receipt{told}"))
        self.assertEqual(process.printed(), ["receipt"])

    def test_the_readmes_lines_sell(self) -> None:
        text = (BINDING / "README.md").read_text(encoding="utf-8")
        block = r"^```java\n(.*?)^```\n\n```\n(.*?)^```$"
        [[example, output]] = re.findall(block, text, re.DOTALL | re.MULTILINE)
        self.assertLessEqual(example.count("\n"), 10)
        for stands, taken in ("UB1234567890", self.serial), ("0.0.0.0:4100", self.listen):
            self.assertIn(stands, example)
            example = example.replace(stands, taken)
        source = self.folder / "Sell.java"
        source.write_text(example, encoding="utf-8")
        self.compile(source)
        process = self.start_register()
        for _ in range(2):
            done = self.run_program("Sell")
            self.assertEqual((done.stderr, done.stdout), ("", output))
        self.assertEqual(process.printed(), ["receipt"])


if __name__ == "__main__":
    unittest.main()
