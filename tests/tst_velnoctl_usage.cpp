// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/trust_anchors.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/velnoctl_client.h"

#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** What velnoctl takes for a command line, and what it explains. */
class TestVelnoctlUsage : public QObject
{
    Q_OBJECT

private slots:
    void wrongUsageSendsNothing_data();
    void wrongUsageSendsNothing();
    void wrongUsageAsJson();
    void wrongArgumentsSendNothing_data();
    void wrongArgumentsSendNothing();
    void wrongArgumentsInAScriptSendNothing();
    void explainsEveryCode_data();
    void explainsEveryCode();
    void explainsDetails();
    void explainsCauses_data();
    void explainsCauses();
    void explainsInTurkish();
    void helpFitsAScreen();
    void helpAndVersionNameTheAnchors_data();
    void helpAndVersionNameTheAnchors();
    void helpOfOneCommand();
    void everyCommandHasHelpWhoseExampleIsUnderstood();
};

void TestVelnoctlUsage::wrongUsageSendsNothing_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("complaint");

    const auto row = [](const char *name, const char *arguments, const char *complaint) {
        QTest::newRow(name) << QString::fromLatin1(arguments).split(u' ', Qt::SkipEmptyParts)
                            << QByteArray(complaint);
    };
    const char *const listen = "--serial UB1234567890 --app 5 --listen";
    const auto place = [&row, listen](const char *name, const char *where) {
        row(name, qPrintable(u"%1 %2 state"_s.arg(QLatin1String(listen), QLatin1String(where))),
            "accepted is a local IPv4 address and a port");
    };
    row("nothing", "", "no command is given\nvelnoctl --help shows all commands");
    row("no command", "--serial UB1234567890 --listen 127.0.0.1:PORT --app 5", "no command is given");
    row("unknown command", "TARGET stat",
        "\"stat\" is no command; did you mean \"state\"?\nvelnoctl --help shows all commands and options.\n");
    row("letters swapped", "TARGET lgoin", "\"lgoin\" is no command; did you mean \"login\"?\n");
    row("letter too many", "TARGET ppaper", "\"ppaper\" is no command; did you mean \"paper\"?\n");
    row("written otherwise", "TARGET Start_Sale",
        "\"Start_Sale\" is no command; did you mean \"start-sale\"?\n");
    row("as near to two", "TARGET gext", "did you mean \"text\" or \"get\"?\n");
    row("the beginning of two", "TARGET start", "did you mean \"start-sale\" or \"start-invoice-sale\"?\n");
    row("near to none", "TARGET refund", "\"refund\" is no command\n");
    row("one wrong letter is all of it", "TARGET y", "\"y\" is no command\n");
    row("second command unknown", "TARGET state stat", "\"stat\" is no command");
    row("command of the shell", "TARGET quit", "quit cannot stand on the command line, only in the shell\n");
    row("argument too many", "TARGET state 5", "\"5\" is no command");
    row("option behind", "TARGET state --json", "\"--json\": options stand in front of the first command");
    row("no file", "TARGET run", "run: FILE is missing; accepted is the path of a file, or - for");
    row("file not there", "TARGET run /nowhere/day.velno", "/nowhere/day.velno: ");
    row("file is a folder", "TARGET run /", "/: ");
    row("no code", "explain", "explain: CODE is missing; accepted is a result code, for example 8");
    row("code is no number", "explain no-paper",
        "explain: \"no-paper\" is no CODE; accepted is a result code");
    row("detail is no number", "explain 4 0xZZ",
        "explain: \"0xZZ\" is no DETAIL; accepted is an error detail");
    row("no such help", "help stat",
        "help: \"stat\" is no COMMAND; accepted is the name of a command; did you mean \"state\"?\n");
    row("unknown option", "--loud state", "\"--loud\" is no option\n");
    row("unknown letter", "-x state", "\"-x\" is no option\n");
    row("misspelt option", "--lisen 127.0.0.1:PORT state",
        "\"--lisen\" is no option; did you mean \"--listen\"?\n");
    row("value missing", "state --serial", "--serial");
    row("no serial", "--listen 127.0.0.1:PORT --app 5 state", "--serial is missing; accepted is exactly 12");
    row("short serial", "--serial UB123456789 --listen 127.0.0.1:PORT --app 5 state",
        "--serial \"UB123456789\": accepted is exactly 12 characters");
    row("long serial", "--serial UB12345678901 --listen 127.0.0.1:PORT --app 5 state",
        "accepted is exactly 12");
    row("no place", "--serial UB1234567890 --app 5 state", "neither --listen nor --relay is given");
    row("two places", "TARGET --relay state", "--relay: accepted is one of --listen and --relay");
    place("no port", "127.0.0.1");
    place("port 0", "127.0.0.1:0");
    place("port 65536", "127.0.0.1:65536");
    place("a name", "localhost:4100");
    place("half an address", "127.0.0:4100");
    place("number above 255", "127.0.0.256:4100");
    place("IPv6, which cannot pair", "[::1]:4100");
    place("IPv6 without brackets", "::1:4100");
    place("IPv4 in brackets", "[127.0.0.1]:4100");
    place("the relay's address", "255.255.255.255:4100");
    row("no app", "--serial UB1234567890 --listen 127.0.0.1:PORT state",
        "--app is missing; accepted is 1 to");
    row("app 0", "TARGET --app 0 state", "--app \"0\": accepted is 1 to 4294967295");
    row("app too large", "TARGET --app 4294967296 state", "--app \"4294967296\": accepted is");
    row("app with a sign", "TARGET --app +5 state", "--app \"+5\": accepted is");
    row("no time for an answer", "TARGET --answer-limit 0 state", "--answer-limit \"0\": accepted is 1 to");
    row("unknown language", "TARGET --language de state", "--language \"de\": accepted is en or tr\n");
    row("timeout in words", "TARGET --timeout soon state", "--timeout \"soon\": accepted is 0 to");
    row("negative timeout", "TARGET --timeout=-1 state", "--timeout \"-1\": accepted is 0 to");
}

