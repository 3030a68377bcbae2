# SPDX-License-Identifier: Apache-2.0
"""Sell on a fiscal cash register.

Till        whole receipts under a key, each sold exactly once
Register    single commands, step by step
in_thread   either of them in a coroutine

What fails raises a velno.Error; errors.py has a class for each result. Importing this package loads
libvelnoext and libvelnotill: from the folder that the environment variable VELNO_LIBRARY names, or where the
loader looks.
"""

from ._calls import in_thread
from ._values import RELAY
from ._velnoext import VelnoCause as Cause
from ._velnoext import VelnoDetail as Detail
from ._velnoext import VelnoEcrState as EcrState
from ._velnoext import VelnoInvoiceType as InvoiceType
from ._velnoext import VelnoItemType as ItemType
from ._velnoext import VelnoResult as Result
from ._velnotill import VelnoTillAnswer as Answer
from ._velnotill import VelnoTillKind as Kind
from ._velnotill import VelnoTillPaper as Paper
from ._velnotill import VelnoTillQuestion as Question
from ._velnotill import VelnoTillResult as TillResult
from ._velnotill import VelnoTillStage as Stage
from ._velnotill import VelnoTillState as State
from ._version import VERSION as __version__
from .errors import (
    AlreadyOpen,
    BadArgument,
    BadContent,
    BadValue,
    Conflict,
    ConnectionFailed,
    Error,
    InCallback,
    Interrupted,
    LedgerFailed,
    MalformedReply,
    NoApplicationHash,
    NoMemory,
    NoPaper,
    NotAsked,
    NotAuthentic,
    NotOpen,
    NotReady,
    NullArgument,
    PairingFailed,
    PaymentNotTaken,
    Refused,
    RegisterError,
    ReplyUnreadable,
    SaleStillOpen,
    StepNotTaken,
    TillError,
    TillNullArgument,
    UnknownKey,
    WrongState,
)
from .outcome import Event, Outcome, Reference, Totals
from .receipt import Invoice, Item, Medical, Payment, Receipt, Slip, check_receipt, check_slip
from .register import Register, Section
from .sale import Line, Sale, SaleState
from .settings import library_version, set_answer_limit, set_language, set_log
from .slip import SlipLines
from .till import ALL_STATES, UNSETTLED_STATES, Till

__all__ = [
    "ALL_STATES",
    "AlreadyOpen",
    "Answer",
    "BadArgument",
    "BadContent",
    "BadValue",
    "Cause",
    "Conflict",
    "ConnectionFailed",
    "Detail",
    "EcrState",
    "Error",
    "Event",
    "InCallback",
    "Interrupted",
    "Invoice",
    "InvoiceType",
    "Item",
    "ItemType",
    "Kind",
    "LedgerFailed",
    "Line",
    "MalformedReply",
    "Medical",
    "NoApplicationHash",
    "NoMemory",
    "NoPaper",
    "NotAsked",
    "NotAuthentic",
    "NotOpen",
    "NotReady",
    "NullArgument",
    "Outcome",
    "PairingFailed",
    "Paper",
    "Payment",
    "PaymentNotTaken",
    "Question",
    "RELAY",
    "Receipt",
    "Reference",
    "Refused",
    "Register",
    "RegisterError",
    "ReplyUnreadable",
    "Result",
    "Sale",
    "SaleState",
    "SaleStillOpen",
    "Section",
    "Slip",
    "SlipLines",
    "Stage",
    "State",
    "StepNotTaken",
    "Till",
    "TillError",
    "TillNullArgument",
    "TillResult",
    "Totals",
    "UNSETTLED_STATES",
    "UnknownKey",
    "WrongState",
    "__version__",
    "check_receipt",
    "check_slip",
    "in_thread",
    "library_version",
    "set_answer_limit",
    "set_language",
    "set_log",
]
