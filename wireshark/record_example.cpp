// SPDX-License-Identifier: Apache-2.0

#include "tests/support/recorded_sale.h"

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>

#include <cstdio>

/** Records the capture of docs/wire.md anew, with the keys that go with it. */

using namespace Qt::StringLiterals;

namespace {

bool write(const QString &path, const QByteArray &content)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("Usage: velno_record_example FOLDER\n", stderr);
        return 64;
    }
    const TestSupport::Recording sale = TestSupport::record(TestSupport::smallSale());
    if (sale.exitCode != 0) {
        std::fprintf(stderr, "velno_record_example: the sale failed: %s", sale.errors.constData());
        return 1;
    }
    const QDir folder(arguments[1]);
    const bool written = write(folder.filePath(u"sale.pcap"_s), TestSupport::captureOf(sale.pieces)) &&
                         write(folder.filePath(u"sale.keys"_s), sale.keyLog);
    if (!written)
        std::fprintf(stderr, "velno_record_example: %s cannot be written to\n", qPrintable(arguments[1]));
    return written ? 0 : 1;
}
