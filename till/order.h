// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoext.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

namespace Velno::Receipts {

enum class Kind { Receipt, ZReport, XReport, Slip };

/** Where an order stands. The numbers are those of velnotill.h and of the ledger; they never change. */
enum class State {
    Accepted = 0,    ///< on record; nothing has been done about it that is known
    Open = 1,        ///< its fiscal receipt is open on the register, and its reference is known
    Closed = 2,      ///< done: the receipt counts, the report is made, the slip is printed
    Cancelled = 3,   ///< not done, because a person dropped it
    Refused = 4,     ///< not done, because the register refuses it
    Waiting = 5,     ///< the register is away or busy; it goes on by itself
    NeedsPerson = 6, ///< cannot be known: a person must answer the question
};

/** What a person is asked. The numbers never change; the words are in questions.h. */
enum class Question {
    None = 0,
    ReceiptUnknown = 1, ///< the register does not tell whether the receipt was closed
    MoneyTaken = 2,     ///< the register cancelled it when something had been paid, or may have been
    PaymentRefused = 3, ///< a part is paid, the rest is refused; the sale is open
    NotOurs = 4,        ///< the register tells of it what nobody has entered
    OtherRegister = 5,  ///< its numbers are below those of the ledger
    CountedTwice = 6,   ///< a receipt that was taken for cancelled counts, too
    SlipPrinted = 7,    ///< whether a slip came out
};

enum class Answer {
    None = 0,
    Paid = 1,      ///< it was done: nothing more is to be
    SellAgain = 2, ///< it was not done: do it
    Drop = 3,      ///< it was not done, and is not wanted any more
};

/** What is known of the paper of a closed receipt. */
enum class Paper {
    Unknown = 0, ///< not closed
    Printed = 1,
    Unsure = 2, ///< closed, and may not have been printed
};

/** One fiscal receipt that an order was, or is, entered on. */
enum class Fate {
    Open = 0,
    Closed = 1,
    Cancelled = 2,
    ProbablyCancelled = 3, ///< to be asked about again behind the next receipts that are closed
    GivenUp = 4,           ///< nobody can tell any more: a person has decided
};

struct Attempt
{
    qint64 order = 0; ///< number of the order
    VelnoReceiptRef reference = {0, 0};
    int era =
        0; ///< which of the registers under this serial number: a replaced fiscal memory begins another one
    Fate fate = Fate::Open;
};

/** A receipt, report or slip under a key: what is wanted, and what has become of it. */
struct Order
{
    qint64 number = 0; ///< in which order they were accepted; 0: not yet
    QString key;
    Kind kind = Kind::Receipt;
    QByteArray content = "{}"; ///< toJson() of the receipt or slip; of reports an empty object

    State state = State::Accepted;
    Question question = Question::None;
    Answer answer = Answer::None; ///< of the person, until it has been acted upon

    VelnoReceiptRef reference = {0, 0}; ///< of the receipt it is entered on, or was closed on; 0, 0: none
    bool paymentSent =
        false; ///< with this reference, a payment that must not be entered again unasked may have been sent
    bool isSent = false; ///< of a slip: it may have been printed
    int z = 0;           ///< of a Z report: the register's number before it; 0: not asked yet
    int era = 1;         ///< of which register reference, Z number and OtherRegister speak, as Attempt::era

    VelnoEcrSaleTotals totals = {}; ///< of a closed receipt
    Paper paper = Paper::Unknown;
    bool slipUnsure = false; ///< the slip behind the receipt may not have been printed
    qint64 giveBack =
        0; ///< cash in kuruş that was taken on receipts which the register cancelled and that is on none

    int code = 0;  ///< the library's result code behind refused and waiting
    int cause = 0; ///< velnoext_cause() with it

    QDateTime acceptedAt; ///< UTC
    QDateTime changedAt;  ///< UTC
};

/** A line of an order's history. */
struct Event
{
    QDateTime time; ///< UTC
    State state = State::Accepted;
    int code = 0;
    int cause = 0;
    QString text;   ///< in English, for the person who looks into it
    QString person; ///< who answered; empty for the program
};

bool isSettled(State state);   ///< closed, cancelled, refused: nothing more is done about it
QString textOf(Answer answer); ///< for an order's history

} // namespace Velno::Receipts
