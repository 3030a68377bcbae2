# SPDX-License-Identifier: Apache-2.0
"""Amounts, quantities and texts: nothing is rounded or cut, and what does not fit is refused in words."""

from __future__ import annotations

import decimal
import json
import unittest
from decimal import Decimal
from typing import Any

import support  # makes the package known
import velno
from velno import _values
from velno.receipt import to_json

assert support


class Amounts(unittest.TestCase):
    def test_lira_become_kurus(self) -> None:
        rows: dict[Any, int] = {
            Decimal("12.50"): 1250,
            Decimal("12.5"): 1250,
            Decimal("12.500"): 1250,
            Decimal("1E+2"): 10_000,
            Decimal(0): 0,
            "12": 1200,
            "0.01": 1,
            "9999999999.99": 999_999_999_999,
        }
        for amount, kurus in rows.items():
            self.assertEqual(_values.kurus(amount), kurus, amount)

    def test_what_is_no_amount_is_refused(self) -> None:
        texts = ["", "12,50", "-1", "+1", "1.005", "1e3", " 1", "1_0", "NaN", "12.", ".5", "10000000000", "١"]
        decimals = ["1.005", "-0.01", "NaN", "Infinity", "1E+99999999", "1E-99999999", "10000000000"]
        for text in texts:
            self.assertRaisesRegex(ValueError, "accepted: lira", _values.kurus, text)
        for text in decimals:
            self.assertRaises(ValueError, _values.kurus, Decimal(text))

    def test_a_float_and_a_number_that_could_be_kurus_are_refused_in_words(self) -> None:
        for amount in 12.5, 12, True, None:
            with self.assertRaisesRegex(TypeError, r'price: .* an amount is lira .* Decimal\("12.50"\)'):
                _values.kurus(amount, "price")  # type: ignore[arg-type]

    def test_no_precision_of_the_program_changes_an_amount(self) -> None:
        with decimal.localcontext() as context:
            context.prec = 2
            self.assertEqual(_values.lira(999_999_999_999), Decimal("9999999999.99"))
            self.assertEqual(_values.kurus(Decimal("9999999999.99")), 999_999_999_999)
        self.assertEqual([str(_values.lira(one)) for one in (1250, 5, 0, -5, -1250)],
                         ["12.50", "0.05", "0.00", "-0.05", "-12.50"])  # fmt: skip

    def test_quantities_become_thousandths(self) -> None:
        rows: dict[Any, int] = {1: 1000, "1.250": 1250, Decimal("0.001"): 1, "2147483.647": 2**31 - 1}
        for quantity, parts in rows.items():
            self.assertEqual(_values.thousandths(quantity), parts)
        for wrong in "1.2505", "2147483.648", -1, Decimal("0.0001"):
            self.assertRaisesRegex(ValueError, "up to three decimals", _values.thousandths, wrong)
        for wrong in 1.25, True:
            self.assertRaisesRegex(TypeError, "a quantity is", _values.thousandths, wrong)


class Texts(unittest.TestCase):
    def test_a_name_that_fits_is_whole_and_a_longer_one_is_refused(self) -> None:
        fits = "ş" * 26
        self.assertEqual(velno.Line(fits, "1").in_c().name.decode(), fits)
        with self.assertRaisesRegex(ValueError, "name: 53 bytes in UTF-8; at most 52 fit"):
            velno.Line(fits + "x", "1").in_c()

    def test_a_zero_does_not_end_a_text(self) -> None:
        self.assertRaisesRegex(ValueError, "name: a zero", velno.Line("a\0b", "1").in_c)
        self.assertRaisesRegex(ValueError, "key: a zero", _values.c_text, "a\0b", "key")
        self.assertRaisesRegex(TypeError, "key: 4711 is of type int", _values.c_text, 4711, "key")

    def test_numbers_of_a_line_are_not_cut(self) -> None:
        rows: dict[str, list[Any]] = {"section": [0, 257, "1"], "percentage": [101, 1.5], "unit": [8]}
        for field, value in [(field, value) for field, values in rows.items() for value in values]:
            line = velno.Line("a", "1", **{field: value})
            self.assertRaisesRegex(ValueError, f"{field}: .*accepted", line.in_c)

    def test_places_to_listen(self) -> None:
        self.assertEqual(_values.listening_place("0.0.0.0:4100"), (b"0.0.0.0", 4100))
        self.assertEqual(_values.listening_place("[::1]:65535"), (b"::1", 65535))
        self.assertEqual(_values.listening_place(velno.RELAY)[0], b"255.255.255.255")
        for wrong in "", "4100", "0.0.0.0", "0.0.0.0:0", "0.0.0.0:65536", ":4100", "a b:1":
            self.assertRaisesRegex(ValueError, "accepted: ADDRESS:PORT", _values.listening_place, wrong)

    def test_a_number_of_a_registers_own_stays_a_number(self) -> None:
        self.assertIs(_values.known(velno.EcrState, 1), velno.EcrState.IDLE)
        self.assertEqual(_values.known(velno.EcrState, 77), 77)

    def test_times(self) -> None:
        self.assertEqual(_values.milliseconds(1.5, "timeout"), 1500)
        self.assertEqual(_values.milliseconds(None, "timeout"), 0xFFFFFFFF)
        for wrong in 0, -1, float("nan"), float("inf"), 5_000_000:
            self.assertRaisesRegex(ValueError, "timeout: .*accepted", _values.milliseconds, wrong, "timeout")


class Receipts(unittest.TestCase):
    def test_a_mapping_becomes_json(self) -> None:
        receipt = {"items": ({"name": "Çay", "price": Decimal("12.500")},), "reenterCash": True}
        written = to_json(receipt, "receipt")
        self.assertIn("Çay".encode(), written)
        items = [{"name": "Çay", "price": "12.5"}]
        self.assertEqual(json.loads(written), {"items": items, "reenterCash": True})

    def test_a_text_is_json_as_it_is(self) -> None:
        self.assertEqual(to_json('{"a": 1.0}', "receipt"), b'{"a": 1.0}')

    def test_what_json_would_spoil_is_refused_with_its_path(self) -> None:
        rows: list[tuple[Any, str]] = [
            ({"items": [{"price": 12.5}]}, r"receipt\.items\[0\]\.price: 12.5 is a float"),
            ({"items": {1: "a"}}, r"receipt\.items: 1 names a field"),
            ({"items": {"a"}}, r"receipt\.items: set"),
            ([], "receipt: list; it must be a mapping"),
        ]
        for receipt, words in rows:
            self.assertRaisesRegex(TypeError, words, to_json, receipt, "receipt")
        self.assertRaises(ValueError, to_json, {"price": Decimal("NaN")}, "receipt")

    def test_receipts_and_slips_are_judged_without_a_register(self) -> None:
        velno.check_receipt(support.bread())
        velno.check_slip({"encoding": "UTF-8", "lines": ["Afiyet olsun"]})
        with self.assertRaises(velno.BadContent) as caught:
            velno.check_receipt({**support.bread(), "items": [{"name": "", "price": "1", "section": 9}]})
        self.assertIn("items[0].section: 9; accepted: 1 to 8", str(caught.exception).splitlines())
        self.assertRaisesRegex(velno.BadContent, "encoding", velno.check_slip, {"lines": ["a"]})


if __name__ == "__main__":
    unittest.main()