void TestVelnoctlUsage::wrongUsageSendsNothing()
{
    QFETCH(QStringList, arguments);
    QFETCH(const QByteArray, complaint);
    Device device;
    arguments.replaceInStrings(u"PORT"_s, QString::number(device.port));
    if (arguments.removeAll(u"TARGET"_s) > 0)
        arguments = target(device.port) + arguments;
    device.meet();
    Client client(arguments);
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(client.err.contains(complaint), client.err.constData());
    QVERIFY(client.err.startsWith("velnoctl: "));
    QVERIFY(client.err.endsWith("velnoctl --help shows all commands and options.\n"));
    QVERIFY(!client.err.contains("waiting"));
    QCOMPARE(client.out, QByteArray());
    QCOMPARE(device.contacts, 0);
}

void TestVelnoctlUsage::wrongUsageAsJson()
{
    Client client({u"--json"_s, u"stat"_s});
    QCOMPARE(client.exitCode(), 64);
    const QJsonObject failure = object(client.out);
    QCOMPARE(failure.value(u"code"_s).toInt(), 64);
    QCOMPARE(failure.value(u"result"_s).toString(), u"wrong-usage"_s);
    QCOMPARE(failure.value(u"sentence"_s).toString(), u"\"stat\" is no command; did you mean \"state\"?"_s);
    QVERIFY(client.err.endsWith("velnoctl --help shows all commands and options.\n"));
}

