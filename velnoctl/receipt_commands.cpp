// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/receipt_commands.h"

#include "translations/spoken.h"
#include "velnoctl/arguments.h"
#include "velnoctl/ledger_till.h"
#include "velnoctl/session.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>

#include <cstdio>
#include <memory>
#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr qint64 largestFile = 1'048'576; // bytes; the till reads no larger receipt

using TillText = std::unique_ptr<char, decltype(&velnotill_free_text)>;

VelnoTillOutcome emptyOutcome()
{
    VelnoTillOutcome outcome{};
    outcome.size = sizeof outcome;
    return outcome;
}

Answer wrongContent(const QString &problem)
{
    Answer answer;
    answer.code = WrongUsage;
    answer.text = problem;
    return answer;
}

/** Reads a file into a text without zeros in it. @return what is wrong */
QString readFile(const QString &path, QByteArray *text)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return u"%1: %2"_s.arg(path, file.errorString());
    *text = file.read(largestFile + 1);
    if (file.error() != QFile::NoError)
        return u"%1: %2"_s.arg(path, file.errorString());
    return text->contains('\0') ? Spoken::tr("%1: it is no text").arg(path) : QString();
}

/** A call that did not bring an order. */
Answer notTaken(int result)
{
    const QString problem = QString::fromUtf8(velnotill_problem());
    if (result == VelnoTillResult_BadContent || result == VelnoTillResult_BadArgument)
        return wrongContent(problem);
    Answer answer;
    answer.code = int(OrderNotTaken) + result;
    answer.result = velnotill_result_name(result);
    answer.text = problem;
    return answer;
}

QJsonObject orderAsJson(VelnoTill *till, const QByteArray &key)
{
    char *text = nullptr;
    if (velnotill_json(till, key.constData(), &text) != VelnoTillResult_Done)
        return {};
    const TillText owner(text, velnotill_free_text);
    return QJsonDocument::fromJson(text).object();
}

QString messageOf(Session &session, const VelnoTillOutcome &outcome)
{
    char *text = nullptr;
    velnotill_message(&outcome, session.device().options().language.constData(), &text);
    const TillText owner(text, velnotill_free_text);
    return QString::fromUtf8(text);
}

/** How an order stands, as the command's end. */
Answer standing(Session &session, VelnoTill *till, const QByteArray &key, int result,
                const VelnoTillOutcome &outcome)
{
    if (result == VelnoTillResult_Interrupted) {
        session.device().setWhenInterrupted(
            Spoken::tr("while it was under way; hand it over again under the key %1, and it goes on")
                .arg(QString::fromUtf8(key)));
    }
    if (result != VelnoTillResult_Done && result != VelnoTillResult_Interrupted)
        return notTaken(result);
    Answer answer;
    const int stands = outcome.state == VelnoTillState_Closed ? 0 : int(OrderStands) + outcome.state;
    answer.code = result == VelnoTillResult_Interrupted ? int(Interrupted) : stands;
    answer.result = velnotill_state_name(outcome.state);
    answer.text = messageOf(session, outcome);
    answer.values.insert(u"order"_s, orderAsJson(till, key));
    return answer;
}

/** The key that was given, or one that nobody else has. */
QByteArray keyOf(const Arguments &arguments)
{
    if (arguments.has(Kinds::key))
        return arguments.value(Kinds::key).toUtf8();
    const QByteArray key = QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
    // In front of everything: whoever knows it can hand the same over again.
    std::fprintf(stderr, "key: %s\n", key.constData());
    return key;
}

QString userName()
{
    const passwd *const user = getpwuid(getuid());
    return user ? QString::fromLocal8Bit(user->pw_name) : u"user %1"_s.arg(getuid());
}

struct Found
{
    QByteArray key;
    VelnoTillOutcome outcome;
};

QList<Found> ordersOf(VelnoTill *till)
{
    QList<Found> found;
    velnotill_list(
        till, VELNOTILL_ALL_STATES,
        [](const char *key, const VelnoTillOutcome *outcome, void *list) {
            static_cast<QList<Found> *>(list)->append({key, *outcome});
        },
        &found);
    return found;
}

