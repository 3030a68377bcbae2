# SPDX-License-Identifier: Apache-2.0
"""velnoext.h for ctypes. Made by scripts/generate from the header: do not edit."""

from __future__ import annotations

import ctypes
from enum import IntEnum
from typing import Any

from ._library import check_layout, load

_library = load("velnoext")

VELNOEXT_VERSION_MAJOR = 0
VELNOEXT_VERSION_MINOR = 2
VELNOEXT_VERSION_PATCH = 0
VELNOEXT_VERSION = 200


class VelnoExtMessage(IntEnum):
    """The commands by their number, the first item of every request."""

    ECR_STATE = 0
    LOGIN = 1
    LOGOUT = 2
    CHANGE_STATE = 3
    ADD_SALE_ITEM = 4
    DELETE_SALE_ITEM = 5
    SALE_STATE = 6
    RECEIPT_DATA = 7
    CHECK_PRINTER_PAPER = 8
    MEDICAL_CONTRIBUTION = 9
    SECTION_DATA = 10
    PRINT_REPORT = 11
    CURRENT_Z = 12
    PRINT_SLIP = 13
    END_SALE_WITH_INVOICE = 14
    SALE_LIMIT = 15
    ADD_MULTIPLE_SALE_ITEMS = 16
    LAST_Z_DATE_TIME = 17
    ECR_DATE_TIME = 18
    ACTIVE_ACQUIRERS = 19
    SALE_ACQUIRERS = 20


class VelnoEcrState(IntEnum):
    """States of a register. 1, 5 and 7 have a meaning for this library; the others are those of the
    simulated register, and a register may answer numbers of its own.
    """

    # switched on a moment ago
    STARTING = 0
    # a sale may be started
    IDLE = 1
    # waits for a cashier
    LOCKED = 2
    # somebody uses its menu
    MENU = 3
    # a payment is being made
    PAYING = 4
    # a sale is open: items, payments and its end are expected
    SALE_OPEN = 5
    # prints a report
    REPORTING = 6
    # a sale may be started
    IDLE_OTHER_SCREEN = 7
    # out of order
    OUT_OF_SERVICE = 8


class VelnoResult(IntEnum):
    """The result codes; what each means stands at the head of this file."""

    SUCCESS = 0
    NOT_READY = 1
    CONNECTION_FAILED = 2
    NULL_ARGUMENT = 3
    BAD_VALUE = 4
    REPLY_UNREADABLE = 5
    WRONG_STATE = 6
    STEP_NOT_TAKEN = 7
    REFUSED = 8
    NO_PAPER = 9
    PAIRING_FAILED = 10
    NOT_AUTHENTIC = 11
    MALFORMED_REPLY = 12
    NO_APPLICATION_HASH = 13


class VelnoDetail(IntEnum):
    """What velnoext_error_detail() names: 0x3.. a NULL pointer (result 3), 0x4.. a bad value (result 4).
    Several functions share a detail; velnoext_detail_text() names each with its argument.
    """

    NONE = 0
    # serial number, buffer, data or frame
    NULL_SERIAL_NO_OR_BUFFER = 768
    NULL_ADDRESS_OR_OUTPUT = 769
    NULL_STATE_OR_LENGTH = 770
    NULL_FIRST = 771
    NULL_TOTALS = 772
    NULL_RECEIPT = 773
    NULL_ITEM = 774
    NULL_ITEM_LIST = 775
    NULL_INVOICE = 776
    NULL_LIST = 777
    NULL_COUNT = 778
    NULL_Z = 779
    NULL_DATE_TIME = 780
    NULL_ENCODING = 781
    # or empty
    NULL_TEXT = 782
    NULL_STYLE = 783
    NULL_LIMIT = 784
    NULL_LANGUAGE = 785
    BAD_SERIAL_NO = 1024
    BAD_PORT = 1026
    BAD_PERSON_ID = 1027
    BAD_TAX_NUMBER = 1028
    BAD_PRICE = 1029
    BAD_SECTION = 1030
    BAD_PERCENTAGE = 1031
    BAD_AMOUNT = 1032
    BAD_ITEM_TYPE = 1033
    BAD_ITEM_COUNT = 1034
    BAD_INVOICE_TYPE = 1035
    BAD_ID_KIND = 1036
    BAD_INVOICE_MODE = 1037
    BAD_REFERENCE = 1038
    BAD_RECEIPT_FIRST = 1039
    BAD_RECEIPT_SECOND = 1040
    BAD_ENCODING = 1041
    BAD_PAYMENT_AMOUNT = 1042
    BAD_LINE_FEEDS = 1043
    BAD_ANSWER_LIMIT = 1044
    BAD_LANGUAGE = 1045


