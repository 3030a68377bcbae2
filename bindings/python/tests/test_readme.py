# SPDX-License-Identifier: Apache-2.0
"""The README's examples sell as they stand there, and print what stands below them."""

from __future__ import annotations

import re
import unittest

import support


class Readme(support.RegisterTest):
    def blocks(self) -> list[tuple[str, str]]:
        """Each example in Python with the output behind it."""
        text = (support.BINDING / "README.md").read_text(encoding="utf-8")
        return re.findall(r"^```python\n(.*?)^```\n\n```\n(.*?)^```$", text, re.DOTALL | re.MULTILINE)

    def output_of(self, example: str) -> str:
        """With this test's register and port in place of the README's."""
        for stands, taken in ("UB1234567890", self.serial), ("0.0.0.0:4100", self.listen):
            self.assertEqual(example.count(stands), 1)
            example = example.replace(stands, taken)
        done = support.run_python("-c", example, cwd=self.folder)
        return done.stdout + done.stderr

    def test_the_examples_sell(self) -> None:
        blocks = self.blocks()
        self.assertEqual(len(blocks), 2)
        self.assertLessEqual(blocks[0][0].count("\n"), 10)
        for example, output in blocks:
            self.setUp()
            process = self.start_register()
            self.assertEqual(self.output_of(example), output)
            self.assertEqual(process.printed(), ["receipt"])

    def test_the_same_key_sells_nothing_more(self) -> None:
        process = self.start_register()
        example, output = self.blocks()[0]
        self.assertEqual([self.output_of(example), self.output_of(example)], [output, output])
        self.assertEqual(process.printed(), ["receipt"])


if __name__ == "__main__":
    unittest.main()
