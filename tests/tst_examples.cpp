#include "tests/library_test.h"
#include "tests/test_support.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** The programs of examples/, built against the installed library, with a register at the other end. */
class TestExamples : public QObject
{
    Q_OBJECT

private slots:
    void stateIsRead();
    void failureIsExplained();
    void usageIsShown();
};

namespace {

struct Outcome
{
    int exitCode;
    QByteArray output;
    QByteArray errors;
};

Outcome run(const QStringList &arguments)
{
    QProcess program;
    program.start(QStringLiteral(VELNO_EXAMPLES "/register_state"), arguments);
    if (!program.waitForFinished() || program.exitStatus() != QProcess::NormalExit)
        return {-1, {}, program.errorString().toUtf8()};
    return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
}

/** Answers the first two commands of a visit. */
void answerInTurn(HandMadeDevice &device, const QByteArray &first, const QByteArray &second)
{
    device.setAnswer([&device, first, second, count = 0](const QByteArray &) mutable {
        return QList{HandMadeDevice::framed(device.sealed(count++ == 0 ? first : second))};
    });
}

} // namespace

void TestExamples::stateIsRead()
{
    HandMadeDevice device;
    const quint16 port = freePort();
    answerInTurn(device, plain(1, QVector<int>()), plain(true, 17));
    device.pairAndServe(port);
    const Outcome outcome = run({QString::fromLatin1(serial), u"127.0.0.1"_s, QString::number(port)});
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.output, QByteArray("Register UB1234567890 is in state 1, Z number 17.\n"));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(device.commands(), (QList{plain(0), plain(12)}));
}

void TestExamples::failureIsExplained()
{
    HandMadeDevice device;
    const quint16 port = freePort();
    answerInTurn(device, plain(1, QVector<int>()), plain(false, 17));
    device.pairAndServe(port);
    const Outcome refused = run({QString::fromLatin1(serial), u"127.0.0.1"_s, QString::number(port)});
    QVERIFY2(refused.errors.startsWith("Reading the Z number failed: "), refused.errors.constData());
    QCOMPARE(refused.output, QByteArray());
    QCOMPARE(refused.exitCode, 8);

    const Outcome wrong = run({u"UB123"_s, u"127.0.0.1"_s, QString::number(port)});
    QVERIFY2(wrong.errors.startsWith("Connecting failed: "), wrong.errors.constData());
    QCOMPARE(wrong.errors.count('\n'), 5); // the name, three lines about the code, one about the argument
    QCOMPARE(wrong.exitCode, 4);
}

void TestExamples::usageIsShown()
{
    const Outcome outcome = run({});
    QVERIFY(outcome.errors.startsWith("Usage: "));
    QCOMPARE(outcome.exitCode, 64);
}

QTEST_GUILESS_MAIN(TestExamples)
#include "tst_examples.moc"