class VelnoCause(IntEnum):
    """Why a call failed, as velnoext_cause() tells it. In brackets the results that it comes with.

    Numbers below 6000 are those that the pairing window shows behind "Eşleme hatası: ". With result 10
    they tell where the pairing ended; with other results they tell the same fault outside a pairing.

    What a register gives as its reason is added to a base: 10000 + its error, 20000 + its state, 30000
    + what its display says, each from 0 to 9999. The numbers are the register's; those named here are
    the simulated register's, whose error is a sum of bits. With result 6 the state is told, or behind
    the keys of velnoext_cancel_sale() an error that came with it; otherwise of several reasons the
    error, else the state, else the display. More causes may be added: treat one that is not known as
    its result.
    """

    NONE = 0
    # the address to listen on is no IP address (4)
    ADDRESS_INVALID = 1005
    # another program listens there (2, 10)
    PORT_IN_USE = 1006
    # no register connected in time (2, 10)
    NOBODY_CONNECTED = 1007
    # a foreign address, or a port that needs privileges (2, 10)
    CANNOT_LISTEN = 1008
    # the connection was closed before (2, 10)
    CLOSED_BEFORE_SENDING = 2005
    # the system took no bytes (2, 10)
    WRITE_REFUSED = 2006
    # the register takes no bytes (2, 10)
    NOT_SENT_IN_TIME = 2007
    # a frame of no length (10)
    EMPTY_FRAME = 3003
    # closed in place of an answer (2, 10)
    CLOSED_WHILE_WAITING = 3005
    # no answer, or not the rest of one, in time (2, 10)
    SILENT_REGISTER = 3006
    # the announced length is wrong or too large (10, 12)
    FRAME_LENGTH = 4000
    # damaged on its way (10, 12)
    FRAME_CRC = 4001
    # another register answers (10, 12)
    FRAME_SERIAL = 4002
    # no message in it (10)
    FRAME_MESSAGE = 4003
    # a result code other than "00" (10)
    PAIRING_REFUSED = 5000
    # none, expired, too weak, of an unknown authority (10)
    CERTIFICATE_NOT_TRUSTED = 5001
    # or a Diffie-Hellman group that this build does not know (10)
    SIGNATURE_INVALID = 5002
    # refused the connection, or silent for 2 s (2)
    RELAY_NOT_ANSWERING = 6001
    # this computer has no way to it (2)
    RELAY_UNREACHABLE = 6002
    # closed when the serial number was named (2)
    RELAY_UNKNOWN_REGISTER = 6003
    # no answer to the serial number within 5 s (2)
    RELAY_SILENT = 6004
    # another answer than the serial number (2)
    RELAY_WRONG_ANSWER = 6005
    # the connection was gone before it could be used (2)
    HAND_OVER_FAILED = 6010
    # by velnoext_interrupt() (2, 10)
    INTERRUPTED = 7001
    # that of velnoext_set_answer_limit() (2)
    ANSWER_LIMIT_PASSED = 7002
    # (1)
    NOT_INITIALISED = 7003
    # (1)
    NO_ACTIVE_DEVICE = 7004
    # (1, 2)
    NOT_CONNECTED = 7005
    # the register is not paired (1)
    KEYS_ABSENT = 7006
    # not with this application number (1)
    RAW_NOT_ALLOWED = 7007
    # the system gives no further thread (1)
    NO_THREAD = 7008
    # of the slip (8)
    NO_ENCODING = 7009
    # the detail names it (3)
    NULL_ARGUMENT = 7010
    # the detail names it (4)
    BAD_ARGUMENT = 7011
    # for the result (4)
    ROOM_TOO_SMALL = 7012
    # (4)
    NEGATIVE_LENGTH = 7013
    # the program's own file (13)
    PROGRAM_UNREADABLE = 7014
    # no bytes to send, or too many (11)
    NOT_ENCRYPTED = 7015
    # authentic, but an item is missing (5)
    ANSWER_TOO_SHORT = 8001
    # more than 52 bytes (5)
    SECTION_NAME_TOO_LONG = 8002
    # other keys, or changed on its way (11)
    MAC_WRONG = 8003
    # (11)
    DECRYPTED_TO_NOTHING = 8004
    # one is missing, or unknown (12)
    ELEMENTS_WRONG = 8005
    # the answer equals the request (12)
    REQUEST_REFLECTED = 8006
    # announces more than 1 MiB (2)
    ANSWER_TOO_LONG = 8007
    # a flood that nobody asked for (2)
    ENDLESS_BYTES = 8008
    # and no more than that (8)
    SAID_NO = 9001
    # (9)
    PRINTER_EMPTY = 9002
    # nothing is told of the display (7)
    DISPLAY_EMPTY = 9003
    # an error, state or display below 0 or above 9999 (6, 7, 8)
    OTHER_NUMBER = 9004
    # base of the register's error (6, 7, 8)
    OF_ERROR = 10000
    # a key that means nothing now
    WRONG_KEY = 10001
    # one that the register does not take
    WRONG_VALUE = 10002
    # sale limit, or more than a receipt holds
    OVER_LIMIT = 10004
    # items stay as they are
    PAYMENT_BEGUN = 10008
    PAPER_OUT = 10016
    # no such item, an empty receipt, no sale
    NOTHING_THERE = 10032
    # it cannot be written
    NO_JOURNAL = 10064
    # base of the register's state, see VelnoEcrState (6, 8)
    OF_STATE = 20000
    # base of what the display says (7)
    OF_DISPLAY = 30000
    # an amount is typed, or a question asked
    DISPLAY_BUSY = 30002


class VelnoItemType(IntEnum):
    """Units of an item's quantity, as the simulated register prints them."""

    # AD
    PIECE = 0
    # KG
    KILOGRAM = 1
    # GR
    GRAM = 2
    # LT
    LITRE = 3
    # MT
    METRE = 4
    # M2
    SQUARE_METRE = 5
    # M3
    CUBIC_METRE = 6
    # SA
    HOUR = 7


class VelnoTotal(IntEnum):
    """The places of VelnoEcrSaleTotals.values, as the simulated register tells them; all in kuruş. Cash +
    card - change is what has been paid.
    """

    # all items and the medical contribution, tax contained
    TO_PAY = 0
    # the tax within it
    TAX = 1
    # paid in cash, as handed over
    CASH = 2
    # paid by card
    CARD = 3
    # what of the cash goes back
    CHANGE = 4


class VelnoPaymentKey(IntEnum):
    """The keys that pay and end a sale: `type` of velnoext_add_payment() and velnoext_end_sale(). What
    they stand for is set on the register; on the simulated one F10 is cash and F11 a card.
    """

    # cash on the simulated register
    F10 = 0
    # card on the simulated register
    F11 = 1


class VelnoInvoiceType(IntEnum):
    """Kinds of invoice, as the simulated register takes them."""

    # on a printed form, whose number the reference is
    PAPER = 0
    # e-invoice
    ELECTRONIC = 1
    # e-archive
    ARCHIVED = 2


class VelnoIdKind(IntEnum):
    """Whose number an invoice carries."""

    # identity number, 11 digits
    PERSON = 0
    # tax number, 10 digits
    COMPANY = 1


class VelnoInvoiceMode(IntEnum):
    """How what is left to pay is taken when an invoice ends the sale, as the simulated register does.
    """

    REST_IN_CASH = 1
    REST_BY_CARD = 2


class VelnoSaleItem(ctypes.Structure):
    """One line of a sale; 84 bytes. Set what is not used to 0."""

    _pack_ = 4
    _fields_ = [
        # of one unit, in kuruş; with 0 the line is a remark on the receipt
        ("price", ctypes.c_longlong),
        # in thousandths: 1000 is one unit
        ("quantity", ctypes.c_int),
        # Adjustment in percent of the line total: below 0 a discount (-10: ten percent off), above 0
        # a surcharge; 0 for none. -100 or more; the simulated register takes up to 100.
        ("percentage", ctypes.c_int),
        # Discount in kuruş, which counts while percentage is 0: a positive amount makes the line
        # cheaper, and there is no surcharge by amount; 0 for none. Not negative, and at most the line
        # total, which is price times quantity / 1000, rounded half up, and counts as 0 when that is
        # negative.
        ("amount", ctypes.c_longlong),
        # The bytes before the first zero, at most 52 of them; need not end with a zero. They are
        # passed on as they are: UTF-8 for the simulated register, which reads what is no UTF-8 as
        # ISO-8859-9. Cut a longer name between two characters.
        ("name", ctypes.c_char * 53),
        # section (department) of the register, 1 to 8: it decides the tax rate
        ("section", ctypes.c_byte),
        # unit of the quantity, 0 to 7, see VelnoItemType
        ("type", ctypes.c_int),
    ]
    price: int
    quantity: int
    percentage: int
    amount: int
    name: bytes
    section: int
    type: int


