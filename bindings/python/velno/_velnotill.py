# SPDX-License-Identifier: Apache-2.0
"""velnotill.h for ctypes. Made by scripts/generate from the header: do not edit."""

from __future__ import annotations

import ctypes
from enum import IntEnum
from typing import Any

from ._library import check_layout, load
from ._velnoext import VelnoEcrSaleTotals, VelnoReceiptRef

_library = load("velnotill")

VELNOTILL_ALL_STATES = 127
VELNOTILL_UNSETTLED_STATES = 99


class VelnoTillResult(IntEnum):
    """What a call came to. From 100 on nothing was looked up or done."""

    # the order is there: its state says what has become of it
    DONE = 0
    # what was handed over has faults; velnotill_problem() tells them all
    BAD_CONTENT = 1
    # the key is on record with another content; nothing was done
    CONFLICT = 2
    # the ledger cannot be opened, read or written; nothing more was done
    LEDGER_FAILED = 3
    # no order has this key
    UNKNOWN = 4
    # the order does not wait for this answer
    NOT_ASKED = 5
    # the order stays as it is and goes on when it is asked for again
    INTERRUPTED = 6
    NULL_ARGUMENT = 100
    # a key, name, answer, setting, size or mask that is none
    BAD_ARGUMENT = 101
    # the till is not open, or not any more
    NOT_OPEN = 102
    # this process has a till open
    ALREADY_OPEN = 103
    # a callback may call velnotill_interrupt() and texts alone
    IN_CALLBACK = 104
    NO_MEMORY = 105


class VelnoTillKind(IntEnum):
    """What an order is."""

    RECEIPT = 0
    Z_REPORT = 1
    X_REPORT = 2
    SLIP = 3


class VelnoTillState(IntEnum):
    """Where an order stands. Closed, cancelled and refused are settled: nothing more is done about it.
    Only when a receipt that was taken for cancelled turns out to count does a person come to be asked,
    CountedTwice.
    """

    # on record; nothing has been done about it that is known
    ACCEPTED = 0
    # its fiscal receipt is open on the register, and its reference is known
    OPEN = 1
    # done: the receipt counts, the report is made, the slip is printed
    CLOSED = 2
    # not done, because a person dropped it
    CANCELLED = 3
    # not done, because the register refuses it; code and cause tell why
    REFUSED = 4
    # the register is away or busy: hand it over again, or velnotill_work()
    WAITING = 5
    # cannot be known: a person must answer the question
    NEEDS_PERSON = 6


class VelnoTillQuestion(IntEnum):
    """What a person is asked about an order that needs one."""

    NONE = 0
    # the register does not tell whether the receipt was closed
    RECEIPT_UNKNOWN = 1
    # it cancelled it when something had been paid, or may have been
    MONEY_TAKEN = 2
    # a part is paid, the rest is refused; the sale is open
    PAYMENT_REFUSED = 3
    # the register tells of it what nobody has entered
    NOT_OURS = 4
    # its numbers are below those of the ledger
    OTHER_REGISTER = 5
    # a receipt that was taken for cancelled counts, too
    COUNTED_TWICE = 6
    # whether a slip came out
    SLIP_PRINTED = 7


class VelnoTillAnswer(IntEnum):
    """What a person answers. Sell-again and drop are meant to follow what velnotill_message() asks for
    first.
    """

    NONE = 0
    # it was done: nothing more is to be
    PAID = 1
    # it was not done: do it
    SELL_AGAIN = 2
    # it was not done, and is not wanted any more
    DROP = 3


class VelnoTillPaper(IntEnum):
    """What is known of the paper of a closed receipt."""

    # not closed
    UNKNOWN = 0
    PRINTED = 1
    # closed, and may not have been printed: the cashier has to look
    UNSURE = 2


