// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/event_writer.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <utility>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

QByteArray jsonValue(const QVariant &value)
{
    const QByteArray array =
        QJsonDocument(QJsonArray{QJsonValue::fromVariant(value)}).toJson(QJsonDocument::Compact);
    return array.sliced(1, array.size() - 2);
}

/** UTC, which is the same on every computer and sorts as text. */
QByteArray jsonBeginning(const char *event)
{
    const QByteArray time = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toLatin1();
    return R"({"event":")" + QByteArray(event) + R"(","time":")" + time + '"';
}

QByteArray plainValue(const QVariant &value)
{
    if (value.typeId() != QMetaType::QStringList)
        return value.toString().toUtf8();
    const QStringList list = value.toStringList();
    return list.isEmpty() ? QByteArray("none") : list.join(u' ').toUtf8();
}

} // namespace

QString printable(const QByteArray &bytes)
{
    QString text;
    for (const char byte : bytes) {
        const bool visible = byte > ' ' && byte <= '~' && byte != '\\';
        text +=
            visible ? QString(QLatin1Char(byte)) : u"\\x%1"_s.arg(uint(uchar(byte)), 2, 16, QLatin1Char('0'));
    }
    return text;
}

void EventWriter::write(const char *event, EventFields fields) const
{
    static constexpr char serial[] = "serial";
    const auto isSerial = [](const auto &field) { return qstrcmp(field.first, serial) == 0; };
    if (!m_serial.isEmpty() && std::ranges::none_of(fields, isSerial))
        fields.prepend({serial, QString::fromLatin1(m_serial)});
    QByteArray line = m_json ? jsonBeginning(event) : QByteArray(event);
    for (const auto &[name, value] : std::as_const(fields))
        line += m_json ? ",\"" + QByteArray(name) + "\":" + jsonValue(value) : ' ' + plainValue(value);
    line += m_json ? "}\n" : "\n";
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fflush(stdout);
}

LogsToStandardError::LogsToStandardError()
    : m_before(std::cout.rdbuf(std::cerr.rdbuf()))
{
}

LogsToStandardError::~LogsToStandardError()
{
    std::cout.rdbuf(m_before);
}

} // namespace Simulator