check_layout(
    VelnoSaleItem,
    {4: 84, 8: 84},
    {
        "price": {4: 0, 8: 0},
        "quantity": {4: 8, 8: 8},
        "percentage": {4: 12, 8: 12},
        "amount": {4: 16, 8: 16},
        "name": {4: 24, 8: 24},
        "section": {4: 77, 8: 77},
        "type": {4: 80, 8: 80},
    },
)


class VelnoEcrSaleTotals(ctypes.Structure):
    """What the register has added up for the open sale; 44 bytes. The register defines what each number
    is.
    """

    _pack_ = 4
    _fields_ = [
        # in the order in which the register tells them, see VelnoTotal
        ("values", ctypes.c_longlong * 5),
        # told behind them; the simulated register's number of items that are not deleted
        ("number", ctypes.c_int),
    ]
    values: ctypes.Array[ctypes.c_longlong]
    number: int


check_layout(
    VelnoEcrSaleTotals,
    {4: 44, 8: 44},
    {
        "values": {4: 0, 8: 0},
        "number": {4: 40, 8: 40},
    },
)


class VelnoSaleItemList(ctypes.Structure):
    """Several lines at once; 844 bytes."""

    _pack_ = 4
    _fields_ = [
        # how many of the items are meant, 1 to 10
        ("count", ctypes.c_ushort),
        ("items", VelnoSaleItem * 10),
    ]
    count: int
    items: ctypes.Array[VelnoSaleItem]


check_layout(
    VelnoSaleItemList,
    {4: 844, 8: 844},
    {
        "count": {4: 0, 8: 0},
        "items": {4: 4, 8: 4},
    },
)


class VelnoReceiptRef(ctypes.Structure):
    """Two numbers by which the register knows a receipt; 8 bytes. Both are non-zero for a receipt that
    exists.
    """

    _pack_ = 4
    _fields_ = [
        # the simulated register's: number of the Z report that the receipt counts towards
        ("first", ctypes.c_int),
        # and the receipt's number among those of that report
        ("second", ctypes.c_int),
    ]
    first: int
    second: int


check_layout(
    VelnoReceiptRef,
    {4: 8, 8: 8},
    {
        "first": {4: 0, 8: 0},
        "second": {4: 4, 8: 4},
    },
)


class VelnoInvoice(ctypes.Structure):
    """What a sale's invoice says of the customer; 48 bytes."""

    _pack_ = 4
    _fields_ = [
        # 0, 1 or 2, see VelnoInvoiceType
        ("invoiceType", ctypes.c_uint),
        # of idNumber, see VelnoIdKind; 0: a person's, 11 digits; 1: a tax number, 10
        ("idKind", ctypes.c_uint),
        # the bytes before the first zero; 11111111111 stands for any person
        ("idNumber", ctypes.c_char * 12),
        # the bytes before the first zero; with invoiceType 0 there must be 6 to 16
        ("reference", ctypes.c_char * 17),
        # 1 or 2, see VelnoInvoiceMode
        ("mode", ctypes.c_int),
        # not 0: the invoice takes the place of the delivery note (simulated register)
        ("flag", ctypes.c_int),
    ]
    invoiceType: int
    idKind: int
    idNumber: bytes
    reference: bytes
    mode: int
    flag: int


check_layout(
    VelnoInvoice,
    {4: 48, 8: 48},
    {
        "invoiceType": {4: 0, 8: 0},
        "idKind": {4: 4, 8: 4},
        "idNumber": {4: 8, 8: 8},
        "reference": {4: 20, 8: 20},
        "mode": {4: 40, 8: 40},
        "flag": {4: 44, 8: 44},
    },
)


class VelnoTextStyle(ctypes.Structure):
    """How a text is printed; 8 bytes. The register defines what the two styles look like."""

    _pack_ = 4
    _fields_ = [
        # 0 to 5, 0 being the smallest; it is sent as the bit 4 << size of a byte
        ("size", ctypes.c_int),
        # 0 or not
        ("styleA", ctypes.c_ubyte),
        # 0 or not
        ("styleB", ctypes.c_ubyte),
    ]
    size: int
    styleA: int
    styleB: int


check_layout(
    VelnoTextStyle,
    {4: 8, 8: 8},
    {
        "size": {4: 0, 8: 0},
        "styleA": {4: 4, 8: 4},
        "styleB": {4: 5, 8: 5},
    },
)


velnoext_set_log_line = ctypes.CFUNCTYPE(None, ctypes.c_char_p, ctypes.c_void_p)


_library.velnoext_version.restype = ctypes.c_char_p
_library.velnoext_version.argtypes = []


def velnoext_version() -> bytes | None:
    """The interface's version, "0". The text lives as long as the library. Never blocks.

    const char *velnoext_version(void);
    """
    returned: bytes | None = _library.velnoext_version()
    return returned


_library.velnoext_library_version.restype = ctypes.c_char_p
_library.velnoext_library_version.argtypes = []


def velnoext_library_version() -> bytes | None:
    """The version of the library in use, "0.2.0" for instance; compare with VELNOEXT_VERSION_MAJOR and its
    neighbours, which are those of the header. The text lives as long as the library. Never blocks.

    const char *velnoext_library_version(void);
    """
    returned: bytes | None = _library.velnoext_library_version()
    return returned


_library.velnoext_initialize.restype = ctypes.c_int
_library.velnoext_initialize.argtypes = [
    ctypes.c_uint,
    ctypes.c_char_p,
    ctypes.c_char_p,
    ctypes.c_ushort,
    ctypes.c_uint,
]


