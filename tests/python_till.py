# SPDX-License-Identifier: Apache-2.0
"""Loads the library named into Python and sells a receipt on the register at the port given, with the ledger given.

It does so twice, and in between unloads the library; the second time on another thread. Then it waits for a register
that never comes, and Ctrl-C ends the call.
"""

import ctypes
import json
import locale
import os
import signal
import sys
import threading
import _ctypes


class Settings(ctypes.Structure):
    _fields_ = [(name, ctypes.c_uint) for name in
                ("size", "appNo", "port", "connectTimeout", "answerLimit", "patience")] + [
                    (name, ctypes.c_char_p) for name in ("serial", "address", "ledger")]


class Outcome(ctypes.Structure):
    _pack_ = 4
    _fields_ = [("size", ctypes.c_uint)] + [(name, ctypes.c_int) for name in (
        "kind", "state", "question", "answer", "paper", "slipUnsure", "code", "cause", "z", "first", "second")] + [
            ("totals", ctypes.c_longlong * 5), ("lines", ctypes.c_int)] + [
                (name, ctypes.c_longlong) for name in ("giveBack", "acceptedAt", "changedAt")]


RECEIPT = json.dumps({"items": [{"name": "Çay", "price": "12.50", "section": 1}],
                      "payments": [{"cash": "rest"}]}).encode()


def load(name):
    library = ctypes.CDLL(name)
    for words in ("problem", "state_name", "result_name"):
        getattr(library, "velnotill_" + words).restype = ctypes.c_char_p
    return library


def open_till(library, port, ledger):
    settings = Settings(ctypes.sizeof(Settings), 5, port, 20000, 0, 0, b"UB1234567890", b"127.0.0.1", ledger)
    till = ctypes.c_void_p()
    if library.velnotill_open(ctypes.byref(till), ctypes.byref(settings)) != 0:
        print(library.velnotill_problem().decode())
    return till


def sell(library, till, key=b"sale 1"):
    outcome = Outcome(size=ctypes.sizeof(Outcome))
    result = library.velnotill_sell(till, key, RECEIPT, ctypes.byref(outcome))
    print(library.velnotill_result_name(result).decode(), library.velnotill_state_name(outcome.state).decode(),
          outcome.first, outcome.second, outcome.totals[0])
    return result


def interrupted(library, till):
    """Python runs its handlers on the first thread alone, and only between its own instructions: the call is
    made on a second one."""
    signal.signal(signal.SIGINT, lambda number, frame: library.velnotill_interrupt(till))
    caller = threading.Thread(target=sell, args=(library, till, b"sale 2"))
    caller.start()
    while caller.is_alive():  # the first may come before the call
        os.kill(os.getpid(), signal.SIGINT)
        caller.join(0.05)


def main():
    name, port, ledger = sys.argv[1], int(sys.argv[2]), os.fsencode(sys.argv[3])
    before = locale.setlocale(locale.LC_ALL)
    library = load(name)
    till = open_till(library, port, ledger)
    sell(library, till)
    print("closed", library.velnotill_close(till))
    _ctypes.dlclose(library._handle)
    library = load(name)
    till = open_till(library, port, ledger)
    worker = threading.Thread(target=sell, args=(library, till))
    worker.start()
    worker.join()
    print("closed", library.velnotill_close(till))
    till = open_till(library, int(sys.argv[4]), ledger)
    interrupted(library, till)
    print("closed", library.velnotill_close(till))
    print("locale", "kept" if locale.setlocale(locale.LC_ALL) == before else "changed")


main()
