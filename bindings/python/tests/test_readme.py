# SPDX-License-Identifier: Apache-2.0
"""The README's examples sell as they stand there, and print what stands below them."""

from __future__ import annotations

import unittest

import support


class Readme(support.RegisterTest):
    def examples(self) -> list[tuple[str, str]]:
        return self.readme_examples(support.BINDING, "python")

    def output_of(self, example: str) -> str:
        done = support.run_python("-c", example, cwd=self.folder)
        return done.stdout + done.stderr

    def test_the_examples_sell(self) -> None:
        self.assertEqual(len(self.examples()), 2)
        self.assertLessEqual(self.examples()[0][0].count("\n"), 10)
        for number in range(2):
            self.setUp()
            example, output = self.examples()[number]
            process = self.start_register()
            self.assertEqual(self.output_of(example), output)
            self.assertEqual(process.printed(), ["receipt"])

    def test_the_same_key_sells_nothing_more(self) -> None:
        process = self.start_register()
        example, output = self.examples()[0]
        self.assertEqual([self.output_of(example), self.output_of(example)], [output, output])
        self.assertEqual(process.printed(), ["receipt"])


if __name__ == "__main__":
    unittest.main()
