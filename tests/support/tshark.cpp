// SPDX-License-Identifier: Apache-2.0

#include "tests/support/tshark.h"

#include "tests/support/program_run.h"

#include <QFile>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

} // namespace

Tshark::Tshark(const QByteArray &capture, const QByteArray &keyLog)
{
    const QString path = m_folder.filePath(u"capture"_s);
    write(path, capture);
    m_options << u"-X"_s << u"lua_script:"_s + QString::fromUtf8(VELNO_DISSECTOR) << u"-r"_s << path;
    if (keyLog.isEmpty())
        return;
    const QString keys = m_folder.filePath(u"keys"_s);
    write(keys, keyLog);
    m_options << u"-o"_s << u"velno.key_log:"_s + keys;
}

QByteArrayList Tshark::fields(const QString &filter, const QStringList &names) const
{
    QStringList arguments{u"-Y"_s, filter, u"-T"_s, u"fields"_s, u"-E"_s, u"separator=|"_s};
    for (const QString &name : names)
        arguments << u"-e"_s << name;
    QByteArrayList lines = run(arguments).split('\n');
    lines.removeAll({});
    return lines;
}

QByteArray Tshark::inWords(const QString &filter) const
{
    return run(filter.isEmpty() ? QStringList{u"-V"_s} : QStringList{u"-V"_s, u"-Y"_s, filter});
}

QByteArray Tshark::run(const QStringList &arguments) const
{
    const Outcome outcome =
        outcomeOf(QString::fromUtf8(VELNO_TSHARK), m_options + arguments, [this](QProcess &process) {
            QProcessEnvironment environment = process.processEnvironment();
            environment.insert(u"HOME"_s, m_folder.path());
            environment.insert(u"XDG_CONFIG_HOME"_s, m_folder.path());
            environment.insert(u"TZ"_s, u"UTC"_s);
            process.setProcessEnvironment(environment);
        });
    const bool failed =
        outcome.exitCode != 0 || outcome.errors.contains("Lua") || outcome.output.contains("Lua Error");
    return failed ? "failed: " + outcome.errors + outcome.output : outcome.output;
}

} // namespace TestSupport
