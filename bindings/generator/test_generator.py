# SPDX-License-Identifier: Apache-2.0
"""Tests of the generator, on small headers and on those of the project."""

from __future__ import annotations

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import generate
import header_reader
from header_model import Api, Type
from header_reader import read_api

SMALL = """
/** What the header is for. */
#ifndef SMALL_H
#define SMALL_H
#define VELNO_API
/** Added up.
 *  Twice. */
#define VELNO_SUM (2 * 3 + \\
    4)

/* First things ---------- */

/* Said of all
 * of them. */

/** Colours. */
typedef enum Colour {
    Colour_Red = 1, /**< like blood */
    Colour_Blue,
    Colour_Sum = Colour_Red + (1 << 4)
} Colour;

#pragma pack(push, 4)
/** A shape. */
typedef struct Shape
{
    unsigned short count; /**< of
                           *   corners */
    /** Its name. */
    const char *name;
    char code[3];
    long long area;
    Colour colour;
} Shape;
#pragma pack(pop)

typedef char Shape_size[sizeof(Shape) == 36 ? 1 : -1];

/**
 * Draws. A second sentence.
 *
 *     draw(&shape);
 *
 * @param shape  only
 *               read
 * @return 0; 3: NULL
 */
VELNO_API int draw(Shape *shape, void (*told)(int how, void *context),
                   void *context);
VELNO_API void undocumented(void);
VELNO_API const char *name_of(int one); /**< "red" */
#endif
"""


def read(text: str) -> Api:
    with tempfile.TemporaryDirectory() as folder:
        Path(folder, "small.h").write_text(text, encoding="utf-8")
        kept, header_reader.HEADERS = header_reader.HEADERS, ("small.h",)
        try:
            return read_api(Path(folder))
        finally:
            header_reader.HEADERS = kept


class SmallHeader(unittest.TestCase):
    def setUp(self) -> None:
        self.api = read(SMALL)
        [self.header] = self.api.headers

    def test_functions_have_their_types_and_their_manual(self) -> None:
        draw, undocumented, name_of = self.header.functions
        callback = "void (*told)(int how, void *context)"
        self.assertEqual(draw.declaration, f"int draw(Shape *shape, {callback}, void *context)")
        types = [one.type for one in draw.parameters]
        self.assertEqual(types, [Type("Shape", 1), Type("draw_told"), Type("void", 1)])
        self.assertEqual(draw.doc.summary, "Draws.")
        self.assertEqual(draw.doc.text, "Draws. A second sentence.\n\n    draw(&shape);")
        self.assertEqual(draw.doc.parameters, {"shape": "only read"})
        self.assertEqual(draw.doc.returns, "0; 3: NULL")
        self.assertEqual((undocumented.doc.text, undocumented.parameters), ("", ()))
        self.assertEqual(undocumented.result, Type("void"))
        self.assertEqual((name_of.doc.text, name_of.result), ('"red"', Type("char", 1, True)))

    def test_sections_group_functions(self) -> None:
        [section] = self.header.sections
        self.assertEqual((section.title, section.text), ("First things", "Said of all\nof them."))
        self.assertEqual({one.section for one in self.header.functions}, {"First things"})

    def test_values_are_computed(self) -> None:
        [colour] = self.header.enums
        values = {one.short: one.value for one in colour.values}
        self.assertEqual(values, {"Red": 1, "Blue": 2, "Sum": 17})
        self.assertEqual([one.doc.text for one in colour.values], ["like blood", "", ""])
        [constant] = self.header.constants
        self.assertEqual((constant.value, constant.doc.text), (10, "Added up.\nTwice."))

    def test_layouts_follow_the_packing(self) -> None:
        shape = self.api.structures["Shape"]
        self.assertEqual([one.doc.text for one in shape.fields], ["of\ncorners", "Its name.", "", "", ""])
        wide, narrow = self.api.layout(shape, 8), self.api.layout(shape, 4)
        self.assertEqual(dict(wide.offsets), {"count": 0, "name": 4, "code": 12, "area": 16, "colour": 24})
        self.assertEqual(dict(narrow.offsets), {"count": 0, "name": 4, "code": 8, "area": 12, "colour": 20})
        self.assertEqual((wide.size, narrow.size), (28, 24))

    def test_callbacks_without_a_name_get_one(self) -> None:
        [told] = self.header.callbacks
        self.assertEqual(told.name, "draw_told")
        self.assertEqual([one.type for one in told.parameters], [Type("int"), Type("void", 1)])


class OddHeaders(unittest.TestCase):
    def refused(self, text: str, why: str) -> None:
        with self.assertRaisesRegex(Exception, why):
            read("/** Head. */\n" + text)

    def test_what_is_not_known_is_refused(self) -> None:
        self.refused("typedef struct A { int a; } A;", "A is not packed")
        self.refused("#pragma once_more\n", "once_more")
        self.refused("extern int variable;", "a declaration of a kind that is not known")
        self.refused("typedef enum A { A_One = sizeof(int) } A;", "a value of a kind that is not known")
        self.refused("#include <nowhere.h>\n", "nowhere.h")
        self.refused("int broken(;", "broken|before")


class ProjectHeaders(unittest.TestCase):
    def test_everything_that_is_declared_is_read(self) -> None:
        api = read_api(generate.ROOT)
        for header, macro in zip(api.headers, ("VELNOEXT_API", "VELNOTILL_API")):
            [path] = [one for one in header_reader.HEADERS if one.endswith(header.file_name)]
            text = Path(generate.ROOT, path).read_text(encoding="utf-8")
            self.assertEqual(len(header.functions), text.count(f"\n{macro} "))
            self.assertTrue(all(one.section for one in header.functions))


    def test_layouts_are_a_compilers_for_both_word_sizes(self) -> None:
        api = read_api(generate.ROOT)
        for pointer_bytes, option in ((4, "-m32"), (8, "-m64")):
            claims = []
            for one in api.structures.values():
                layout = api.layout(one, pointer_bytes)
                claims.append(f"sizeof({one.name}) == {layout.size}")
                places = layout.offsets.items()
                claims += [f"offsetof({one.name}, {name}) == {place}" for name, place in places]
            self.assertGreater(len(claims), 50)
            self.assertEqual(refused_claims(claims, option), "")
        self.assertIn("sizeof(int) == 5", refused_claims(["sizeof(int) == 5"], "-m64"))


def refused_claims(claims: list[str], option: str) -> str:
    """What a C compiler for this word size says against them. It needs no library for that."""
    asserted = "".join(f'_Static_assert({claim}, "{claim}");\n' for claim in claims)
    places = [f"-I{generate.ROOT / Path(name).parent}" for name in header_reader.HEADERS]
    command = ["cc", "-xc", "-std=c11", "-ffreestanding", "-fsyntax-only", option, *places, "-"]
    source = f'#include "velnotill.h"\n{asserted}'
    return subprocess.run(command, input=source, capture_output=True, text=True, check=False).stderr


class Checking(unittest.TestCase):
    def test_a_file_that_differs_or_is_lacking_is_found(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            (root / "same").write_text("ş\n", encoding="utf-8")
            (root / "other").write_text("ş\r\n", encoding="utf-8", newline="")
            files = {"same": "ş\n", "other": "ş\n", "lacking": ""}
            self.assertEqual(generate.differing(files, root), ["other", "lacking"])

    def test_what_is_committed_is_what_the_headers_say(self) -> None:
        command = [sys.executable, str(generate.ROOT / "bindings/generator/generate.py"), "--check"]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        self.assertEqual((done.stderr, done.returncode), ("", 0))


if __name__ == "__main__":
    unittest.main()