class VelnoTillStage(IntEnum):
    """What is under way, for a cashier's display."""

    ACCEPTED = 0
    CONNECTING = 1
    # the register has lost its keys and is paired anew
    PAIRING = 2
    STARTING = 3
    # the lines
    ENTERING = 4
    CASH_PAYMENT = 5
    # the customer is asked for a card
    CARD_PAYMENT = 6
    CLOSING = 7
    # an answer was lost: the register is asked what became of it
    LOOKING = 8
    # the register is busy, or out of paper
    BUSY = 9
    # the register has cancelled it; it is entered once more
    ENTERING_AGAIN = 10
    PRINTING = 11
    REPORTING = 12
    # the order has come to the state that it carries
    SETTLED = 13


class VelnoTillSettings(ctypes.Structure):
    """Where the register is met, as for velnoext_initialize(), and how long it is waited for."""

    _pack_ = 4
    _fields_ = [
        # of this structure
        ("size", ctypes.c_uint),
        # number of the application
        ("appNo", ctypes.c_uint),
        # TCP port to listen on; not used with the relay
        ("port", ctypes.c_uint),
        # ms for the register to connect; 0: 10,000
        ("connectTimeout", ctypes.c_uint),
        # ms for an answer, in which somebody may have to act; 0: 120,000
        ("answerLimit", ctypes.c_uint),
        # ms for a register that is busy, before the order waits; 0: 30,000
        ("patience", ctypes.c_uint),
        # 12 characters
        ("serial", ctypes.c_char_p),
        # to listen on, an IP address; "255.255.255.255" for the relay
        ("address", ctypes.c_char_p),
        # path of the ledger, which is made when it is not there, for its owner alone. It belongs to
        # this register, and to one process at a time
        ("ledger", ctypes.c_char_p),
    ]
    size: int
    appNo: int
    port: int
    connectTimeout: int
    answerLimit: int
    patience: int
    serial: bytes | None
    address: bytes | None
    ledger: bytes | None


check_layout(
    VelnoTillSettings,
    {4: 36, 8: 48},
    {
        "size": {4: 0, 8: 0},
        "appNo": {4: 4, 8: 4},
        "port": {4: 8, 8: 8},
        "connectTimeout": {4: 12, 8: 12},
        "answerLimit": {4: 16, 8: 16},
        "patience": {4: 20, 8: 20},
        "serial": {4: 24, 8: 24},
        "address": {4: 28, 8: 32},
        "ledger": {4: 32, 8: 40},
    },
)


class VelnoTillOutcome(ctypes.Structure):
    """An order as it is on record; 116 bytes."""

    _pack_ = 4
    _fields_ = [
        # of this structure
        ("size", ctypes.c_uint),
        # a VelnoTillKind
        ("kind", ctypes.c_int),
        # a VelnoTillState
        ("state", ctypes.c_int),
        # a VelnoTillQuestion
        ("question", ctypes.c_int),
        # a VelnoTillAnswer that has been given and not yet been acted upon
        ("answer", ctypes.c_int),
        # a VelnoTillPaper
        ("paper", ctypes.c_int),
        # 1: the slip, or that behind the receipt, may not have been printed
        ("slipUnsure", ctypes.c_int),
        # the code of velnoext.h behind refused and waiting
        ("code", ctypes.c_int),
        # velnoext_cause() with it
        ("cause", ctypes.c_int),
        # of a Z report: the register's number before it; 0: not asked yet
        ("z", ctypes.c_int),
        # of the receipt it is entered on, or was closed on; 0, 0: none
        ("reference", VelnoReceiptRef),
        # of a closed receipt, see VelnoTotal
        ("totals", VelnoEcrSaleTotals),
        # cash in kuruş that was taken on receipts which the register cancelled and that is on none:
        # the cashier gives it back, or keeps it for this sale
        ("giveBack", ctypes.c_longlong),
        # ms since 1970, UTC
        ("acceptedAt", ctypes.c_longlong),
        # ms since 1970, UTC
        ("changedAt", ctypes.c_longlong),
    ]
    size: int
    kind: int
    state: int
    question: int
    answer: int
    paper: int
    slipUnsure: int
    code: int
    cause: int
    z: int
    reference: VelnoReceiptRef
    totals: VelnoEcrSaleTotals
    giveBack: int
    acceptedAt: int
    changedAt: int


