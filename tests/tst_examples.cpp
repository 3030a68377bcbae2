#include "tests/simulated_register.h"
#include "tests/test_support.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;
using TestSupport::freePort;

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

const QString serialNo = QString::fromLatin1(SimulatedRegister::serial);

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

} // namespace

void TestExamples::stateIsRead()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--state"_s, u"1"_s, u"--z"_s, u"17"_s});
    const Outcome outcome = run({serialNo, u"127.0.0.1"_s, QString::number(port)});
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.output, QByteArray("Register UB1234567890 is in state 1, Z number 17.\n"));
    QCOMPARE(outcome.exitCode, 0);
}

void TestExamples::failureIsExplained()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--fault"_s, u"result-code=03"_s});
    const Outcome refused = run({serialNo, u"127.0.0.1"_s, QString::number(port)});
    QVERIFY2(refused.errors.startsWith("Connecting failed: "), refused.errors.constData());
    QCOMPARE(refused.errors.count('\n'), 4); // the name, three lines about the code
    QCOMPARE(refused.output, QByteArray());
    QCOMPARE(refused.exitCode, 10);

    const Outcome wrong = run({u"UB123"_s, u"127.0.0.1"_s, QString::number(port)});
    QVERIFY2(wrong.errors.startsWith("Connecting failed: "), wrong.errors.constData());
    QCOMPARE(wrong.errors.count('\n'), 5); // and one about the argument
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