void TestVelnoctlUsage::wrongArgumentsSendNothing_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("complaint");

    const auto row = [](const char *line, const char *complaint) {
        QTest::newRow(line) << QString::fromUtf8(line) << QByteArray(complaint);
    };
    const auto price = [&row](const char *text) {
        row(qPrintable(u"item %1 Su"_s.arg(QString::fromUtf8(text))),
            qPrintable(u"item: \"%1\" is no PRICE; accepted is lira for one unit, up to two decimals"_s.arg(
                QString::fromUtf8(text))));
    };
    for (const char *const text :
         {"12.505", "1.250,00", "1,250.00", "12.", ".50", "12.5.0", "+5", "1e2", "0x10", "12TL", "--5", "-",
          "92233720368547758.08", "-92233720368547758.09", "99999999999999999999", "12.5 0", "١٢"})
        price(text);
    row("item", "item: PRICE is missing; accepted is lira for one unit");
    row("item 12.50", "item: NAME is missing; accepted is up to 52 bytes of UTF-8");
    row("item 1 ÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇÇa", "is no NAME; accepted is up to 52 bytes");
    row("item 1 Su quantity=1.2505",
        "item: quantity=\"1.2505\" is no QUANTITY; accepted is up to three decimals: 1.250 or 1,250");
    row("item 1 Su quantity=2147483.648", "quantity=\"2147483.648\" is no QUANTITY");
    row("item 1 Su quantity=", "quantity=\"\" is no QUANTITY");
    row("item 1 Su section=129", "section=\"129\" is no SECTION; accepted is a whole number, -128 to 127");
    row("item 1 Su percent=1.5", "percent=\"1.5\" is no PERCENT; accepted is a whole number");
    row("item 1 Su amount=5TL", "amount=\"5TL\" is no AMOUNT; accepted is lira, up to two decimals");
    row("item 1 Su type=kg", "type=\"kg\" is no TYPE; accepted is a whole number; a register knows 0 to 7");
    row("item 1 Su type=1 type=1", "item: \"type=1\": type= is given twice");
    row("item 1 Su colour=red",
        "item: \"colour=red\": accepted are section=SECTION, quantity=QUANTITY, percent=PERCENT, ");
    row("item 1 Su quantiy=2", "type=TYPE; did you mean \"quantity\"?");
    row("item 1 Tam Ekmek", "\"Ekmek\" is no command");
    row("item 1 Su + 1 Su", "\"+\" is no command");
    row("items 1 Su + ", "items: PRICE is missing");
    row("items 1 Su + 1", "items: NAME is missing");
    row("items 1 Su 1 Su", "\"1\" is no command");
    row("items 1 Su + 1 Su + 1 Su + 1 Su + 1 Su + 1 Su + 1 Su + 1 Su + 1 Su + 1 Su + 1 Su",
        "items: \"+\" is one too many; accepted are up to 10");
    row("medical", "medical: AMOUNT is missing");
    row("medical 5 person", "medical: \"person\" is no IDENTITY; accepted is a whole number");
    row("medical 5 -1", "medical: \"-1\" is no IDENTITY");
    row("delete", "delete: LINE is missing; accepted is last, or a whole number");
    row("delete first", "delete: \"first\" is no LINE; accepted is last, or a whole number");
    row("pay", "pay: MEANS is missing; accepted is cash (the key F10) or card (the key F11)");
    row("pay cheque 5", "pay: \"cheque\" is no MEANS; accepted is cash (the key F10) or card");
    row("pay cash", "pay: AMOUNT is missing");
    row("pay cash 5.005", "pay: \"5.005\" is no AMOUNT; accepted is lira, up to two decimals");
    row("end-sale", "end-sale: MEANS is missing");
    row("end-invoice 1", "\"1\" is no command");
    row("end-invoice type=-1", "type=\"-1\" is no INVOICE; accepted is a whole number from 0 on");
    row("end-invoice type=4294967296", "type=\"4294967296\" is no INVOICE");
    row("end-invoice kind=x", "kind=\"x\" is no KIND");
    row("end-invoice id=1234567890123", "id=\"1234567890123\" is no ID; accepted is up to 12 bytes");
    row("end-invoice reference=123456789012345678", "reference=\"123456789012345678\" is no REFERENCE; "
                                                    "accepted is 6 to 16 characters with type 0; up to 17");
    row("end-invoice mode=cash", "mode=\"cash\" is no MODE; accepted is a whole number");
    row("end-invoice flag=1", "flag=\"1\" is no FLAG; accepted is yes or no");
    row("receipt-data 12", "receipt-data: \"12\" is no RECEIPT; accepted is two whole numbers with a slash");
    row("receipt-data 12/", "receipt-data: \"12/\" is no RECEIPT");
    row("receipt-data 12/1/1", "receipt-data: \"12/1/1\" is no RECEIPT");
    row("section", "section: SECTION is missing");
    row("section GIDA", "section: \"GIDA\" is no SECTION");
    row("encoding", "encoding: ENCODING is missing; accepted is the name of an encoding");
    row("text", "text: TEXT is missing");
    row("text EMPTY", "text: \"\" is no TEXT");
    row("text a size=big", "size=\"big\" is no SIZE; accepted is a whole number; a register knows");
    row("text a style=bold", "style=\"bold\" is no STYLE; accepted is a, b or ab");
    row("justified Masa", "justified: RIGHT is missing");
    row("justified a b size=1", "justified: \"size=1\": accepted are style=STYLE");
    row("feed", "feed: COUNT is missing; accepted is a whole number from 0 on");
    row("feed -1", "feed: \"-1\" is no COUNT");
    row("print now", "\"now\" is no command");
    row("print flag=on", "flag=\"on\" is no FLAG");
    row("send", "send: HEX is missing; accepted is two hexadecimal digits for each byte");
    row("send 0", "send: \"0\" is no HEX");
    row("send 0x00", "send: \"0x00\" is no HEX");
    row("get zz", "get: \"zz\" is no HEX");
    for (const char *const alone : {"start-sale", "start-invoice-sale", "sale-state", "cancel", "acquirers",
                                    "sale-acquirers", "x-report", "z-report"})
        row(qPrintable(QLatin1String(alone) + u" 1"_s), "\"1\" is no command");
}