check_layout(
    VelnoTillOutcome,
    {4: 116, 8: 116},
    {
        "size": {4: 0, 8: 0},
        "kind": {4: 4, 8: 4},
        "state": {4: 8, 8: 8},
        "question": {4: 12, 8: 12},
        "answer": {4: 16, 8: 16},
        "paper": {4: 20, 8: 20},
        "slipUnsure": {4: 24, 8: 24},
        "code": {4: 28, 8: 28},
        "cause": {4: 32, 8: 32},
        "z": {4: 36, 8: 36},
        "reference": {4: 40, 8: 40},
        "totals": {4: 48, 8: 48},
        "giveBack": {4: 92, 8: 92},
        "acceptedAt": {4: 100, 8: 100},
        "changedAt": {4: 108, 8: 108},
    },
)


class VelnoTillEvent(ctypes.Structure):
    """A line of an order's history. Its texts live until the callback returns."""

    _pack_ = 4
    _fields_ = [
        # of this structure, set by the library
        ("size", ctypes.c_uint),
        # a VelnoTillState: the order's behind it
        ("state", ctypes.c_int),
        # of velnoext.h
        ("code", ctypes.c_int),
        # velnoext_cause() with it
        ("cause", ctypes.c_int),
        # ms since 1970, UTC
        ("time", ctypes.c_longlong),
        # what happened, in English, for whoever looks into it
        ("text", ctypes.c_char_p),
        # who answered; empty: the program
        ("person", ctypes.c_char_p),
    ]
    size: int
    state: int
    code: int
    cause: int
    time: int
    text: bytes | None
    person: bytes | None


check_layout(
    VelnoTillEvent,
    {4: 32, 8: 40},
    {
        "size": {4: 0, 8: 0},
        "state": {4: 4, 8: 4},
        "code": {4: 8, 8: 8},
        "cause": {4: 12, 8: 12},
        "time": {4: 16, 8: 16},
        "text": {4: 24, 8: 24},
        "person": {4: 28, 8: 32},
    },
)


# Is told what goes on with an order: the one that is worked on, and, with VelnoTillStage_Settled,
# another one that comes to another state by it. Called on the thread that works, which goes on when
# it returns; may call velnotill_interrupt() and the functions for texts, and no other.
VelnoTillListener = ctypes.CFUNCTYPE(
    None,
    ctypes.c_char_p,
    ctypes.c_int,
    ctypes.POINTER(VelnoTillOutcome),
    ctypes.c_void_p,
)
# Called for an order; key and outcome live until it returns. May call texts and interrupt alone.
VelnoTillVisitor = ctypes.CFUNCTYPE(
    None,
    ctypes.c_char_p,
    ctypes.POINTER(VelnoTillOutcome),
    ctypes.c_void_p,
)
# Called for a line of a history. May call texts and interrupt alone.
VelnoTillHistorian = ctypes.CFUNCTYPE(None, ctypes.POINTER(VelnoTillEvent), ctypes.c_void_p)


_library.velnotill_open.restype = ctypes.c_int
_library.velnotill_open.argtypes = [
    ctypes.POINTER(ctypes.c_void_p),
    ctypes.POINTER(VelnoTillSettings),
]


def velnotill_open(till: Any, settings: Any) -> int:
    """Opens a register's ledger. Asks no register: orders do.

    till: receives the till
    settings: only read

    Returns 0; 3: the ledger cannot be used (another process has it, it belongs to another register, it
        is of a later version, Qt's SQLite driver is missing, the disk...); 100; 101: a setting is none;
        103; 104

    int velnotill_open(VelnoTill **till, const VelnoTillSettings *settings);
    """
    returned: int = _library.velnotill_open(till, settings)
    return returned


_library.velnotill_close.restype = ctypes.c_int
_library.velnotill_close.argtypes = [ctypes.c_void_p]


def velnotill_close(till: Any) -> int:
    """Closes a till: interrupts the work under way, waits for every call that is inside, and closes ledger
    and connection. Nothing is lost: what was accepted goes on when the ledger is open again.

    Returns 0; 100; 102; 104

    int velnotill_close(VelnoTill *till);
    """
    returned: int = _library.velnotill_close(till)
    return returned


