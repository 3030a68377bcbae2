# SPDX-License-Identifier: Apache-2.0
"""The Java binding, compiled by VELNO_JAVAC and run by VELNO_JAVA with JNA, VELNO_JNA."""

from __future__ import annotations

import os
import re
import signal
import sys
import unittest
from pathlib import Path

BINDING = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(BINDING.parent / "tests"))

import compiled_binding
import test_layout
from python_back_end import upper_words


class Java(compiled_binding.CompiledBindingTest):
    language = "java"
    connecting, card_payment = "CONNECTING", "CARD_PAYMENT"
    # A JVM that is about to end for the signal takes the status of a System.exit() that comes in its last moment.
    statuses_after_ctrl_c = (128 + signal.SIGINT, 1)

    @classmethod
    def compile_all(cls) -> None:
        programs = [BINDING / "tests" / "Checks.java", BINDING / "examples" / "Market.java"]
        cls.compile(*sorted((BINDING / "velno").rglob("*.java")), *programs)

    @classmethod
    def compile(cls, *sources: Path) -> None:
        options = ["--release", "17", "-encoding", "UTF-8", "-Xlint:all,-try", "-Werror"]
        places = ["-d", str(cls.built), "-cp", cls.places()]
        compiled_binding.run_or_fail(os.environ["VELNO_JAVAC"], *options, *places, *map(str, sources))

    @classmethod
    def places(cls) -> str:
        return f"{cls.built}:{os.environ['VELNO_JNA']}"

    def compile_readme(self, text: str) -> str:
        source = self.folder / "Sell.java"
        source.write_text(text, encoding="utf-8")
        self.compile(source)
        return source.stem

    def command_of(self, program: str) -> list[str]:
        options = ["-Dstdout.encoding=UTF-8", "-Dfile.encoding=UTF-8", "-cp", self.places()]
        return [os.environ["VELNO_JAVA"], *options, program]

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


if __name__ == "__main__":
    unittest.main()
