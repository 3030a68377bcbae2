# SPDX-License-Identifier: Apache-2.0
"""Whole receipts through the real velno-register."""

from __future__ import annotations

import subprocess
import threading
import unittest
from datetime import datetime, timedelta, timezone
from decimal import Decimal
from typing import Any
from unittest import mock

import support
import velno


MARKET = str(support.BINDING / "examples" / "market.py")


class TillTest(support.RegisterTest):
    def open_till(self, **settings: Any) -> velno.Till:
        till = velno.Till(self.serial, listen=self.listen, app=5, ledger=self.folder / "ledger", **settings)
        self.addCleanup(till.close)
        return till


class Selling(TillTest):
    def test_one_key_is_one_receipt(self) -> None:
        register = self.start_register()
        till = self.open_till()
        before = datetime.now(timezone.utc) - timedelta(seconds=1)
        outcomes = [till.sell(support.bread(), key="4711") for _ in range(3)]
        self.assertEqual([outcome.reference for outcome in outcomes], [velno.Reference(1, 1)] * 3)
        self.assertEqual(register.printed(), ["receipt"])
        sold = outcomes[0]
        self.assertEqual((sold.key, sold.kind, sold.state), ("4711", velno.Kind.RECEIPT, velno.State.CLOSED))
        self.assertTrue(sold.is_closed and sold.is_settled and not sold.needs_person)
        self.assertEqual(sold.paper, velno.Paper.PRINTED)
        price, nothing = Decimal("12.50"), Decimal("0.00")
        self.assertEqual(sold.totals, velno.Totals(price, Decimal("0.12"), price, nothing, nothing, 1))
        self.assertEqual((sold.give_back, sold.z), (nothing, None))
        self.assertEqual((sold.code, sold.cause), (0, velno.Cause.NONE))
        self.assertLess(before, sold.accepted_at)
        self.assertLessEqual(sold.accepted_at, sold.changed_at)
        self.assertIn("Receipt 1 of Z 1 is closed", sold.message())
        self.assertIn("fiş 1 kapandı", sold.message("tr"))

    def test_reports_and_slips_are_orders_too(self) -> None:
        register = self.start_register()
        till = self.open_till()
        slip = {"encoding": "UTF-8", "lines": ["Afiyet olsun", {"left": "Masa", "right": "7"}]}
        orders = [till.x_report(key="x"), till.print_slip(slip, key="slip"), till.z_report(key="z")]
        self.assertTrue(all(order.is_closed for order in orders))
        self.assertEqual([order.z for order in orders], [None, None, 1])
        self.assertEqual(register.printed(), ["x-report", "slip", "z-report"])

    def test_what_was_accepted_is_worked_off(self) -> None:
        till = self.open_till()
        accepted = till.accept(support.bread(), key="4711")
        self.assertEqual(accepted.state, velno.State.ACCEPTED)
        self.assertIsNone(accepted.totals)
        self.start_register()
        till.work()
        self.assertTrue(till.find("4711").is_closed)

    def test_stages_are_told_and_an_error_there_changes_nothing(self) -> None:
        self.start_register()
        stages: list[tuple[str, velno.Stage]] = []

        def tell(stage: velno.Stage, outcome: velno.Outcome) -> None:
            stages.append((outcome.key, stage))
            raise RuntimeError("from the display")

        with mock.patch("sys.unraisablehook") as told:
            sold = self.open_till(progress=tell).sell(support.bread(), key="4711")
        self.assertTrue(sold.is_closed)
        self.assertEqual({key for key, _ in stages}, {"4711"})
        self.assertEqual(stages[-1][1], velno.Stage.SETTLED)
        self.assertEqual(told.call_count, len(stages))

    def test_a_second_thread_gets_its_own_receipt(self) -> None:
        self.start_register()
        till = self.open_till()
        sold: list[velno.Outcome] = []
        threads = [
            threading.Thread(target=lambda key=str(key): sold.append(till.sell(support.bread(), key=key)))
            for key in range(4)
        ]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(sorted(one.reference or () for one in sold), [(1, 1), (1, 2), (1, 3), (1, 4)])


class Trouble(TillTest):
    def test_a_register_that_vanishes_leaves_the_order_waiting(self) -> None:
        journal = ["--journal", str(self.folder / "journal")]
        register = self.start_register(*journal)
        till = self.open_till(connect_timeout=1, patience=1)
        register.fault("mute=change-state")
        sold: list[velno.Outcome] = []
        seller = threading.Thread(target=lambda: sold.append(till.sell(support.bread(), key="4711")))
        seller.start()
        register.wait_for("command")
        register.kill()
        seller.join()
        self.assertIn(sold[0].state, (velno.State.WAITING, velno.State.OPEN))
        self.assertEqual(sold[0].code, velno.Result.CONNECTION_FAILED)
        self.assertEqual(sold[0].cause, velno.Cause.NOBODY_CONNECTED)
        self.assertIn("4711", [order.key for order in till.orders(velno.UNSETTLED_STATES)])
        later = self.start_register(*journal)
        self.assertTrue(till.sell(support.bread(), key="4711").is_closed)
        self.assertEqual(later.printed(), ["receipt"])

    def test_a_question_is_answered_by_a_person(self) -> None:
        journal = ["--z", "7", "--journal", str(self.folder / "journal")]
        register = self.start_register(*journal)
        till = self.open_till()
        receipt: dict[str, Any] = {**support.bread(), "payments": [{"cash": "1.00"}, {"card": "rest"}]}
        receipt["items"].append({"name": "!power-cut=change-state", "price": "1", "section": 1})
        asked = till.sell(receipt, key="4711")
        register.wait_for("power-cut")
        self.assertTrue(asked.needs_person, asked.message())
        self.assertEqual(asked.question, velno.Question.MONEY_TAKEN)
        self.assertRaises(velno.BadArgument, till.answer, "4711", velno.Answer.DROP, person="")
        answered = till.answer("4711", velno.Answer.DROP, person="Ayşe")
        self.assertEqual(answered.answer, velno.Answer.DROP)
        till.work()
        self.assertEqual(till.find("4711").state, velno.State.CANCELLED)
        self.assertIn("Ayşe", [event.person for event in till.history("4711")])

    def test_what_the_register_refuses_is_told_with_its_cause(self) -> None:
        self.start_register("--sale-limit", "1000")
        order = self.open_till().sell(support.bread(), key="4711")
        self.assertEqual((order.state, order.code), (velno.State.REFUSED, velno.Result.REFUSED))
        self.assertEqual(order.cause, velno.Cause.OVER_LIMIT)


