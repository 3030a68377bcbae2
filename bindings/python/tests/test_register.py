# SPDX-License-Identifier: Apache-2.0
"""Single commands to the real velno-register."""

from __future__ import annotations

import ctypes
import os
import unittest
from decimal import Decimal
from typing import Any

import support
import velno
from velno import _velnoext as low


class CommandTest(support.RegisterTest):
    def connect(self, **settings: Any) -> velno.Register:
        settings = {"listen": self.listen, "app": 5, **settings}
        register = velno.Register(self.serial, **settings)
        self.addCleanup(register.close)
        return register


class Queries(CommandTest):
    def test_what_a_register_tells(self) -> None:
        self.start_register("--z", "12", "--last-z", "1000", "--clock", "2000", "--sale-limit", "123456")
        register = self.connect()
        register.login()
        register.logout()
        self.assertIs(register.state(), velno.EcrState.IDLE)
        self.assertEqual((register.current_z(), register.last_z_time()), (12, 1000))
        self.assertGreaterEqual(register.clock(), 2000)
        self.assertEqual(register.sale_limit(), Decimal("1234.56"))
        self.assertEqual(register.acquirers(), [11, 23, 35])
        self.assertEqual(register.section(3), velno.Section("İÇECEK", 10))
        self.assertEqual(register.own_serial(), self.serial)
        self.assertTrue(register.has_paper())

    def test_a_printer_without_paper_is_no_exception_when_asked(self) -> None:
        self.start_register("--no-paper")
        self.assertFalse(self.connect().has_paper())

    def test_reports_and_slips(self) -> None:
        process = self.start_register()
        register = self.connect()
        register.x_report()
        with register.slip("windows-1254", flag=True) as slip:
            slip.text("İYİ GÜNLER", style_a=True)
            slip.feed(2)
            slip.pair("Masa", "7")
        register.z_report()
        self.assertEqual(process.printed(), ["x-report", "slip", "z-report"])
        lines = process.told("printed")[1]["lines"]
        self.assertTrue([line for line in lines if "İYİ GÜNLER" in line])
        self.assertTrue([line for line in lines if line.startswith("Masa") and line.endswith("7")])

    def test_a_slip_that_fails_prints_nothing_and_leaves_nothing(self) -> None:
        process = self.start_register()
        register = self.connect()
        with self.assertRaises(UnicodeEncodeError), register.slip("ISO-8859-9") as slip:
            slip.text("Bir")
            slip.text("€")
        with self.assertRaises(ValueError), register.slip() as slip:
            slip.text("")
        with self.assertRaises(ValueError), register.slip() as slip:
            slip.text("a", size=6)
        for wrong in 0, 21:
            with self.assertRaises(ValueError), register.slip() as slip:
                slip.feed(wrong)
        with self.assertRaises(LookupError), register.slip("no-encoding"):
            pass
        with register.slip() as slip:
            slip.text("İki")
        self.assertEqual(process.printed(), ["slip"])
        self.assertNotIn("Bir", "".join(process.told("printed")[0]["lines"]))


