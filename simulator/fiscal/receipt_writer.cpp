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
    const QStringList files = QDir(folder).entryList({u"*.txt"_s, u"*.png"_s}, QDir::Files, QDir::Name);
    int last = 0;
    for (const QString &file : files)
        last = qMax(last, file.left(numberWidth).toInt());
    return last;
}

/** @return an empty text, or why the file is not there */
QString writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!createPrivate(file))
        return u"%1 cannot be written: %2"_s.arg(path, file.errorString());
    if (file.write(content) == content.size() && file.flush())
        return {};
    const QString problem = u"%1 cannot be written: %2"_s.arg(path, file.errorString());
    QFile::remove(path); // half a print is none
    return problem;
}

} // namespace

ReceiptWriter::ReceiptWriter(const ReceiptFiles &files)
    : m_files(files)
    , m_prints(lastNumber(files.folder))
{
}

QString ReceiptWriter::write(const Print &print)
{
    if (!m_files.show && m_files.folder.isEmpty())
        return {};
    const QStringList lines = print.lines();
    const QByteArray text = (lines.join(u'\n') + u'\n').toUtf8();
    if (m_files.show) {
        std::fwrite(text.constData(), 1, size_t(text.size()), stderr);
        std::fputs("\n", stderr);
    }
    if (m_files.folder.isEmpty())
        return {};
    QString name = nextName(print);
    while (QFile::exists(name + u".txt"_s) || QFile::exists(name + u".png"_s)) // another register's
        name = nextName(print);
    QString problem = m_files.asText ? writeFile(name + u".txt"_s, text) : QString();
    if (problem.isEmpty() && m_files.draw)
        problem = writeFile(name + u".png"_s, m_files.draw(lines));
    return problem;
}

QString ReceiptWriter::nextName(const Print &print)
{
    const QString number = QString::number(++m_prints).rightJustified(numberWidth, u'0');
    const QString name = u"%1/%2-%3-Z%4"_s.arg(m_files.folder, number, QLatin1StringView(print.kind),
                                               QString::number(print.z));
    return print.number == 0 ? name : name + u'-' + QString::number(print.number);
}

} // namespace Simulator
