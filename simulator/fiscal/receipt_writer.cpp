// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/receipt_writer.h"

#include "simulator/common/private_file.h"

#include <QDir>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr int numberWidth = 6;

/** The highest number that an earlier run has left there. */
int lastNumber(const QString &folder)
{
    if (folder.isEmpty())
        return 0;
    const QStringList files = QDir(folder).entryList({u"*.txt"_s}, QDir::Files, QDir::Name);
    int last = 0;
    for (const QString &file : files)
        last = qMax(last, file.left(numberWidth).toInt());
    return last;
}

} // namespace

ReceiptWriter::ReceiptWriter(const QString &folder, bool show)
    : m_folder(folder)
    , m_show(show)
    , m_prints(lastNumber(folder))
{
}

QString ReceiptWriter::write(const Print &print)
{
    const QByteArray text = (print.lines.join(u'\n') + u'\n').toUtf8();
    if (m_show) {
        std::fwrite(text.constData(), 1, size_t(text.size()), stderr);
        std::fputs("\n", stderr);
    }
    if (m_folder.isEmpty())
        return {};
    QFile file(nextFile(print));
    while (file.exists()) // another register writes to the same folder
        file.setFileName(nextFile(print));
    if (!createPrivate(file))
        return u"%1 cannot be written: %2"_s.arg(file.fileName(), file.errorString());
    if (file.write(text) == text.size() && file.flush())
        return {};
    const QString problem = u"%1 cannot be written: %2"_s.arg(file.fileName(), file.errorString());
    QFile::remove(file.fileName()); // half a print is none
    return problem;
}

QString ReceiptWriter::nextFile(const Print &print)
{
    const QString number = QString::number(++m_prints).rightJustified(numberWidth, u'0');
    const QString name =
        u"%1/%2-%3-Z%4"_s.arg(m_folder, number, QLatin1StringView(print.kind), QString::number(print.z));
    return name + (print.number == 0 ? QString() : u'-' + QString::number(print.number)) + u".txt"_s;
}

} // namespace Simulator
