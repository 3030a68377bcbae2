// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_run.h"
#include "tests/support/simulated_register.h"
#include "tests/support/simulated_relay.h"
#include "tests/support/symbol_names.h"
#include "tests/support/velnoctl_client.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** docs/codes.md: it has every number of velnoext.h, and what it says of provoking one does that. */
class TestCodesPage : public QObject
{
    Q_OBJECT

private slots:
    void everyNumberIsThere_data();
    void everyNumberIsThere();
    void bothLanguagesHaveTheSame();
    void itIsProvokedSo_data();
    void itIsProvokedSo();
};

namespace {

QByteArray page(const char *name)
{
    return fileText(VELNO_SOURCE "/docs", name);
}

/** The programs that a way names, each with its options. */
QStringList stepsOf(const QString &way)
{
    return matches(way.toUtf8(), "`([^`]+)`");
}

QStringList optionsOf(const QStringList &steps, const QString &program)
{
    for (const QString &step : steps)
        if (step.section(u' ', 0, 0) == program)
            return step.split(u' ').sliced(1);
    return {};
}

bool names(const QStringList &steps, const QString &program)
{
    return !steps.filter(QRegularExpression(u"^%1( |$)"_s.arg(program))).isEmpty();
}

/** A serial number, a place and an application, unless the way names a place of its own. */
QStringList askedOf(const QStringList &words, quint16 port)
{
    QStringList options{u"--json"_s, u"--serial"_s, u"UB1234567890"_s, u"--app"_s, u"5"_s};
    if (!words.contains(u"--listen"_s) && !words.contains(u"--relay"_s))
        options << u"--listen"_s << u"127.0.0.1:%1"_s.arg(port);
    return options + words;
}

/** What the last command came to. */
QJsonObject outcome(const QStringList &arguments)
{
    const QByteArray output = outcomeOf(Client::program(), arguments).output.trimmed();
    return object(output.sliced(output.lastIndexOf('\n') + 1));
}

} // namespace

void TestCodesPage::everyNumberIsThere_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("row");
    QTest::newRow("results") << u"VelnoResult_\\w+ = (\\d+)"_s << u"### %1: "_s;
    QTest::newRow("causes") << u"VelnoCause_\\w+ = ([1-9]\\d*)"_s << u"### %1: "_s;
    QTest::newRow("details") << u"VelnoDetail_\\w+ = (0x\\w+)"_s << u"| %1 | "_s;
}

void TestCodesPage::everyNumberIsThere()
{
    QFETCH(const QString, expression);
    QFETCH(const QString, row);
    const QByteArray header = fileText(VELNO_SOURCE "/ExtDevice/velnoext", "velnoext.h");
    const QStringList numbers = matches(header, qPrintable(expression));
    QVERIFY(numbers.size() > 10);
    const QString text = QString::fromUtf8(page("codes.md"));
    for (const QString &number : numbers)
        QVERIFY2(text.contains(row.arg(number)), qPrintable(number));
}

void TestCodesPage::bothLanguagesHaveTheSame()
{
    const char *const pattern = "^(### .*|\\| 0x\\w+ )";
    QCOMPARE(matches(page("tr/codes.md"), pattern), matches(page("codes.md"), pattern));
    const char *const ways = "^- \\*\\*(?:Provoke it|Denemek i\\S+in):\\*\\* (.*)";
    QStringList turkish = matches(page("tr/codes.md"), ways);
    turkish.replaceInStrings(u"ardından"_s, u"then"_s);
    QCOMPARE(turkish, matches(page("codes.md"), ways));
}

void TestCodesPage::itIsProvokedSo_data()
{
    QTest::addColumn<bool>("isCause");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("way");
    const QString text = QString::fromUtf8(page("codes.md"));
    int ways = 0;
    for (const QString &entry : text.split("\n### "_L1).sliced(1)) {
        const QString way = entry.section("**Provoke it:** "_L1, 1).section(u'\n', 0, 0);
        if (way.isEmpty())
            continue;
        const int number = entry.section(u':', 0, 0).toInt();
        QTest::newRow(qPrintable(entry.section(u'\n', 0, 0))) << (number > 13) << number << way;
        ++ways;
    }
    QVERIFY(ways > 40);
}

void TestCodesPage::itIsProvokedSo()
{
    QFETCH(const bool, isCause);
    QFETCH(const int, number);
    QFETCH(const QString, way);
    const QStringList steps = stepsOf(way);
    std::unique_ptr<SimulatedRelay> relay;
    std::unique_ptr<SimulatedRegister> reg;
    const quint16 port = freePort();
    if (names(steps, u"velno-relay"_s))
        relay = std::make_unique<SimulatedRelay>(
            QStringList{u"--app-ports"_s, u"50900,50902"_s, u"--register-port"_s, u"50910"_s} +
            optionsOf(steps, u"velno-relay"_s));
    if (names(steps, u"velno-register"_s)) {
        const QStringList options = optionsOf(steps, u"velno-register"_s);
        reg = relay ? std::make_unique<SimulatedRegister>(options +
                                                          QStringList{u"--relay"_s, u"127.0.0.1:50910"_s})
                    : std::make_unique<SimulatedRegister>(port, options);
        QVERIFY(!relay || !relay->waitFor(u"waiting"_s).isEmpty());
    }
    const QJsonObject ended = outcome(askedOf(optionsOf(steps, u"velnoctl"_s), port));
    QCOMPARE(ended.value(isCause ? u"causeCode"_s : u"code"_s).toInt(), number);
}

QTEST_GUILESS_MAIN(TestCodesPage)
#include "tst_codes_page.moc"