class Sales(CommandTest):
    def test_leaving_the_block_ends_the_sale_in_cash(self) -> None:
        process = self.start_register()
        register = self.connect()
        with register.sale() as sale:
            totals = sale.add("Ekmek", price=Decimal("12.50"))
            self.assertEqual((totals.to_pay, totals.lines), (Decimal("12.50"), 1))
        self.assertTrue(sale.is_over)
        self.assertEqual(process.printed(), ["receipt"])
        self.assertEqual(register.receipt(velno.Reference(1, 1)).cash, Decimal("12.50"))

    def test_a_sale_step_by_step(self) -> None:
        process = self.start_register()
        register = self.connect()
        with register.sale() as sale:
            sale.add("Domates", price="39.90", quantity="1.250", unit=velno.ItemType.KILOGRAM, section=2)
            ayran = velno.Line("Ayran", "15.00", 3, section=3, percentage=-10)
            sale.add_all([ayran, velno.Line("Su", "5", discount="1")])
            self.assertEqual(sale.delete_last().lines, 2)
            self.assertEqual(sale.delete(0).to_pay, Decimal("40.50"))
            sale.add_medical("2.50", person="11111111111")
            state = sale.state()
            self.assertEqual((state.first, state.reference), (1, velno.Reference(1, 1)))
            self.assertEqual(sale.pay("20.00").cash, Decimal("20.00"))
            self.assertEqual(sale.pay("3.00", card=True).card, Decimal("3.00"))
            self.assertEqual(sale.acquirers(), [11])
            sale.end(card=True)
        closed = register.receipt(state.reference)
        self.assertEqual((closed.cash, closed.card, closed.change), (Decimal(20), Decimal(23), Decimal(0)))
        self.assertEqual(process.printed(), ["receipt"])

    def test_an_exception_cancels_the_sale(self) -> None:
        process = self.start_register()
        register = self.connect()
        with self.assertRaises(ZeroDivisionError) as caught, register.sale() as sale:
            sale.add("Ekmek", price="1.00")
            print(1 / 0)
        self.assertFalse(hasattr(caught.exception, "__notes__"))
        with self.assertRaises(ValueError), register.sale() as sale:
            sale.add("Ekmek" * 20, price="1.00")
        self.assertIs(register.state(), velno.EcrState.IDLE)
        self.assertEqual(process.printed(), ["cancelled", "cancelled"])

    def test_a_sale_whose_answer_is_lost_is_cancelled_over_a_new_connection(self) -> None:
        process = self.start_register()
        register = self.connect()
        with self.assertRaises(velno.ConnectionFailed), register.sale() as sale:
            sale.add("!lost-answer=item", price="1.00")
        self.assertIs(register.state(), velno.EcrState.IDLE)
        self.assertEqual(process.printed(), ["cancelled"])

    def test_a_sale_that_cannot_be_cancelled_is_noted(self) -> None:
        process = self.start_register()
        register = self.connect(connect_timeout=0.5)
        with self.assertRaises(velno.ConnectionFailed) as caught, register.sale() as sale:
            sale.add("Ekmek", price="1.00")
            process.kill()
            sale.add("Ekmek", price="1.00")
        self.assertRegex(caught.exception.__notes__[0], "could not be cancelled and may be open")

    def test_a_payment_or_an_end_that_is_not_taken_is_told(self) -> None:
        process = self.start_register()
        register = self.connect()
        with register.sale() as sale:
            sale.add("Ekmek", price="1.00")
            self.assertRaises(velno.PaymentNotTaken, sale.pay, "1.01", card=True)
            self.assertRaises(ValueError, sale.pay, "1.001")
        with self.assertRaises(velno.SaleStillOpen), register.sale() as sale:
            sale.end()  # of an empty receipt
        register.command(low.velnoext_cancel_sale, register.timeout_ms)
        self.assertEqual(process.printed(), ["receipt", "cancelled"])

    def test_invoices(self) -> None:
        process = self.start_register()
        register = self.connect()
        with register.sale(invoice=True) as sale:
            sale.add("Defter", price="120.00", quantity=10, section=6)
            both = {"person": "11111111111", "company": "0000000001"}
            self.assertRaises(ValueError, sale.end_with_invoice, velno.InvoiceType.PAPER, **both)
            self.assertRaises(ValueError, sale.end_with_invoice, velno.InvoiceType.PAPER)
            sale.end_with_invoice(velno.InvoiceType.ELECTRONIC, company="0000000001", card=True)
        refused = self.assertRaisesRegex(ValueError, "ends with end_with_invoice")
        with refused, register.sale(invoice=True) as sale:
            sale.add("Defter", price="120.00")
        self.assertEqual(process.printed(), ["invoice", "cancelled"])

    def test_arguments_of_a_sale_are_judged(self) -> None:
        self.start_register()
        with self.connect().sale() as sale:
            self.assertRaises(ValueError, sale.add_all, [])
            self.assertRaises(ValueError, sale.add_all, [velno.Line("a", "1")] * 11)
            self.assertRaises(ValueError, sale.add_medical, "1.00", person="1111111111")
            self.assertRaises(ValueError, sale.delete, 2**32)
            self.assertRaises(TypeError, sale.add, "Ekmek", price=12.5)
            sale.add("Ekmek", price="1.00")


