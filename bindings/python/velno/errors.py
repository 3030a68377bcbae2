# SPDX-License-Identifier: Apache-2.0
"""What can go wrong, a class for each result.

    try:
        register.login()
    except velno.ConnectionFailed as problem:
        print(problem, problem.cause, problem.cause_text)
"""

from __future__ import annotations

from . import _velnoext as ext
from . import _velnotill as till
from ._values import known, python_text


class Error(Exception):
    """Whatever the libraries refuse or fail at."""


class RegisterError(Error):
    """A function of velnoext.h has failed. Numbers are for programs, texts for people and logs.

    result       why, roughly: an ext.VelnoResult
    cause        the finest reason known, a VelnoCause; a number that has no name there stays a number
    detail       which argument is meant, a VelnoDetail
    The texts are in the language of velno.set_language(), and have three lines: what, cause, cure.
    """

    def __init__(self, function: str, result: int, cause: int = 0, detail: int = 0) -> None:
        self.function = function
        self.result = ext.VelnoResult(result)
        self.cause = known(ext.VelnoCause, cause)
        self.detail = known(ext.VelnoDetail, detail)
        self.result_name = python_text(ext.velnoext_result_name(result))
        self.result_text = python_text(ext.velnoext_result_text(result))
        self.cause_name = python_text(ext.velnoext_cause_name(cause))
        self.cause_text = python_text(ext.velnoext_cause_text(cause)) if cause else ""
        self.detail_text = python_text(ext.velnoext_detail_text(detail)) if detail else ""
        super().__init__(self._words())

    def _words(self) -> str:
        sentence = self.result_text.splitlines()[0]
        words = f"{self.function}: {sentence} ({self.result_name}, {int(self.result)})"
        if self.cause_text:
            words += f" {self.cause_text.splitlines()[0]} ({self.cause_name}, {int(self.cause)})"
        return words + (f" {self.detail_text}" if self.detail_text else "")


class NotReady(RegisterError):
    """Not connected, or not paired."""


class ConnectionFailed(RegisterError):
    """No connection, or it has ended. The register may have done what it was asked for."""


class NullArgument(RegisterError):
    """Not from this package, unless None is handed to its low level."""


class BadValue(RegisterError):
    """A value is not valid; the detail names it."""


class ReplyUnreadable(RegisterError):
    """The answer cannot be read. The register may have done what it was asked for."""


class WrongState(RegisterError):
    """The register is in a state that does not allow it."""


class StepNotTaken(RegisterError):
    """The register did not take the change of state."""


class Refused(RegisterError):
    """The register says no."""


class NoPaper(RegisterError):
    """The printer has no paper."""


class PairingFailed(RegisterError):
    """The cause tells where the pairing ended."""


class NotAuthentic(RegisterError):
    """The answer does not stand up to its check. The register may have done what it was asked for."""


class MalformedReply(RegisterError):
    """The answer's frame is damaged, or another register's. It may have done what it was asked for."""


class NoApplicationHash(RegisterError):
    """The program's own file cannot be read."""


class SaleStillOpen(Error):
    """The keys that end a sale were sent, and the register has not ended it: it shows why."""


class PaymentNotTaken(Error):
    """The keys of a payment were sent, and the register has not taken it: it shows why."""


class TillError(Error):
    """A function of velnotill.h has failed: `result` is a VelnoTillResult, the text tells more."""

    def __init__(self, result: int, problem: str = "") -> None:
        self.result = till.VelnoTillResult(result)
        self.result_name = python_text(till.velnotill_result_name(result))
        self.result_text = python_text(till.velnotill_result_text(result, b"en"))
        super().__init__(problem or self.result_text)


class BadContent(TillError):
    """A receipt or a slip has faults: a line for each, with the path to it."""


class Conflict(TillError):
    """The key is on record with another content; nothing was done."""


class LedgerFailed(TillError):
    """The ledger cannot be opened, read or written; nothing more was done."""


class UnknownKey(TillError):
    """No order has this key."""


class NotAsked(TillError):
    """The order does not wait for this answer."""


class Interrupted(TillError):
    """By interrupt(). The order stays as it is, and goes on when it is handed over again."""


class TillNullArgument(TillError):
    """Not from this package, unless None is handed to its low level."""


class BadArgument(TillError):
    """A key, a name, an answer or a setting that is none."""


class NotOpen(TillError):
    """The till is closed."""


class AlreadyOpen(TillError):
    """This process has a till open."""


class InCallback(TillError):
    """A progress callback may call interrupt() and texts alone."""


class NoMemory(TillError):
    """The system gives none."""


_OF_RESULT: dict[int, type[RegisterError]] = {
    ext.VelnoResult.NOT_READY: NotReady,
    ext.VelnoResult.CONNECTION_FAILED: ConnectionFailed,
    ext.VelnoResult.NULL_ARGUMENT: NullArgument,
    ext.VelnoResult.BAD_VALUE: BadValue,
    ext.VelnoResult.REPLY_UNREADABLE: ReplyUnreadable,
    ext.VelnoResult.WRONG_STATE: WrongState,
    ext.VelnoResult.STEP_NOT_TAKEN: StepNotTaken,
    ext.VelnoResult.REFUSED: Refused,
    ext.VelnoResult.NO_PAPER: NoPaper,
    ext.VelnoResult.PAIRING_FAILED: PairingFailed,
    ext.VelnoResult.NOT_AUTHENTIC: NotAuthentic,
    ext.VelnoResult.MALFORMED_REPLY: MalformedReply,
    ext.VelnoResult.NO_APPLICATION_HASH: NoApplicationHash,
}

_OF_TILL_RESULT: dict[int, type[TillError]] = {
    till.VelnoTillResult.BAD_CONTENT: BadContent,
    till.VelnoTillResult.CONFLICT: Conflict,
    till.VelnoTillResult.LEDGER_FAILED: LedgerFailed,
    till.VelnoTillResult.UNKNOWN: UnknownKey,
    till.VelnoTillResult.NOT_ASKED: NotAsked,
    till.VelnoTillResult.INTERRUPTED: Interrupted,
    till.VelnoTillResult.NULL_ARGUMENT: TillNullArgument,
    till.VelnoTillResult.BAD_ARGUMENT: BadArgument,
    till.VelnoTillResult.NOT_OPEN: NotOpen,
    till.VelnoTillResult.ALREADY_OPEN: AlreadyOpen,
    till.VelnoTillResult.IN_CALLBACK: InCallback,
    till.VelnoTillResult.NO_MEMORY: NoMemory,
}


def check(function: str, result: int) -> None:
    """Raises what a function of velnoext.h has returned; asks for its cause, so before the next call."""
    if result:
        raise _OF_RESULT[result](function, result, ext.velnoext_cause(), ext.velnoext_error_detail())


def check_till(result: int) -> None:
    """Raises what a function of velnotill.h has returned; on the thread that has called it."""
    if result:
        raise _OF_TILL_RESULT[result](result, python_text(till.velnotill_problem()))