def velnoext_initialize(
    appNo: int,
    serialNo: bytes | None,
    address: bytes | None,
    port: int,
    timeout: int,
) -> int:
    """Connects a register, pairs with it if need be, and makes it the active one. A register that is
    connected already is connected afresh; others stay connected.

    A register that is not yet paired is met three times on the port given: to be told so, to agree on
    keys and to stay. One that is paired is met once. On failure the active register is the one before,
    other registers stay connected, and the library's thread goes on until velnoext_close().

    appNo: number of the application, under which it is known to whoever runs the registers' service and
        gave it out: the one that a technician types into the pairing window as "Uygulama no". It does
        not leave this computer; any other number than the two special ones behaves alike. 999999 takes
        the relay's port 50900, others 50902. With 999999 and 14242 (the pairing tool itself)
        velnoext_close() forgets the keys, and the raw pass-through is open. The last call's number
        holds for all registers
    serialNo: 12 characters
    address: local address to listen on, "0.0.0.0" for all; "255.255.255.255" for the relay. A register
        that is not yet paired must come over IPv4: keys are agreed on at the port of every local IPv4
        address, whatever is named here. Afterwards an IPv6 address will do, too
    port: TCP port to listen on; ignored with the relay
    timeout: ms to wait for each direct connection of the register but that of the key exchange, which
        may take 30 s; not used with the relay, which has 2 s to accept and 5 s to answer

    Returns 0; 1: the library's thread cannot be started; 2: nobody connected in time, the port cannot
        be listened on, the relay refused or does not know the register, the register left; 3: NULL
        (detail 0x300 serialNo, 0x301 address); 4: serialNo is not 12 characters long (0x400), port is 0
        (0x402), the address is none (0); 10: pairing failed; 13: the executable cannot be read

    int velnoext_initialize(unsigned int appNo, const char *serialNo, const char *address, unsigned
        short port, unsigned int timeout);
    """
    returned: int = _library.velnoext_initialize(appNo, serialNo, address, port, timeout)
    return returned


_library.velnoext_set_active_device.restype = ctypes.c_int
_library.velnoext_set_active_device.argtypes = [ctypes.c_char_p]


def velnoext_set_active_device(serialNo: bytes | None) -> int:
    """Makes another connected register the active one. Asks nobody.

    serialNo: 12 characters

    Returns 0; 1: not connected (the active register stays); 3: NULL (0x300); 4: not 12 characters
        (0x400)

    int velnoext_set_active_device(const char *serialNo);
    """
    returned: int = _library.velnoext_set_active_device(serialNo)
    return returned


_library.velnoext_active_device.restype = ctypes.c_int
_library.velnoext_active_device.argtypes = [ctypes.c_void_p]


def velnoext_active_device(buffer: Any) -> int:
    """The serial number of the active register. Asks nobody.

    buffer: room for 13 bytes: 12 characters and a zero

    Returns 0; 1: there is none; 3: NULL (0x300)

    int velnoext_active_device(char *buffer);
    """
    returned: int = _library.velnoext_active_device(buffer)
    return returned


_library.velnoext_error_detail.restype = ctypes.c_int
_library.velnoext_error_detail.argtypes = []


def velnoext_error_detail() -> int:
    """What the last call complained about: 0x300 + n for a pointer, 0x400 + n for a value, otherwise 0.
    Every call that has to do with registers begins with setting it to 0, closing included: ask right
    after the failed call, before another thread calls. Never blocks.

    int velnoext_error_detail(void);
    """
    returned: int = _library.velnoext_error_detail()
    return returned


_library.velnoext_cause.restype = ctypes.c_int
_library.velnoext_cause.argtypes = []


def velnoext_cause() -> int:
    """The finest reason known of the last call that failed, see VelnoCause: 0 after one that succeeded.
    Set to 0 and read as velnoext_error_detail(): ask right after the failed call, before another thread
    calls. Never blocks.

    int velnoext_cause(void);
    """
    returned: int = _library.velnoext_cause()
    return returned


_library.velnoext_close.restype = None
_library.velnoext_close.argtypes = []


def velnoext_close() -> None:
    """Closes the active register's connection; afterwards no register is active. When it was the last
    connection, the library returns to the state before velnoext_initialize(), keys apart. Harmless when
    nothing is open. Blocks until what was sent has left this computer's buffers, at most 30 s.

    void velnoext_close(void);
    """
    _library.velnoext_close()


_library.velnoext_close_all.restype = None
_library.velnoext_close_all.argtypes = []


def velnoext_close_all() -> None:
    """Closes every connection as velnoext_close() does. Does nothing when there is none: what a first
    velnoext_initialize() that failed has left is ended by velnoext_close().

    void velnoext_close_all(void);
    """
    _library.velnoext_close_all()


_library.velnoext_forget_device.restype = ctypes.c_int
_library.velnoext_forget_device.argtypes = [ctypes.c_char_p]


def velnoext_forget_device(serialNo: bytes | None) -> int:
    """Forgets a register: closes its connection as velnoext_close() does and drops its keys, so that the
    next velnoext_initialize() pairs with it anew. For a register that has lost its keys, or was paired
    elsewhere since: it ends the connection at every command. Other registers stay as they are; when it
    was the active one, none is.

    serialNo: 12 characters

    Returns 0; 1: neither connected nor paired; 3: NULL (0x300); 4: not 12 characters (0x400)

    int velnoext_forget_device(const char *serialNo);
    """
    returned: int = _library.velnoext_forget_device(serialNo)
    return returned


_library.velnoext_interrupt.restype = None
_library.velnoext_interrupt.argtypes = []


def velnoext_interrupt() -> None:
    """Ends the call that is under way on another thread, or was when the signal came, whatever it waits
    for: a register to connect, a pairing, bytes to leave, an answer. That call returns within 100 ms,
    with 2, or with 10 when it was exchanging keys, and the register's connection is closed: a late
    answer could be taken for that to the next command. What the register has done must be asked of it,
    as after every lost answer. A call that was just done returns what it would have.

    From any thread, and from a signal handler. Never blocks. Without a call under way it does nothing;
    it touches no later call, nor one that still waits for its turn.

    void velnoext_interrupt(void);
    """
    _library.velnoext_interrupt()


_library.velnoext_set_answer_limit.restype = ctypes.c_int
_library.velnoext_set_answer_limit.argtypes = [ctypes.c_uint]


def velnoext_set_answer_limit(ms: int) -> int:
    """Limits the whole wait for an answer: keep-alives, pauses between its bytes and all. When the limit
    has passed the call returns 2 and the register's connection is closed, as after
    velnoext_interrupt(). It holds for each of the three answers of a key exchange, too, with all that
    comes in its place; the call then returns 10.

    ms: for all answers from now on; 0xFFFFFFFF, no limit, at the start

    Returns 0; 4: 0 ms (0x414)

    int velnoext_set_answer_limit(unsigned int ms);
    """
    returned: int = _library.velnoext_set_answer_limit(ms)
    return returned


_library.velnoext_set_log.restype = None
_library.velnoext_set_log.argtypes = [velnoext_set_log_line, ctypes.c_void_p]


def velnoext_set_log(line: Any, context: Any) -> None:
    """Sends the lines that tell what goes wrong in a pairing, or with the frame of an answer, to a
    function in place of standard output.

    line: called with one line without its line feed, on the thread of the call that is under way or on
        the library's own: it must not call the library, velnoext_interrupt() apart. The text lives
        until it returns. NULL: standard output, as at the start
    context: handed to it; borrowed until another function is set

    void velnoext_set_log(void (*line)(const char *text, void *context), void *context);
    """
    _library.velnoext_set_log(line, context)