_library.velnotill_interrupt.restype = None
_library.velnotill_interrupt.argtypes = [ctypes.c_void_p]


def velnotill_interrupt(till: Any) -> None:
    """Ends the work under way soon, so that its call returns 6. A call that has no work under way, or
    still waits for its turn, is not touched. From any thread, from callbacks, and from a signal
    handler. Never blocks.

    void velnotill_interrupt(VelnoTill *till);
    """
    _library.velnotill_interrupt(till)


_library.velnotill_set_listener.restype = ctypes.c_int
_library.velnotill_set_listener.argtypes = [ctypes.c_void_p, VelnoTillListener, ctypes.c_void_p]


def velnotill_set_listener(till: Any, listener: Any, context: Any) -> int:
    """Sets who is told; NULL: nobody. The one before is told no more once this has returned.

    Returns 0; 100; 102; 104

    int velnotill_set_listener(VelnoTill *till, VelnoTillListener listener, void *context);
    """
    returned: int = _library.velnotill_set_listener(till, listener, context)
    return returned


_library.velnotill_check_receipt.restype = ctypes.c_int
_library.velnotill_check_receipt.argtypes = [ctypes.c_char_p]


def velnotill_check_receipt(json: bytes | None) -> int:
    """Judges a receipt in JSON without a register or a ledger.

    Returns 0; 1: velnotill_problem() has a line for each fault, with the path to it ("items[3].section:
        9; accepted: 1 to 8"); 100; 104

    int velnotill_check_receipt(const char *json);
    """
    returned: int = _library.velnotill_check_receipt(json)
    return returned


_library.velnotill_check_slip.restype = ctypes.c_int
_library.velnotill_check_slip.argtypes = [ctypes.c_char_p]


def velnotill_check_slip(json: bytes | None) -> int:
    """The same of a slip.

    int velnotill_check_slip(const char *json);
    """
    returned: int = _library.velnotill_check_slip(json)
    return returned


_library.velnotill_accept.restype = ctypes.c_int
_library.velnotill_accept.argtypes = [
    ctypes.c_void_p,
    ctypes.c_char_p,
    ctypes.c_char_p,
    ctypes.POINTER(VelnoTillOutcome),
]


def velnotill_accept(till: Any, key: bytes | None, json: bytes | None, outcome: Any) -> int:
    """Puts a receipt on record and does nothing more: velnotill_sell() or velnotill_work() sell it. When
    this has returned 0 the receipt survives a cut of this computer's power.

    outcome: filled with 0; may be NULL

    Returns 0, also when it is on record already; 1: faults; 2: conflict, velnotill_problem() names the
        first difference; 3; 100; 101: the key; 102; 104

    int velnotill_accept(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome *outcome);
    """
    returned: int = _library.velnotill_accept(till, key, json, outcome)
    return returned


_library.velnotill_sell.restype = ctypes.c_int
_library.velnotill_sell.argtypes = [
    ctypes.c_void_p,
    ctypes.c_char_p,
    ctypes.c_char_p,
    ctypes.POINTER(VelnoTillOutcome),
]


def velnotill_sell(till: Any, key: bytes | None, json: bytes | None, outcome: Any) -> int:
    """Sells a receipt: puts it on record and works off what was accepted until this one is settled, waits
    or needs a person. Of a receipt that is on record only what is left is done; of a settled one
    nothing.

    json: the receipt, see docs/receipt-json.md
    outcome: filled with 0 and 6. **0 is not "sold"**: state tells

    Returns 0; 1; 2; 3; 6; 100; 101: the key; 102; 104

    int velnotill_sell(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome *outcome);
    """
    returned: int = _library.velnotill_sell(till, key, json, outcome)
    return returned


_library.velnotill_z_report.restype = ctypes.c_int
_library.velnotill_z_report.argtypes = [
    ctypes.c_void_p,
    ctypes.c_char_p,
    ctypes.POINTER(VelnoTillOutcome),
]


