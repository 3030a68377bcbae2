// SPDX-License-Identifier: Apache-2.0

#include "tests/support/recorded_sale.h"

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/encoding/file.h"
#include "tests/support/ends_with_test.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"
#include "tests/support/troubled_line.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

constexpr int longestWait = 60'000; // ms, for a machine under load and sanitizers

/** Runs it to its end while this thread's events go on. */
void run(QProcess &process, const QString &program, const QStringList &arguments)
{
    QEventLoop loop;
    QTimer limit;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    QObject::connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
    process.setChildProcessModifier(endsWithTest());
    limit.start(longestWait);
    process.start(program, arguments);
    loop.exec();
}

} // namespace

Recording record(const QStringList &commands)
{
    Recording recording;
    const QTemporaryDir folder;
    const QString keys = folder.filePath(u"keys"_s);
    const quint16 port = freePort();
    TroubledLine line(port);
    const qint64 begin = QDateTime::currentMSecsSinceEpoch() * 1000;
    QElapsedTimer clock;
    clock.start();
    line.heard = [&](int connection, bool fromRegister, const QByteArray &piece) {
        recording.pieces << Piece{connection, fromRegister, piece, begin + clock.nsecsElapsed() / 1000};
    };
    SimulatedRegister reg(line.port(), {u"--key-log"_s, keys});
    const QStringList target{u"--serial"_s, QLatin1StringView(SimulatedRegister::serial),
                             u"--listen"_s, u"127.0.0.1:%1"_s.arg(port),
                             u"--app"_s,    u"5"_s};
    QProcess client;
    run(client, QString::fromUtf8(VELNO_VELNOCTL), target + commands);
    recording.exitCode = client.state() == QProcess::NotRunning ? client.exitCode() : -1;
    recording.errors = client.readAllStandardError();
    Velno::readData(keys, &recording.keyLog);
    QFile program(QString::fromUtf8(VELNO_VELNOCTL));
    if (program.open(QIODevice::ReadOnly))
        recording.applicationHash = Velno::sha256Sum(program);
    return recording;
}

QStringList smallSale()
{
    return {u"start-sale"_s, u"item"_s,  u"12.50"_s,    u"Ekmek"_s, u"quantity=2"_s, u"pay"_s,
            u"cash"_s,       u"50.00"_s, u"end-sale"_s, u"cash"_s,  u"state"_s};
}

} // namespace TestSupport
