#include "velnoctl/report.h"

#include "velnoctl/exit_status.h"
#include "velnoctl/explanation.h"

#include <QJsonDocument>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

/** Standard output under another descriptor; its own number leads to standard error from now on. */
FILE *takeStandardOutput()
{
    const int copy = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return copy < 0 ? nullptr : fdopen(copy, "w"); // null also when it cannot be written to
}

} // namespace

void complain(const QString &text)
{
    std::fputs(u"velnoctl: %1\n"_s.arg(text).toUtf8().constData(), stderr);
}

Report::Report(bool isJson)
    : m_output(takeStandardOutput())
    , m_isJson(isJson)
{
}

void Report::write(const QString &text)
{
    if (m_isLost)
        return;
    m_isLost = !m_output || std::fputs((text + u'\n').toUtf8().constData(), m_output.get()) == EOF ||
               std::fflush(m_output.get()) == EOF;
    if (m_isLost)
        complain(u"the result cannot be written: "_s + QString::fromLocal8Bit(std::strerror(errno)));
}

void Report::write(const QJsonObject &object)
{
    write(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
}

void Report::answer(const Step &step, const Answer &answer)
{
    const QString command = QLatin1StringView(step.command->name);
    if (answer.isTold || answer.code == Interrupted)
        return;
    if (answer.code == WrongUsage)
        return wrongUsage((step.where.isEmpty() ? QString() : step.where + u": "_s) + command + u": "_s +
                          answer.text);
    if (answer.code != 0)
        return failure(step, command, command, answer);
    if (!m_isJson)
        return answer.text.isEmpty() ? void() : write(answer.text);
    QJsonObject object = answer.values;
    object.insert(u"command"_s, command);
    object.insert(u"code"_s, 0);
    object.insert(u"result"_s, Explanation(0, 0).name);
    write(object);
}

void Report::connectFailed(const Step &step, const QString &target, int code, int detail)
{
    if (code == Interrupted)
        return;
    Answer answer;
    answer.code = code;
    answer.detail = detail;
    failure(step, u"connecting "_s + target, u"connect"_s, answer);
}

void Report::failure(const Step &step, const QString &what, const QString &command, const Answer &answer)
{
    const QString where = step.where.isEmpty() ? QString() : step.where + u": "_s;
    const Explanation explanation(answer.code, answer.detail);
    complain(where + what + u": "_s + explanation.forPeople());
    if (!answer.text.isEmpty())
        complain(where + what + u": it said all the same: "_s + answer.text);
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
    std::fputs(m_isInShell ? "help shows all commands.\n"
                           : "velnoctl --help shows all commands and options.\n",
               stderr);
    if (m_isJson)
        write(QJsonObject{
            {u"code"_s, int(WrongUsage)}, {u"result"_s, u"wrong-usage"_s}, {u"sentence"_s, problem}});
}

} // namespace VelnoCtl