void TestVelnoctlUsage::wrongArgumentsSendNothing()
{
    QFETCH(const QString, line);
    QFETCH(const QByteArray, complaint);
    Device device;
    device.meet();
    Client client(
        target(device.port) + QStringList{u"login"_s} +
        (line.contains("12.5 0"_L1) ? QStringList{u"item"_s, u"12.5 0"_s, u"Su"_s} : wordsOf(line)));
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(client.err.contains(complaint), client.err.constData());
    QCOMPARE(client.out, QByteArray());
    QCOMPARE(device.contacts, 0);
}

void TestVelnoctlUsage::wrongArgumentsInAScriptSendNothing()
{
    const QTemporaryDir folder;
    Device device;
    device.meet();
    const QString file = fileWith(folder, "start-sale\nitem 12.50 Tam Ekmek\n");
    Client client(target(device.port) + QStringList{u"run"_s, file});
    QCOMPARE(client.exitCode(), 64);
    QVERIFY2(client.err.contains(":2: \"Ekmek\" is one word too many: item PRICE NAME [KEY=VALUE]... is the"),
             client.err.constData());
    QCOMPARE(device.contacts, 0);
}

void TestVelnoctlUsage::explainsEveryCode_data()
{
    QTest::addColumn<int>("code");
    for (int code = -1; code <= 14; ++code)
        QTest::addRow("%d", code) << code;
}

void TestVelnoctlUsage::explainsEveryCode()
{
    QFETCH(const int, code);
    const QByteArrayList lines = text(velnoext_result_text(code)).split('\n');
    Client client({u"explain"_s, QString::number(code)});
    QCOMPARE(client.exitCode(), 0);
    const QByteArray name = text(velnoext_result_name(code));
    QCOMPARE(client.out, lines.at(0) + " (code " + QByteArray::number(code) + ", " + name + ")\n  " +
                             lines.at(1) + "\n  " + lines.at(2) + '\n');
    QCOMPARE(client.err, QByteArray());
}