/** "sale 4711: receipt, closed: Receipt 1 of Z 12 is closed ...", the message's first line. */
QString lineOf(Session &session, const Found &found)
{
    return u"%1: %2, %3: %4"_s.arg(QString::fromUtf8(found.key),
                                   QLatin1StringView(velnotill_kind_name(found.outcome.kind)),
                                   QLatin1StringView(velnotill_state_name(found.outcome.state)),
                                   messageOf(session, found.outcome).section(u'\n', 0, 0));
}

Answer listed(Session &session, VelnoTill *till)
{
    Answer answer;
    QStringList lines;
    QJsonArray orders;
    for (const Found &found : ordersOf(till)) {
        lines << lineOf(session, found);
        orders << orderAsJson(till, found.key);
    }
    answer.text = lines.isEmpty() ? Spoken::tr("no receipts") : lines.join(u'\n');
    answer.values.insert(u"orders"_s, orders);
    return answer;
}

QString historyText(const QJsonObject &order)
{
    QStringList lines;
    for (const auto &value : order.value(u"history"_s).toArray()) {
        const QJsonObject event = value.toObject();
        const QString person = event.value(u"person"_s).toString();
        lines << u"  %1 %2: %3%4"_s.arg(event.value(u"time"_s).toString(), event.value(u"state"_s).toString(),
                                        event.value(u"text"_s).toString(),
                                        person.isEmpty() ? QString() : u" (%1)"_s.arg(person));
    }
    return lines.join(u'\n');
}

/** One order with its history; the command is done whatever its state. */
Answer shown(Session &session, VelnoTill *till, const QByteArray &key)
{
    VelnoTillOutcome outcome = emptyOutcome();
    const int result = velnotill_find(till, key.constData(), &outcome);
    if (result != VelnoTillResult_Done)
        return notTaken(result);
    Answer answer = standing(session, till, key, result, outcome);
    answer.code = 0;
    answer.text += u'\n' + historyText(answer.values.value(u"order"_s).toObject());
    return answer;
}

} // namespace

Answer receipt(Session &session, const Arguments &arguments)
{
    const QString &path = arguments.value(Kinds::receiptFile);
    QByteArray json;
    if (const QString problem = readFile(path, &json); !problem.isEmpty())
        return wrongContent(problem);
    if (velnotill_check_receipt(json.constData()) != VelnoTillResult_Done)
        return wrongContent(u"%1:\n%2"_s.arg(path, QString::fromUtf8(velnotill_problem())));
    LedgerTill till(session);
    if (const int result = till.open(); result != VelnoTillResult_Done)
        return notTaken(result);
    const QByteArray key = keyOf(arguments);
    VelnoTillOutcome outcome = emptyOutcome();
    const int result = velnotill_sell(till, key.constData(), json.constData(), &outcome);
    return standing(session, till, key, result, outcome);
}

Answer receipts(Session &session, const Arguments &arguments)
{
    LedgerTill till(session);
    if (const int result = till.open(); result != VelnoTillResult_Done)
        return notTaken(result);
    return arguments.has(Kinds::key) ? shown(session, till, arguments.value(Kinds::key).toUtf8())
                                     : listed(session, till);
}

Answer answerReceipt(Session &session, const Arguments &arguments)
{
    LedgerTill till(session);
    if (const int result = till.open(); result != VelnoTillResult_Done)
        return notTaken(result);
    const QByteArray key = arguments.value(Kinds::key).toUtf8();
    const QByteArray person = arguments.value(Kinds::person, userName()).toUtf8();
    VelnoTillOutcome outcome = emptyOutcome();
    int result =
        velnotill_answer(till, key.constData(), arguments.value(Kinds::answer), person.constData(), &outcome);
    if (result != VelnoTillResult_Done)
        return notTaken(result);
    const int worked = velnotill_work(till);
    if (worked == VelnoTillResult_LedgerFailed)
        return notTaken(worked);
    result = velnotill_find(till, key.constData(), &outcome);
    const bool isCut = result == VelnoTillResult_Done && worked == VelnoTillResult_Interrupted;
    return standing(session, till, key, isCut ? worked : result, outcome);
}

} // namespace VelnoCtl