def velnotill_z_report(till: Any, key: bytes | None, outcome: Any) -> int:
    """Makes a Z report, which ends the day, once for each key.

    Returns as velnotill_sell(), 1 apart

    int velnotill_z_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);
    """
    returned: int = _library.velnotill_z_report(till, key, outcome)
    return returned


_library.velnotill_x_report.restype = ctypes.c_int
_library.velnotill_x_report.argtypes = [
    ctypes.c_void_p,
    ctypes.c_char_p,
    ctypes.POINTER(VelnoTillOutcome),
]


def velnotill_x_report(till: Any, key: bytes | None, outcome: Any) -> int:
    """Makes an X report, the totals of the day so far.

    Returns as velnotill_sell(), 1 apart

    int velnotill_x_report(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);
    """
    returned: int = _library.velnotill_x_report(till, key, outcome)
    return returned


_library.velnotill_print_slip.restype = ctypes.c_int
_library.velnotill_print_slip.argtypes = [
    ctypes.c_void_p,
    ctypes.c_char_p,
    ctypes.c_char_p,
    ctypes.POINTER(VelnoTillOutcome),
]


def velnotill_print_slip(till: Any, key: bytes | None, json: bytes | None, outcome: Any) -> int:
    """Prints a slip of free text.

    json: the slip, see docs/receipt-json.md.

    Returns as velnotill_sell()

    int velnotill_print_slip(VelnoTill *till, const char *key, const char *json, VelnoTillOutcome
        *outcome);
    """
    returned: int = _library.velnotill_print_slip(till, key, json, outcome)
    return returned


_library.velnotill_work.restype = ctypes.c_int
_library.velnotill_work.argtypes = [ctypes.c_void_p]


def velnotill_work(till: Any) -> int:
    """Works off every order that can go on: at the start of a shift for instance, and when a register is
    back.

    Returns 0: nothing can go on now; 3; 6; 100; 102; 104

    int velnotill_work(VelnoTill *till);
    """
    returned: int = _library.velnotill_work(till)
    return returned


_library.velnotill_answer.restype = ctypes.c_int
_library.velnotill_answer.argtypes = [
    ctypes.c_void_p,
    ctypes.c_char_p,
    ctypes.c_int,
    ctypes.c_char_p,
    ctypes.POINTER(VelnoTillOutcome),
]


def velnotill_answer(
    till: Any,
    key: bytes | None,
    answer: int,
    person: bytes | None,
    outcome: Any,
) -> int:
    """A person's answer to the question of an order that needs one; VelnoTillAnswer_Drop also to an order
    that is not settled. It is on record with name and time when this returns; velnotill_work(), or
    handing the order over again, acts upon it.

    answer: a VelnoTillAnswer
    person: who answers: 1 to 100 bytes of UTF-8 without control characters
    outcome: filled with 0; may be NULL

    Returns 0; 3; 4; 5; 100; 101: the key, the answer, or the name; 102; 104

    int velnotill_answer(VelnoTill *till, const char *key, int answer, const char *person,
        VelnoTillOutcome *outcome);
    """
    returned: int = _library.velnotill_answer(till, key, answer, person, outcome)
    return returned


_library.velnotill_find.restype = ctypes.c_int
_library.velnotill_find.argtypes = [
    ctypes.c_void_p,
    ctypes.c_char_p,
    ctypes.POINTER(VelnoTillOutcome),
]


def velnotill_find(till: Any, key: bytes | None, outcome: Any) -> int:
    """How an order stands. Asks no register.

    Returns 0; 3; 4; 100; 101: the key; 102; 104

    int velnotill_find(VelnoTill *till, const char *key, VelnoTillOutcome *outcome);
    """
    returned: int = _library.velnotill_find(till, key, outcome)
    return returned


_library.velnotill_list.restype = ctypes.c_int
_library.velnotill_list.argtypes = [
    ctypes.c_void_p,
    ctypes.c_uint,
    VelnoTillVisitor,
    ctypes.c_void_p,
]