void TestVelnoctlUsage::explainsDetails()
{
    Client words({u"explain"_s, u"4"_s, u"0x402"_s, u"explain"_s, u"3"_s, u"780"_s});
    QCOMPARE(words.exitCode(), 0);
    QVERIFY(words.out.contains("\n  Detail 0x402: " + text(velnoext_detail_text(0x402)) + '\n'));
    QVERIFY(words.out.contains("\n  Detail 0x30C: " + text(velnoext_detail_text(0x30C)) + '\n'));
    Client json({u"--json"_s, u"explain"_s, u"4"_s, u"0x402"_s});
    QCOMPARE(json.exitCode(), 0);
    const QJsonObject explained = object(json.out).value(u"explained"_s).toObject();
    QCOMPARE(explained.value(u"code"_s).toInt(), 4);
    QCOMPARE(explained.value(u"detail"_s).toInt(), 0x402);
    QCOMPARE(explained.value(u"detailText"_s).toString().toLatin1(), text(velnoext_detail_text(0x402)));
}

void TestVelnoctlUsage::explainsCauses_data()
{
    QTest::addColumn<int>("cause");
    for (const int cause : {1000, 1006, 5002, 7001, 10016, 20005, 30002, 99999})
        QTest::addRow("%d", cause) << cause;
}

void TestVelnoctlUsage::explainsCauses()
{
    QFETCH(const int, cause);
    Client client({u"explain"_s, QString::number(cause)});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, causeInWords(cause));
    Client json({u"--json"_s, u"explain"_s, QString::number(cause)});
    QCOMPARE(json.exitCode(), 0);
    const QJsonObject explained = object(json.out).value(u"explained"_s).toObject();
    QCOMPARE(explained, (QJsonObject{{u"causeCode"_s, cause},
                                     {u"causeName"_s, QLatin1String(velnoext_cause_name(cause))},
                                     {u"causeText"_s, QLatin1String(velnoext_cause_text(cause))}}));
}

void TestVelnoctlUsage::explainsInTurkish()
{
    const auto shown = [](const QStringList &arguments) {
        Client client(QStringList{u"--language"_s, u"tr"_s} + arguments);
        return client.exitCode() == 0 ? client.out : QByteArray();
    };
    const auto restore = qScopeGuard([] { velnoext_set_language("en"); });
    QCOMPARE(velnoext_set_language("tr"), 0);
    QCOMPARE(shown({u"explain"_s, u"1006"_s}), causeInWords(1006).replace(" (cause ", " (neden "));
    QVERIFY(causeInWords(1006).contains("\n  Çözüm: "));
    const QByteArrayList lines = text(velnoext_result_text(8)).split('\n');
    QCOMPARE(shown({u"explain"_s, u"8"_s}),
             lines.at(0) + " (kod 8, refused)\n  " + lines.at(1) + "\n  " + lines.at(2) + '\n');
    const QJsonObject explained =
        object(shown({u"--json"_s, u"explain"_s, u"8"_s})).value(u"explained"_s).toObject();
    QCOMPARE("Neden: " + explained.value(u"cause"_s).toString().toUtf8(), lines.at(1));
    QCOMPARE("Çözüm: " + explained.value(u"cure"_s).toString().toUtf8(), lines.at(2));
}