_library.velnoext_set_language.restype = ctypes.c_int
_library.velnoext_set_language.argtypes = [ctypes.c_char_p]


def velnoext_set_language(language: bytes | None) -> int:
    """Chooses the language of all texts, for the whole process; names stay as they are. Takes no lock;
    texts that were handed out before stay valid.

    language: "en" (as at the start) or "tr"

    Returns 0; 3: NULL (0x311); 4: no such language (0x415). Detail and cause are set on failure alone,
        so that those of a failed call can be told in both languages

    int velnoext_set_language(const char *language);
    """
    returned: int = _library.velnoext_set_language(language)
    return returned


_library.velnoext_result_name.restype = ctypes.c_char_p
_library.velnoext_result_name.argtypes = [ctypes.c_int]


def velnoext_result_name(code: int) -> bytes | None:
    """A code's name, lower-case words joined by hyphens: "success", "no-paper"; otherwise "unknown".

    const char *velnoext_result_name(int code);
    """
    returned: bytes | None = _library.velnoext_result_name(code)
    return returned


_library.velnoext_result_text.restype = ctypes.c_char_p
_library.velnoext_result_text.argtypes = [ctypes.c_int]


def velnoext_result_text(code: int) -> bytes | None:
    """What a code means: exactly three lines, separated by '\\n', none behind the last. The first is the
    sentence that says what happened; the second begins with "Cause: ", the third with "Cure: " (in
    Turkish "Neden: " and "Çözüm: ").

    const char *velnoext_result_text(int code);
    """
    returned: bytes | None = _library.velnoext_result_text(code)
    return returned


_library.velnoext_detail_text.restype = ctypes.c_char_p
_library.velnoext_detail_text.argtypes = [ctypes.c_int]


def velnoext_detail_text(detail: int) -> bytes | None:
    """Which argument velnoext_error_detail() means, in one line. Several functions share a detail: the
    text then names each with its argument.

    const char *velnoext_detail_text(int detail);
    """
    returned: bytes | None = _library.velnoext_detail_text(detail)
    return returned


_library.velnoext_cause_name.restype = ctypes.c_char_p
_library.velnoext_cause_name.argtypes = [ctypes.c_int]


def velnoext_cause_name(cause: int) -> bytes | None:
    """A cause's name, like that of a code: "port-in-use", "register-paper-out". A register's number that
    is not known has the name of its base: "register-error", "register-state", "register-display"; all
    else "unknown".

    const char *velnoext_cause_name(int cause);
    """
    returned: bytes | None = _library.velnoext_cause_name(cause)
    return returned


_library.velnoext_cause_text.restype = ctypes.c_char_p
_library.velnoext_cause_text.argtypes = [ctypes.c_int]


def velnoext_cause_text(cause: int) -> bytes | None:
    """What a cause means: three lines as velnoext_result_text(). Also for the codes of the pairing window.

    const char *velnoext_cause_text(int cause);
    """
    returned: bytes | None = _library.velnoext_cause_text(cause)
    return returned


_library.velnoext_send_data.restype = ctypes.c_int
_library.velnoext_send_data.argtypes = [ctypes.c_char_p, ctypes.c_int]


def velnoext_send_data(data: bytes | None, length: int) -> int:
    """Encrypts bytes, frames them and sends them to the active register. Waits for no answer. What the
    register answers on this connection must not meet another command, which would take it for its own
    answer: velnoext_initialize() connects afresh before the next one.

    data: borrowed; needs no terminating zero
    length: bytes, 1 to 65,471

    Returns 0; 1: not initialised, not paired, or another application number; 2: not connected, or not
        sent within 2 s; 3: NULL (0x300); 4: negative length; 11: nothing to encrypt, or too much

    int velnoext_send_data(const char *data, int length);
    """
    returned: int = _library.velnoext_send_data(data, length)
    return returned


_library.velnoext_get_data.restype = ctypes.c_int
_library.velnoext_get_data.argtypes = [
    ctypes.c_char_p,
    ctypes.c_int,
    ctypes.c_void_p,
    ctypes.POINTER(ctypes.c_int),
]


def velnoext_get_data(
    frame: bytes | None,
    frameLength: int,
    output: Any,
    outputLength: Any,
) -> int:
    """Checks and decrypts a frame of the active register that the caller received by means of its own.
    Sends nothing.

    frame: from its 2-byte length on, without the 4 bytes that precede it on a connection
    output: receives the plain bytes, no terminating zero
    outputLength: in: room; out: bytes written

    Returns 0; 1: as for velnoext_send_data(); 2: not connected; 3: NULL (0x300 frame, 0x301 output,
        0x302 outputLength); 4: negative frameLength, or the room is too small; 11: not authentic; 12:
        malformed

    int velnoext_get_data(const char *frame, int frameLength, char *output, int *outputLength);
    """
    returned: int = _library.velnoext_get_data(frame, frameLength, output, outputLength)
    return returned


_library.velnoext_login.restype = ctypes.c_int
_library.velnoext_login.argtypes = [ctypes.c_uint]


def velnoext_login(timeout: int) -> int:
    """Opens the application's session on the register: it then knows that an application works with it.
    The session belongs to the register, which keeps it when the connection ends; logging in twice does
    no harm. This library asks for no login before any command, and the simulated register neither; one
    in the field may want it before it sells or reports, so log in once after connecting.

    Returns 0; 8: refused, by the simulated register while it starts or is out of service

    int velnoext_login(unsigned int timeout);
    """
    returned: int = _library.velnoext_login(timeout)
    return returned


_library.velnoext_logout.restype = ctypes.c_int
_library.velnoext_logout.argtypes = [ctypes.c_uint]


def velnoext_logout(timeout: int) -> int:
    """Ends the session.

    Returns 0; 8: refused, by the simulated register while a sale is open

    int velnoext_logout(unsigned int timeout);
    """
    returned: int = _library.velnoext_logout(timeout)
    return returned


_library.velnoext_check_printer_paper.restype = ctypes.c_int
_library.velnoext_check_printer_paper.argtypes = [ctypes.c_uint]


def velnoext_check_printer_paper(timeout: int) -> int:
    """Whether the printer has paper.

    Returns 0: it has; 9: it has none

    int velnoext_check_printer_paper(unsigned int timeout);
    """
    returned: int = _library.velnoext_check_printer_paper(timeout)
    return returned


_library.velnoext_ecr_state.restype = ctypes.c_int
_library.velnoext_ecr_state.argtypes = [ctypes.c_uint, ctypes.POINTER(ctypes.c_int)]


