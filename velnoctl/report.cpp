// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/report.h"

#include "translations/spoken.h"
#include "velnoctl/exit_status.h"
#include "velnoctl/explanation.h"
#include "velnoext.h"

#include <QJsonDocument>

#include <cerrno>
#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

/** In front of a message about a line of a script. */
QString whereOf(const Step &step)
{
    return step.where.isEmpty() ? QString() : step.where + u": "_s;
}

} // namespace

void complain(const QString &text)
{
    std::fputs(u"velnoctl: %1\n"_s.arg(text).toUtf8().constData(), stderr);
}

void Report::write(const QString &text)
{
    if (m_isLost)
        return;
    m_isLost = std::fputs((text + u'\n').toUtf8().constData(), stdout) == EOF || std::fflush(stdout) == EOF;
    if (m_isLost)
        complain(Spoken::tr("the result cannot be written: ") + QString::fromLocal8Bit(std::strerror(errno)));
}

void Report::write(const QJsonObject &object)
{
    write(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
}

void Report::answer(const Step &step, const Answer &answer)
{
    const QString command = QLatin1StringView(step.command->name);
    if (answer.isTold)
        return;
    if (answer.code == WrongUsage)
        return wrongUsage(whereOf(step) + command + u": "_s + answer.text);
    if (answer.code != 0)
        return answer.result ? otherEnd(step, answer) : failure(step, command, command, answer);
    if (!m_isJson) {
        if (!answer.text.isEmpty())
            write(answer.text);
        return;
    }
    QJsonObject object = answer.values;
    object.insert(u"command"_s, command);
    object.insert(u"code"_s, 0);
    object.insert(u"result"_s, QString::fromUtf8(velnoext_result_name(0)));
    write(object);
}

void Report::connectFailed(const Step &step, const QString &target, const Answer &failed)
{
    failure(step, Spoken::tr("connecting %1").arg(target), u"connect"_s, failed);
}

void Report::interrupted(const Step &step, const QString &known)
{
    const QString command = QLatin1StringView(step.command->name);
    const QString sentence = Spoken::tr("interrupted %1").arg(known);
    complain(whereOf(step) + command + u": "_s + sentence);
    if (!m_isJson)
        return;
    QJsonObject object{{u"command"_s, command},
                       {u"code"_s, int(Interrupted)},
                       {u"result"_s, u"interrupted"_s},
                       {u"sentence"_s, sentence}};
    if (!step.where.isEmpty())
        object.insert(u"where"_s, step.where);
    write(object);
}

void Report::interruptedIdle()
{
    complain(Spoken::tr("interrupted; nothing was under way"));
}

void Report::details(const QStringList &lines)
{
    for (const QString &line : lines)
        std::fputs(u"  %1\n"_s.arg(line).toUtf8().constData(), stderr);
}

void Report::otherEnd(const Step &step, const Answer &answer)
{
    const QString command = QLatin1StringView(step.command->name);
    complain(whereOf(step) + command + u": "_s + answer.text);
    if (!m_isJson)
        return;
    QJsonObject object = answer.values;
    object.insert(u"command"_s, command);
    object.insert(u"code"_s, answer.code);
    object.insert(u"result"_s, QLatin1StringView(answer.result));
    object.insert(u"sentence"_s, answer.text);
    if (!step.where.isEmpty())
        object.insert(u"where"_s, step.where);
    write(object);
}

void Report::failure(const Step &step, const QString &what, const QString &command, const Answer &answer)
{
    const QString where = whereOf(step);
    const Explanation explanation(answer.code, answer.cause, answer.detail);
    complain(where + what + u": "_s + explanation.forPeople());
    if (!answer.text.isEmpty())
        complain(where + what + Spoken::tr(": it said all the same: ") + answer.text);
    if (!m_isJson)
        return;
    QJsonObject object = explanation.asJson();
    for (auto value = answer.values.constBegin(); value != answer.values.constEnd(); ++value)
        object.insert(value.key(), value.value());
    object.insert(u"command"_s, command);
    if (!step.where.isEmpty())
        object.insert(u"where"_s, step.where);
    write(object);
}

void Report::wrongUsage(const QString &problem)
{
    complain(problem);
    const QString help = m_isInShell ? Spoken::tr("help shows all commands.\n")
                                     : Spoken::tr("velnoctl --help shows all commands and options.\n");
    std::fputs(help.toUtf8().constData(), stderr);
    if (m_isJson)
        write(QJsonObject{
            {u"code"_s, int(WrongUsage)}, {u"result"_s, u"wrong-usage"_s}, {u"sentence"_s, problem}});
}

} // namespace VelnoCtl