def velnotill_list(till: Any, states: int, visitor: Any, context: Any) -> int:
    """Calls the visitor for each order of these states, as accepted.

    states: the sum of 1u << state for each state that is meant

    Returns 0; 3: some or all were not shown; 100; 101: no state, or one that is none; 102; 104

    int velnotill_list(VelnoTill *till, unsigned int states, VelnoTillVisitor visitor, void *context);
    """
    returned: int = _library.velnotill_list(till, states, visitor, context)
    return returned


_library.velnotill_history.restype = ctypes.c_int
_library.velnotill_history.argtypes = [
    ctypes.c_void_p,
    ctypes.c_char_p,
    VelnoTillHistorian,
    ctypes.c_void_p,
]


def velnotill_history(till: Any, key: bytes | None, historian: Any, context: Any) -> int:
    """Calls the function for everything that happened to an order, from the first on.

    Returns 0; 3; 4; 100; 101: the key; 102; 104

    int velnotill_history(VelnoTill *till, const char *key, VelnoTillHistorian historian, void
        *context);
    """
    returned: int = _library.velnotill_history(till, key, historian, context)
    return returned


_library.velnotill_json.restype = ctypes.c_int
_library.velnotill_json.argtypes = [
    ctypes.c_void_p,
    ctypes.c_char_p,
    ctypes.POINTER(ctypes.c_void_p),
]


def velnotill_json(till: Any, key: bytes | None, text: Any) -> int:
    """An order with its content and history as one JSON object, see docs/receipts.md: for a log, or a
    screen.

    text: receives the text, for velnotill_free_text()

    Returns 0; 3; 4; 100; 101: the key; 102; 104; 105

    int velnotill_json(VelnoTill *till, const char *key, char **text);
    """
    returned: int = _library.velnotill_json(till, key, text)
    return returned


_library.velnotill_prune.restype = ctypes.c_int
_library.velnotill_prune.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.POINTER(ctypes.c_int)]


def velnotill_prune(till: Any, seconds: int, count: Any) -> int:
    """Forgets settled orders that have not changed for so long. A key that is forgotten is a new one:
    choose an age at which nobody hands it over any more. Nothing else ever forgets an order.

    seconds: age; 0 means any. Whatever their age these stay: the last Z report, and orders with a
        receipt that may yet turn out to count
    count: receives how many; may be NULL

    Returns 0; 3; 100; 102; 104

    int velnotill_prune(VelnoTill *till, unsigned int seconds, int *count);
    """
    returned: int = _library.velnotill_prune(till, seconds, count)
    return returned


_library.velnotill_message.restype = ctypes.c_int
_library.velnotill_message.argtypes = [
    ctypes.POINTER(VelnoTillOutcome),
    ctypes.c_char_p,
    ctypes.POINTER(ctypes.c_void_p),
]


def velnotill_message(outcome: Any, language: bytes | None, text: Any) -> int:
    """What a cashier is told of an order: how it stands, with receipt number and amounts, what is to be
    done, and the question with its answers when there is one. Several lines; none is empty.

    outcome: as a function has filled it
    language: "en" or "tr"
    text: receives the text, for velnotill_free_text()

    Returns 0; 100; 101: the outcome's size; 105

    int velnotill_message(const VelnoTillOutcome *outcome, const char *language, char **text);
    """
    returned: int = _library.velnotill_message(outcome, language, text)
    return returned


_library.velnotill_problem.restype = ctypes.c_char_p
_library.velnotill_problem.argtypes = []


def velnotill_problem() -> bytes | None:
    """What the last call on this thread that returned another code than 0 complained about, in English;
    faults have a line each. Empty before. Lives until the next such call on this thread. Never NULL.

    const char *velnotill_problem(void);
    """
    returned: bytes | None = _library.velnotill_problem()
    return returned


_library.velnotill_result_name.restype = ctypes.c_char_p
_library.velnotill_result_name.argtypes = [ctypes.c_int]


def velnotill_result_name(result: int) -> bytes | None:
    """The name of a VelnoTillResult: "done", "conflict".

    const char *velnotill_result_name(int result);
    """
    returned: bytes | None = _library.velnotill_result_name(result)
    return returned