def velnoext_ecr_state(timeout: int, state: Any) -> int:
    """The register's state, see VelnoEcrState.

    Returns 0; 3: NULL (0x302)

    int velnoext_ecr_state(unsigned int timeout, int *state);
    """
    returned: int = _library.velnoext_ecr_state(timeout, state)
    return returned


_library.velnoext_ecr_serialno.restype = ctypes.c_int
_library.velnoext_ecr_serialno.argtypes = [ctypes.c_void_p]


def velnoext_ecr_serialno(buffer: Any) -> int:
    """The serial number that the active register gave when it was paired. Asks nobody.

    A zero is written at the index of this terminal's identity's length, not behind the copied bytes:
    with the usual 12 characters on both sides the result is an ordinary text.

    buffer: room for at least 17 bytes

    Returns 0; 1: not initialised, no active register, not paired; 3: NULL (0x300)

    int velnoext_ecr_serialno(char *buffer);
    """
    returned: int = _library.velnoext_ecr_serialno(buffer)
    return returned


_library.velnoext_current_z.restype = ctypes.c_int
_library.velnoext_current_z.argtypes = [ctypes.c_uint, ctypes.POINTER(ctypes.c_int)]


def velnoext_current_z(timeout: int, z: Any) -> int:
    """The number of the current Z report.

    z: written also when the register refused

    Returns 0; 3: NULL (0x30B); 8: refused

    int velnoext_current_z(unsigned int timeout, int *z);
    """
    returned: int = _library.velnoext_current_z(timeout, z)
    return returned


_library.velnoext_last_z_datetime.restype = ctypes.c_int
_library.velnoext_last_z_datetime.argtypes = [ctypes.c_uint, ctypes.POINTER(ctypes.c_int)]


def velnoext_last_z_datetime(timeout: int, value: Any) -> int:
    """When the last Z report was made, as the register's number; the simulated register's is seconds since
    1970.

    Returns 0; 3: NULL (0x30C)

    int velnoext_last_z_datetime(unsigned int timeout, int *value);
    """
    returned: int = _library.velnoext_last_z_datetime(timeout, value)
    return returned


_library.velnoext_ecr_datetime.restype = ctypes.c_int
_library.velnoext_ecr_datetime.argtypes = [ctypes.c_uint, ctypes.POINTER(ctypes.c_int)]


def velnoext_ecr_datetime(timeout: int, value: Any) -> int:
    """The register's clock, a number like that of the last Z report.

    Returns 0; 3: NULL (0x30C)

    int velnoext_ecr_datetime(unsigned int timeout, int *value);
    """
    returned: int = _library.velnoext_ecr_datetime(timeout, value)
    return returned


_library.velnoext_sale_limit.restype = ctypes.c_int
_library.velnoext_sale_limit.argtypes = [ctypes.c_uint, ctypes.POINTER(ctypes.c_longlong)]


def velnoext_sale_limit(timeout: int, limit: Any) -> int:
    """The highest amount that one sale may reach, in kuruş.

    Returns 0; 3: NULL (0x310)

    int velnoext_sale_limit(unsigned int timeout, long long *limit);
    """
    returned: int = _library.velnoext_sale_limit(timeout, limit)
    return returned


_library.velnoext_start_sale.restype = ctypes.c_int
_library.velnoext_start_sale.argtypes = [ctypes.c_uint]


def velnoext_start_sale(timeout: int) -> int:
    """Starts a sale: reads the register's state, then has the keys that start one pressed.

    Returns 0; 6: the state is neither 1 nor 7 (nothing was started), or it is not 5 afterwards; 7: the
        register did not take the step or tells an error of its own

    int velnoext_start_sale(unsigned int timeout);
    """
    returned: int = _library.velnoext_start_sale(timeout)
    return returned


_library.velnoext_start_sale_with_invoice.restype = ctypes.c_int
_library.velnoext_start_sale_with_invoice.argtypes = [ctypes.c_uint]


def velnoext_start_sale_with_invoice(timeout: int) -> int:
    """Starts a sale that is to end with an invoice, see velnoext_end_sale_with_invoice().

    Returns as above

    int velnoext_start_sale_with_invoice(unsigned int timeout);
    """
    returned: int = _library.velnoext_start_sale_with_invoice(timeout)
    return returned


_library.velnoext_sale_state.restype = ctypes.c_int
_library.velnoext_sale_state.argtypes = [
    ctypes.c_uint,
    ctypes.POINTER(ctypes.c_int),
    ctypes.POINTER(VelnoEcrSaleTotals),
    ctypes.POINTER(VelnoReceiptRef),
]


def velnoext_sale_state(timeout: int, first: Any, totals: Any, receipt: Any) -> int:
    """How the open sale stands.

    first: the first number of the register's list; written as soon as it has been read, also when the
        rest of the answer cannot be read (5)
    totals: the running totals
    receipt: names the receipt of this sale, for velnoext_receipt_data()

    Returns 0; 3: NULL (0x303 first, 0x304 totals, 0x305 receipt); 6: no sale is open; 7: the register's
        list is empty; 8: refused

    int velnoext_sale_state(unsigned int timeout, int *first, VelnoEcrSaleTotals *totals,
        VelnoReceiptRef *receipt);
    """
    returned: int = _library.velnoext_sale_state(timeout, first, totals, receipt)
    return returned


_library.velnoext_add_sale_item.restype = ctypes.c_int
_library.velnoext_add_sale_item.argtypes = [
    ctypes.c_uint,
    ctypes.POINTER(VelnoSaleItem),
    ctypes.POINTER(VelnoEcrSaleTotals),
]


def velnoext_add_sale_item(timeout: int, item: Any, totals: Any) -> int:
    """Adds one line to the open sale. With price 0 neither section nor amount is looked at.

    item: only read
    totals: the running totals with this line

    Returns 0; 3: NULL (0x306 item, 0x304 totals); 4: section is not 1 to 8 (0x406), percentage is below
        -100 (0x407), amount is negative or exceeds the line total (0x408), type is not 0 to 7 (0x409);
        6: no sale is open; 7: the register did not take the step; 8: refused, or the register tells an
        error of its own

    int velnoext_add_sale_item(unsigned int timeout, VelnoSaleItem *item, VelnoEcrSaleTotals *totals);
    """
    returned: int = _library.velnoext_add_sale_item(timeout, item, totals)
    return returned


_library.velnoext_add_multiple_sale_items.restype = ctypes.c_int
_library.velnoext_add_multiple_sale_items.argtypes = [
    ctypes.c_uint,
    ctypes.POINTER(VelnoSaleItemList),
    ctypes.POINTER(VelnoEcrSaleTotals),
]