class Connections(CommandTest):
    def test_two_registers_beside_each_other(self) -> None:
        self.start_register("--z", "7")
        first = self.connect()
        other_serial, other_port = f"UB9{os.getpid():09}", support.free_port()
        process = support.RegisterProcess(other_serial, other_port, "--z", "9")
        self.addCleanup(process.stop)
        with velno.Register(other_serial, listen=f"127.0.0.1:{other_port}", app=5) as second:
            self.assertEqual([first.current_z(), second.current_z(), first.current_z()], [7, 9, 7])
        self.assertEqual(first.current_z(), 7)
        self.assertRaises(velno.NotReady, second.current_z)

    def test_a_register_that_vanishes_and_comes_back(self) -> None:
        process = self.start_register()
        register = self.connect(connect_timeout=0.5)
        process.kill()
        self.assertRaises(velno.ConnectionFailed, register.state)
        with self.assertRaises(velno.ConnectionFailed) as caught:
            register.connect()
        self.assertEqual(caught.exception.cause, velno.Cause.NOBODY_CONNECTED)
        self.start_register()
        register.forget()  # its keys ended with the process
        register.connect()
        self.assertIs(register.state(), velno.EcrState.IDLE)

    def test_the_raw_pass_through_is_for_two_applications(self) -> None:
        self.start_register()
        register = self.connect()
        with self.assertRaises(velno.NotReady) as caught:
            register.command(low.velnoext_send_data, b"a\0b", 3)
        self.assertEqual(caught.exception.cause, velno.Cause.RAW_NOT_ALLOWED)

    def test_bad_settings_are_refused_before_anything_is_done(self) -> None:
        rows: list[dict[str, Any]] = [{"listen": "4100"}, {"timeout": 0}, {"connect_timeout": -1}]
        for wrong in rows:
            with self.assertRaises(ValueError):
                self.connect(**wrong)

    def test_settings_of_the_process(self) -> None:
        lines: list[str] = []
        velno.set_log(lines.append)
        self.addCleanup(velno.set_log, None)
        self.start_register("--fault", "wrong-authority")
        self.assertRaises(velno.PairingFailed, self.connect)
        self.assertTrue(lines)
        velno.set_language("tr")
        self.addCleanup(velno.set_language, "en")
        with self.assertRaisesRegex(velno.PairingFailed, "ş|ı|ğ|ü|ö|ç"):
            self.connect()
        with self.assertRaises(velno.BadValue):
            velno.set_language("xx")
        with self.assertRaises(ValueError):
            velno.set_answer_limit(0)

    def test_the_answer_limit_ends_a_wait(self) -> None:
        self.start_register("--fault", "mute=login")
        register = self.connect()
        velno.set_answer_limit(0.2)
        self.addCleanup(velno.set_answer_limit, None)
        with self.assertRaises(velno.ConnectionFailed) as caught:
            register.login()
        self.assertEqual(caught.exception.cause, velno.Cause.ANSWER_LIMIT_PASSED)

    def test_a_number_of_any_size_can_be_asked_for(self) -> None:
        self.start_register()
        register = self.connect()
        for number in 0, 9, 257, 2**40:
            with self.assertRaises(velno.BadValue) as caught:
                register.section(number)
            self.assertEqual(caught.exception.detail, velno.Detail.BAD_SECTION)
        self.assertRaises(ctypes.ArgumentError, register.command, low.velnoext_login, "text")


if __name__ == "__main__":
    unittest.main()