_library.velnotill_result_text.restype = ctypes.c_char_p
_library.velnotill_result_text.argtypes = [ctypes.c_int, ctypes.c_char_p]


def velnotill_result_text(result: int, language: bytes | None) -> bytes | None:
    """A VelnoTillResult in a sentence.

    const char *velnotill_result_text(int result, const char *language);
    """
    returned: bytes | None = _library.velnotill_result_text(result, language)
    return returned


_library.velnotill_kind_name.restype = ctypes.c_char_p
_library.velnotill_kind_name.argtypes = [ctypes.c_int]


def velnotill_kind_name(kind: int) -> bytes | None:
    """The name of a VelnoTillKind: "receipt", "z-report".

    const char *velnotill_kind_name(int kind);
    """
    returned: bytes | None = _library.velnotill_kind_name(kind)
    return returned


_library.velnotill_state_name.restype = ctypes.c_char_p
_library.velnotill_state_name.argtypes = [ctypes.c_int]


def velnotill_state_name(state: int) -> bytes | None:
    """The name of a VelnoTillState: "closed", "needs-person".

    const char *velnotill_state_name(int state);
    """
    returned: bytes | None = _library.velnotill_state_name(state)
    return returned


_library.velnotill_state_text.restype = ctypes.c_char_p
_library.velnotill_state_text.argtypes = [ctypes.c_int, ctypes.c_char_p]


def velnotill_state_text(state: int, language: bytes | None) -> bytes | None:
    """A VelnoTillState in a sentence, as a cashier is told it.

    const char *velnotill_state_text(int state, const char *language);
    """
    returned: bytes | None = _library.velnotill_state_text(state, language)
    return returned


_library.velnotill_question_name.restype = ctypes.c_char_p
_library.velnotill_question_name.argtypes = [ctypes.c_int]


def velnotill_question_name(question: int) -> bytes | None:
    """The name of a VelnoTillQuestion: "none", "receipt-unknown".

    const char *velnotill_question_name(int question);
    """
    returned: bytes | None = _library.velnotill_question_name(question)
    return returned


_library.velnotill_answer_name.restype = ctypes.c_char_p
_library.velnotill_answer_name.argtypes = [ctypes.c_int]


def velnotill_answer_name(answer: int) -> bytes | None:
    """The name of a VelnoTillAnswer: "none", "paid", "sell-again", "drop".

    const char *velnotill_answer_name(int answer);
    """
    returned: bytes | None = _library.velnotill_answer_name(answer)
    return returned


_library.velnotill_paper_name.restype = ctypes.c_char_p
_library.velnotill_paper_name.argtypes = [ctypes.c_int]


def velnotill_paper_name(paper: int) -> bytes | None:
    """The name of a VelnoTillPaper: "unknown", "printed", "unsure".

    const char *velnotill_paper_name(int paper);
    """
    returned: bytes | None = _library.velnotill_paper_name(paper)
    return returned


_library.velnotill_stage_name.restype = ctypes.c_char_p
_library.velnotill_stage_name.argtypes = [ctypes.c_int]


def velnotill_stage_name(stage: int) -> bytes | None:
    """The name of a VelnoTillStage: "card-payment".

    const char *velnotill_stage_name(int stage);
    """
    returned: bytes | None = _library.velnotill_stage_name(stage)
    return returned


_library.velnotill_stage_text.restype = ctypes.c_char_p
_library.velnotill_stage_text.argtypes = [ctypes.c_int, ctypes.c_char_p]


def velnotill_stage_text(stage: int, language: bytes | None) -> bytes | None:
    """A VelnoTillStage in a few words, for a cashier's display: "card payment under way".

    const char *velnotill_stage_text(int stage, const char *language);
    """
    returned: bytes | None = _library.velnotill_stage_text(stage, language)
    return returned


_library.velnotill_free_text.restype = None
_library.velnotill_free_text.argtypes = [ctypes.c_void_p]


def velnotill_free_text(text: Any) -> None:
    """Frees what was handed out as `char **`; NULL is nothing.

    void velnotill_free_text(char *text);
    """
    _library.velnotill_free_text(text)