def velnoext_add_multiple_sale_items(timeout: int, list: Any, totals: Any) -> int:
    """Adds up to ten lines to the open sale at once. When one is not valid none is sent.

    list: only read
    totals: the running totals with all lines

    Returns 0; 3: NULL (0x307 list, 0x304 totals); 4: count is not 1 to 10 (0x40A), an item's price is 0
        (0x405), or an item is not valid, as for velnoext_add_sale_item(); 6, 7, 8: likewise

    int velnoext_add_multiple_sale_items(unsigned int timeout, VelnoSaleItemList *list,
        VelnoEcrSaleTotals *totals);
    """
    returned: int = _library.velnoext_add_multiple_sale_items(timeout, list, totals)
    return returned


_library.velnoext_add_medical_contribution.restype = ctypes.c_int
_library.velnoext_add_medical_contribution.argtypes = [
    ctypes.c_uint,
    ctypes.c_longlong,
    ctypes.c_ulonglong,
]


def velnoext_add_medical_contribution(timeout: int, amount: int, identityNo: int) -> int:
    """Adds a medical contribution to the open sale.

    amount: in kuruş; with 0 the identity number is neither looked at nor sent
    identityNo: 11-digit identity number of the person; 11111111111 stands for anybody

    Returns 0; 4: the identity number is not valid (0x403); 6: no sale is open; 7: the register did not
        take the step or tells an error of its own; 8: refused

    int velnoext_add_medical_contribution(unsigned int timeout, long long amount, unsigned long long
        identityNo);
    """
    returned: int = _library.velnoext_add_medical_contribution(timeout, amount, identityNo)
    return returned


_library.velnoext_delete_last_sale_item.restype = ctypes.c_int
_library.velnoext_delete_last_sale_item.argtypes = [
    ctypes.c_uint,
    ctypes.POINTER(VelnoEcrSaleTotals),
]


def velnoext_delete_last_sale_item(timeout: int, totals: Any) -> int:
    """Takes the last line out of the open sale.

    totals: the running totals without it

    Returns 0; 3: NULL (0x304); 6: no sale is open; 7: the register did not take the step; 8: refused,
        or the register tells an error of its own

    int velnoext_delete_last_sale_item(unsigned int timeout, VelnoEcrSaleTotals *totals);
    """
    returned: int = _library.velnoext_delete_last_sale_item(timeout, totals)
    return returned


_library.velnoext_delete_sale_item.restype = ctypes.c_int
_library.velnoext_delete_sale_item.argtypes = [
    ctypes.c_uint,
    ctypes.c_int,
    ctypes.POINTER(VelnoEcrSaleTotals),
]


def velnoext_delete_sale_item(timeout: int, index: int, totals: Any) -> int:
    """Takes the line of this index out of the open sale.

    index: as the register counts its lines; the simulated one from 0, the first line added. A deleted
        line keeps its index, so that the others keep theirs
    totals: the running totals without it

    Returns as above

    int velnoext_delete_sale_item(unsigned int timeout, int index, VelnoEcrSaleTotals *totals);
    """
    returned: int = _library.velnoext_delete_sale_item(timeout, index, totals)
    return returned


_library.velnoext_add_payment.restype = ctypes.c_int
_library.velnoext_add_payment.argtypes = [ctypes.c_int, ctypes.c_longlong]


def velnoext_add_payment(type: int, amount: int) -> int:
    """Pays an amount of the open sale. Does not wait for an answer.

    type: see VelnoPaymentKey; 0: with the key F10 of the register; any other value: with its key F11
    amount: in kuruş, 1 to 999,999,999,999; a larger one is not refused but loses its last digits, as
        the register takes 12

    Returns 0: the keys are sent; 4: amount is 0 or negative (0x412), which is looked at before all
        else; 6: no sale is open; 7: the register did not take the step before; 8: the register is not
        ready for keys

    int velnoext_add_payment(int type, long long amount);
    """
    returned: int = _library.velnoext_add_payment(type, amount)
    return returned


_library.velnoext_end_sale.restype = ctypes.c_int
_library.velnoext_end_sale.argtypes = [ctypes.c_int]


def velnoext_end_sale(type: int) -> int:
    """Ends the open sale. Does not wait for an answer.

    type: as for velnoext_add_payment()

    Returns 0: the key is sent; 6, 7, 8: as for velnoext_add_payment()

    int velnoext_end_sale(int type);
    """
    returned: int = _library.velnoext_end_sale(type)
    return returned


_library.velnoext_cancel_sale.restype = ctypes.c_int
_library.velnoext_cancel_sale.argtypes = [ctypes.c_uint]


def velnoext_cancel_sale(timeout: int) -> int:
    """Cancels the open sale and waits until the register is idle. Payments that the register refused, and
    a printer without paper, are no hindrance to the simulated register; without paper it prints nothing
    of it.

    Returns 0; 6: no sale is open, or the register's state is not 1 afterwards; 7, 8: as for
        velnoext_add_payment()

    int velnoext_cancel_sale(unsigned int timeout);
    """
    returned: int = _library.velnoext_cancel_sale(timeout)
    return returned


_library.velnoext_end_sale_with_invoice.restype = ctypes.c_int
_library.velnoext_end_sale_with_invoice.argtypes = [ctypes.POINTER(VelnoInvoice)]


def velnoext_end_sale_with_invoice(invoice: Any) -> int:
    """Ends the open sale with an invoice. The register is not asked for its state before.

    invoice: only read

    Returns 0; 3: NULL (0x308); 4: invoiceType is above 2 (0x40B), idKind above 1 (0x40C), mode not 1 or
        2 (0x40D), reference not 6 to 16 bytes long with invoiceType 0 (0x40E), idNumber not valid as a
        person's (0x403) or as a tax number (0x404); 8: refused

    int velnoext_end_sale_with_invoice(VelnoInvoice *invoice);
    """
    returned: int = _library.velnoext_end_sale_with_invoice(invoice)
    return returned


_library.velnoext_receipt_data.restype = ctypes.c_int
_library.velnoext_receipt_data.argtypes = [
    ctypes.c_uint,
    ctypes.POINTER(VelnoReceiptRef),
    ctypes.POINTER(VelnoEcrSaleTotals),
]


def velnoext_receipt_data(timeout: int, receipt: Any, totals: Any) -> int:
    """The totals of a receipt, also of one that has been printed.

    receipt: as velnoext_sale_state() told it; only read

    Returns 0; 3: NULL (0x305 receipt, 0x304 totals); 4: first (0x40F) or second (0x410) is 0; 8:
        refused

    int velnoext_receipt_data(unsigned int timeout, VelnoReceiptRef *receipt, VelnoEcrSaleTotals
        *totals);
    """
    returned: int = _library.velnoext_receipt_data(timeout, receipt, totals)
    return returned


