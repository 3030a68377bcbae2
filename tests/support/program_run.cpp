// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"

#include "tests/support/ends_with_test.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

constexpr int longestWait = 60'000; // ms, for a machine under load and sanitizers

} // namespace

Outcome outcomeOf(QProcess &process)
{
    const bool ended = process.waitForFinished(longestWait) && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

Outcome outcomeOf(const QString &program, const QStringList &arguments,
                  const std::function<void(QProcess &)> &prepare)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString &name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s})
        environment.remove(name);
    process.setProcessEnvironment(environment);
    process.setChildProcessModifier(endsWithTest());
    if (prepare)
        prepare(process);
    process.start(program, arguments);
    return outcomeOf(process);
}

void checkWrongUsage(const QString &program, const QStringList &arguments, const QByteArray &message)
{
    const Outcome refused = outcomeOf(program, arguments);
    QCOMPARE(refused.exitCode, 64);
    QVERIFY2(refused.errors.contains(message), refused.errors);
    QCOMPARE(refused.output, QByteArray());
}

QString faultsInManual(const QString &path, const QString &row)
{
    QFile manual(path);
    if (!manual.open(QIODevice::ReadOnly))
        return {};
    const QString section = QString::fromUtf8(manual.readAll()).section(u"## Faults"_s, 1);
    QString listed;
    auto match = QRegularExpression(row, QRegularExpression::MultilineOption).globalMatch(section);
    while (match.hasNext()) {
        const auto found = match.next();
        listed += u"  "_s + found.captured(1).leftJustified(24) + found.captured(2) + u'\n';
    }
    return listed;
}

} // namespace TestSupport