void TestVelnoctlUsage::helpFitsAScreen()
{
    QByteArray shown;
    for (const QString &way : {u"--help"_s, u"-h"_s, u"help"_s}) {
        Client client({way});
        QCOMPARE(client.exitCode(), 0);
        QVERIFY(shown.isEmpty() || shown == client.out);
        shown = client.out;
    }
    const QByteArrayList lines = shown.split('\n');
    QVERIFY2(lines.size() <= 30, QByteArray::number(lines.size()).constData());
    for (const QByteArray &line : lines)
        QVERIFY2(line.size() <= 100, line.constData());
    for (const char *word : {"Reading ",
                             "state z last-z datetime sale-limit paper serial",
                             "login logout forget\n",
                             "start-sale start-invoice-sale sale-state item items medical",
                             "pay end-sale end-invoice cancel receipt-data",
                             "encoding text justified feed print x-report z-report\n",
                             "send get\n",
                             "run shell explain help commands version\n",
                             "velnoctl help COMMAND ",
                             "  --serial NO ",
                             "  --listen ADDR:PORT ",
                             "  --relay ",
                             "  --app N ",
                             "  --timeout MS ",
                             "  --json ",
                             "  --answer-limit MS ",
                             "  --language LANG ",
                             "  --ledger FILE ",
                             "receipt receipts receipt-answer\n",
                             "20-35 a receipt",
                             " 64 wrong usage",
                             "74 ",
                             " 130 ",
                             "Example: velnoctl --serial"})
        QVERIFY2(shown.contains(word), word);
}

void TestVelnoctlUsage::helpAndVersionNameTheAnchors_data()
{
    QTest::addColumn<QString>("word");
    for (const char *const word : {"--help", "--version", "-v", "help", "version"})
        QTest::newRow(word) << QString::fromLatin1(word);
}

void TestVelnoctlUsage::helpAndVersionNameTheAnchors()
{
    QFETCH(const QString, word);
    Client client({word});
    QCOMPARE(client.exitCode(), 0);
    QVERIFY2(client.out.contains(Velno::GMP::trustAnchorsInWords().trimmed().toUtf8()),
             client.out.constData());
    QCOMPARE(client.out.startsWith("velnoctl " VELNO_VERSION ", libvelnoext " VELNO_VERSION "\n"),
             !word.contains(u'h'));
}

void TestVelnoctlUsage::helpOfOneCommand()
{
    Client client({u"help"_s, u"run"_s, u"help"_s, u"z"_s});
    QCOMPARE(client.exitCode(), 0);
    QVERIFY(client.out.startsWith("Usage: run FILE\n  a script"));
    QVERIFY(client.out.contains("\n  FILE                    the path of a file, or - for standard input\n"));
    QVERIFY(client.out.contains("\nUsage: z\n  the number of the current Z report\n"));
}

void TestVelnoctlUsage::everyCommandHasHelpWhoseExampleIsUnderstood()
{
    const QTemporaryDir folder;
    Client list({u"commands"_s});
    QCOMPARE(list.exitCode(), 0);
    QByteArray script;
    int count = 0;
    for (const QByteArray &line : list.out.split('\n')) {
        if (!line.startsWith("  ") || line.startsWith("   "))
            continue; // a group's name, or the second line of a command
        const QString name = QString::fromUtf8(line).simplified().section(u' ', 0, 0);
        ++count;
        Client help({u"help"_s, name});
        QCOMPARE(help.exitCode(), 0);
        QVERIFY2(help.out.startsWith("Usage: " + name.toUtf8()), help.out.constData());
        QVERIFY2(help.out.contains("\nPrints: "), help.out.constData());
        const QByteArray example = help.out.split('\n').at(help.out.count('\n') - 1);
        QVERIFY2(example.startsWith("Example: " + name.toUtf8()), example.constData());
        if (name != "run"_L1 && name != "shell"_L1 && name != "quit"_L1) // they have no place in a script
            script += example.sliced(9) + '\n';
    }
    QVERIFY(count >= 39);
    const QString file = fileWith(folder, script + "no-such-command\n");
    Client client(target(freePort()) + QStringList{u"run"_s, file});
    QCOMPARE(client.exitCode(), 64);
    const QByteArray last = QByteArray::number(script.count('\n') + 1);
    QVERIFY2(client.err.contains(":" + last + ": \"no-such-command\" is no command"), client.err.constData());
}

QTEST_GUILESS_MAIN(TestVelnoctlUsage)
#include "tst_velnoctl_usage.moc"