class Books(TillTest):
    def test_orders_history_record_and_prune(self) -> None:
        self.start_register()
        till = self.open_till()
        till.sell(support.bread(), key="ş 1")
        till.accept(support.bread(), key="2")
        self.assertEqual([order.key for order in till.orders()], ["ş 1", "2"])
        self.assertEqual([order.key for order in till.orders([velno.State.CLOSED])], ["ş 1"])
        self.assertEqual([order.key for order in till.orders(velno.UNSETTLED_STATES)], ["2"])
        events = till.history("ş 1")
        self.assertEqual((events[0].text, events[0].state), ("accepted", velno.State.ACCEPTED))
        self.assertEqual((events[-1].state, events[-1].person), (velno.State.CLOSED, ""))
        record = till.record("ş 1")
        self.assertEqual((record["key"], record["state"]), ("ş 1", "closed"))
        self.assertEqual(record["totals"]["toPay"], "12.50")
        self.assertEqual(till.prune(timedelta(days=30)), 0)
        self.assertEqual(till.prune(timedelta(0)), 1)
        self.assertEqual([order.key for order in till.orders()], ["2"])
        self.assertRaises(ValueError, till.prune, timedelta(seconds=-1))

    def test_results_are_exceptions(self) -> None:
        till = self.open_till()
        till.accept(support.bread(), key="1")
        self.assertRaisesRegex(velno.Conflict, r"items\[0\].price: 13.00, before 12.50", till.accept,
                               support.bread("13.00"), key="1")  # fmt: skip
        self.assertRaisesRegex(velno.BadContent, "payments", till.accept, {"items": []}, key="2")
        self.assertRaises(velno.UnknownKey, till.find, "2")
        self.assertRaises(velno.NotAsked, till.answer, "1", velno.Answer.PAID, person="Ayşe")
        self.assertRaises(velno.BadArgument, till.find, "")
        self.assertRaises(velno.BadArgument, till.orders, [])
        with self.assertRaises(velno.AlreadyOpen):
            velno.Till(self.serial, listen=self.listen, app=5, ledger=self.folder / "other")
        with self.assertRaises(ValueError):
            till.accept(support.bread(), key="a\0b")
        till.close()
        till.close()  # once more is nothing
        till.interrupt()
        self.assertRaises(velno.NotOpen, till.find, "1")

    def test_a_ledger_that_cannot_be_used_is_told(self) -> None:
        with self.assertRaisesRegex(velno.LedgerFailed, "nowhere"):
            velno.Till(self.serial, listen=self.listen, app=5, ledger=self.folder / "nowhere" / "ledger")
        with self.assertRaises(velno.BadArgument) as caught:
            velno.Till("short", listen=self.listen, app=5, ledger=self.folder / "ledger")
        self.assertEqual(caught.exception.result, velno.TillResult.BAD_ARGUMENT)
        self.assertEqual(caught.exception.result_name, "bad-argument")

    def test_a_callback_may_not_call_back(self) -> None:
        self.start_register()
        refused: list[type[BaseException]] = []

        def tell(stage: velno.Stage, outcome: velno.Outcome) -> None:
            for call in lambda: till.find(outcome.key), till.close:
                try:
                    call()
                except velno.InCallback as problem:
                    refused.append(type(problem))
            self.assertTrue(outcome.message())
            stages.append(stage)

        stages: list[velno.Stage] = []
        till = self.open_till(progress=tell)
        self.assertTrue(till.sell(support.bread(), key="4711").is_closed)
        self.assertEqual(refused, [velno.InCallback] * 2 * len(stages))
        self.assertTrue(till.find("4711").is_closed)  # and the till is open as before


class Market(TillTest):
    def run_market(self) -> subprocess.CompletedProcess[str]:
        return support.run_python(MARKET, self.serial, self.listen, str(self.folder / "ledger"), "4711")

    def test_a_markets_sale_comes_through_lost_answers(self) -> None:
        register = self.start_register("--fault", "lost-answer=change-state*3")
        first = self.run_market()
        self.assertEqual((first.stderr, first.returncode), ("", 0))
        stages, told = first.stdout.split("Receipt", 1)
        self.assertRegex(told, r"^ 1 of Z 1 is closed: total 115.38 TL, cash 50.00 TL, card 65.38 TL,")
        self.assertIn("  4711: card payment\n", stages)
        again = self.run_market()
        self.assertEqual((again.stderr, again.returncode, again.stdout), ("", 0, f"Receipt{told}"))
        self.assertEqual(register.printed(), ["receipt"])
        self.assertEqual([one["fault"] for one in register.told("spent")], ["lost-answer=change-state*3"])

    def test_wrong_usage_is_told(self) -> None:
        done = support.run_python(MARKET)
        self.assertEqual((done.returncode, done.stdout), (64, ""))
        self.assertIn("SERIAL ADDRESS:PORT LEDGER KEY", done.stderr)


if __name__ == "__main__":
    unittest.main()