_library.velnoext_active_acquirers.restype = ctypes.c_int
_library.velnoext_active_acquirers.argtypes = [
    ctypes.c_uint,
    ctypes.POINTER(ctypes.c_int),
    ctypes.POINTER(ctypes.c_int),
]


def velnoext_active_acquirers(timeout: int, list: Any, count: Any) -> int:
    """The acquirers (banks) that the register can take cards for, by their numbers.

    list: room for *count numbers
    count: in: room; out: how many were written, or -1 when the room is too small

    Returns 0; 3: NULL (0x309 list, 0x30A count); 4: the room is too small (detail 0)

    int velnoext_active_acquirers(unsigned int timeout, int *list, int *count);
    """
    returned: int = _library.velnoext_active_acquirers(timeout, list, count)
    return returned


_library.velnoext_acquirers_of_sale.restype = ctypes.c_int
_library.velnoext_acquirers_of_sale.argtypes = [
    ctypes.c_uint,
    ctypes.POINTER(ctypes.c_int),
    ctypes.POINTER(ctypes.c_int),
]


def velnoext_acquirers_of_sale(timeout: int, list: Any, count: Any) -> int:
    """The acquirers of the sale's payments.

    Returns as above

    int velnoext_acquirers_of_sale(unsigned int timeout, int *list, int *count);
    """
    returned: int = _library.velnoext_acquirers_of_sale(timeout, list, count)
    return returned


_library.velnoext_section_data.restype = ctypes.c_int
_library.velnoext_section_data.argtypes = [ctypes.c_uint, ctypes.POINTER(VelnoSaleItem)]


def velnoext_section_data(timeout: int, item: Any) -> int:
    """What the register knows of a section (department).

    item: in: section, 1 to 8; out: name, ended with a zero, and in quantity a number that the register
        defines, the simulated one as the section's tax rate in per cent; nothing else is written

    Returns 0; 3: NULL (0x306); 4: section is not 1 to 8 (0x406); 5 also: the name is longer than 52
        bytes

    int velnoext_section_data(unsigned int timeout, VelnoSaleItem *item);
    """
    returned: int = _library.velnoext_section_data(timeout, item)
    return returned


_library.velnoext_printer_set_encoding.restype = ctypes.c_int
_library.velnoext_printer_set_encoding.argtypes = [ctypes.c_char_p]


def velnoext_printer_set_encoding(name: bytes | None) -> int:
    """Sets the encoding of the texts that follow on the slip. May be called again between texts.

    name: as Qt knows it, for example "UTF-8", "windows-1254" or "ISO-8859-9"

    Returns 0; 3: NULL (0x30D); 4: no encoding of this name is known (0x411)

    int velnoext_printer_set_encoding(const char *name);
    """
    returned: int = _library.velnoext_printer_set_encoding(name)
    return returned


_library.velnoext_printer_add_text.restype = ctypes.c_int
_library.velnoext_printer_add_text.argtypes = [ctypes.c_char_p, ctypes.POINTER(VelnoTextStyle)]


def velnoext_printer_add_text(text: bytes | None, style: Any) -> int:
    """Adds a text to the slip. It needs no line feed of its own at its end.

    text: of any length, in the encoding that was set
    style: only read

    Returns 0; 3: NULL or empty text (0x30E), NULL style (0x30F); 8: no encoding has been set for this
        slip

    int velnoext_printer_add_text(const char *text, VelnoTextStyle *style);
    """
    returned: int = _library.velnoext_printer_add_text(text, style)
    return returned


_library.velnoext_printer_add_line_feed.restype = ctypes.c_int
_library.velnoext_printer_add_line_feed.argtypes = [ctypes.c_uint]


def velnoext_printer_add_line_feed(count: int) -> int:
    """Adds up to 20 line feeds to the slip.

    Returns 0; 4: more than 20 (0x413); 8: no encoding has been set

    int velnoext_printer_add_line_feed(unsigned int count);
    """
    returned: int = _library.velnoext_printer_add_line_feed(count)
    return returned


_library.velnoext_printer_add_justified_text.restype = ctypes.c_int
_library.velnoext_printer_add_justified_text.argtypes = [
    ctypes.c_char_p,
    ctypes.c_char_p,
    ctypes.POINTER(VelnoTextStyle),
]


def velnoext_printer_add_justified_text(
    left: bytes | None,
    right: bytes | None,
    style: Any,
) -> int:
    """Adds a line to the slip of which one text stands at the left and another at the right end.

    style: only read; its size does not matter

    Returns 0; 3: NULL or empty text (0x30E), NULL style (0x30F); 8: no encoding has been set for this
        slip

    int velnoext_printer_add_justified_text(const char *left, const char *right, VelnoTextStyle *style);
    """
    returned: int = _library.velnoext_printer_add_justified_text(left, right, style)
    return returned


_library.velnoext_print_slip.restype = ctypes.c_int
_library.velnoext_print_slip.argtypes = [ctypes.c_uint, ctypes.c_bool]


def velnoext_print_slip(timeout: int, flag: bool) -> int:
    """Prints the slip. Once it is on its way it is gone from the library, printed or not, and the next one
    begins with its encoding; only when there is no connection to send it on does it stay.

    timeout: ms of silence allowed in the rest of the answer once its first byte has come
    flag: sent with the slip; the register defines what it means

    Returns 0; 1: not initialised, no active register, not paired (the slip stays); 2: not connected (it
        stays), sending or receiving failed (it is gone); 5: the answer is too short; 8: refused; 11:
        not authentic, or the slip is larger than about 65,000 bytes; 12: malformed

    int velnoext_print_slip(unsigned int timeout, bool flag);
    """
    returned: int = _library.velnoext_print_slip(timeout, flag)
    return returned


_library.velnoext_x_report.restype = ctypes.c_int
_library.velnoext_x_report.argtypes = []


def velnoext_x_report() -> int:
    """Prints an X report, the totals of the day so far, on an idle register. Asks for the register's state
    first; 2000 ms of silence are allowed in the rest of each answer.

    Returns 0; 6: the register's state is neither 1 nor 7; 8: refused; 1, 2, 5, 11, 12 as for the
        queries

    int velnoext_x_report(void);
    """
    returned: int = _library.velnoext_x_report()
    return returned


_library.velnoext_z_report.restype = ctypes.c_int
_library.velnoext_z_report.argtypes = []


def velnoext_z_report() -> int:
    """Prints a Z report, which ends the day. As velnoext_x_report(), but in any state: the register
    decides.

    int velnoext_z_report(void);
    """
    returned: int = _library.velnoext_z_report()
    return returned
