// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/arguments.h"
#include "velnoctl/commands.h"
#include "velnoctl/payment_commands.h"
#include "velnoctl/sale_commands.h"
#include "velnoctl/session.h"
#include "velnoctl/take_arguments.h"

#include <QSet>
#include <QTest>

#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace VelnoCtl;

/** What a command of velnoctl gets for what is typed. */
class TestVelnoctlArguments : public QObject
{
    Q_OBJECT

private slots:
    void valuesHaveTheirTypes();
    void whatIsNotGivenIsUsual();
    void repeatedArgumentsAreApart();
    void unacceptedTextChangesNothing();
    void everyRowNamesAKindOnce();
    void functionAndRowThatDisagreeSellNothing_data();
    void functionAndRowThatDisagreeSellNothing();
};

namespace {

/** What the command named is given for these words, all of which it takes. */
Arguments taken(const QString &command, QStringList words)
{
    Arguments arguments;
    const QString problem = takeArguments(*commandNamed(command), Script, words, &arguments);
    return problem.isEmpty() && words.isEmpty() ? arguments : Arguments();
}

} // namespace

void TestVelnoctlArguments::valuesHaveTheirTypes()
{
    const Arguments item = taken(u"item"_s, {u"12.5"_s, u"Çay"_s, u"section=-2"_s, u"quantity=1,25"_s});
    QCOMPARE(item.value(Kinds::price), 1250);
    QCOMPARE(item.value(Kinds::name), QByteArray("Çay"));
    QCOMPARE(item.value(Kinds::section), -2);
    QCOMPARE(item.value(Kinds::quantity, 0), 1250);
    QCOMPARE(taken(u"end-sale"_s, {u"card"_s}).value(Kinds::means), Means::Card);
    QCOMPARE(taken(u"delete"_s, {u"0"_s}).value(Kinds::line).index, std::optional(0));
    QCOMPARE(taken(u"delete"_s, {u"last"_s}).value(Kinds::line).index, std::optional<int>());
    QCOMPARE(taken(u"receipt-data"_s, {u"12/1"_s}).value(Kinds::receipt), std::pair(12, 1));
    const Style style = taken(u"text"_s, {u"Masa"_s, u"style=b"_s}).value(Kinds::style);
    QVERIFY(!style.a);
    QVERIFY(style.b);
    QVERIFY(taken(u"print"_s, {u"flag=yes"_s}).value(Kinds::flag));
    QCOMPARE(taken(u"send"_s, {u"0a0B"_s}).value(Kinds::hex), QByteArray("\x0a\x0b"));
}

void TestVelnoctlArguments::whatIsNotGivenIsUsual()
{
    const Arguments item = taken(u"item"_s, {u"1"_s, u"Su"_s});
    QVERIFY(!item.has(Kinds::quantity));
    QCOMPARE(item.value(Kinds::quantity, 1000), 1000);
    const Arguments invoice = taken(u"end-invoice"_s, {u"id="_s});
    QVERIFY(invoice.has(Kinds::id)); // given, though nothing stands behind its key
    QCOMPARE(invoice.value(Kinds::id, "usual"), QByteArray());
}

void TestVelnoctlArguments::repeatedArgumentsAreApart()
{
    const Arguments items = taken(
        u"items"_s, {u"1"_s, u"Su"_s, u"section=3"_s, u"+"_s, u"2"_s, u"Tuz"_s, u"+"_s, u"3"_s, u"Un"_s});
    QCOMPARE(items.value(Kinds::price), 100);
    QCOMPARE(items.repeated().size(), 2U);
    QCOMPARE(items.repeated().at(0).value(Kinds::price), 200);
    QVERIFY(!items.repeated().at(0).has(Kinds::section));
    QCOMPARE(items.repeated().at(1).value(Kinds::name), QByteArray("Un"));
}

void TestVelnoctlArguments::unacceptedTextChangesNothing()
{
    Arguments arguments(argumentsOf("AMOUNT"));
    QVERIFY(!arguments.read(Kinds::amount, u"1.234"_s));
    QVERIFY(!arguments.has(Kinds::amount));
    QVERIFY(arguments.read(Kinds::amount, u"1.23"_s));
    QVERIFY(!arguments.read(Kinds::amount, u"much"_s));
    QCOMPARE(arguments.value(Kinds::amount), 123);
}

// A value is asked for by its kind.
void TestVelnoctlArguments::everyRowNamesAKindOnce()
{
    for (const Command &command : commandTable()) {
        QSet<const ArgumentKind *> kinds;
        const QList<Argument> row = argumentsOf(command.arguments);
        for (const Argument &argument : row)
            kinds << argument.kind;
        QVERIFY2(kinds.size() == row.size(), command.name);
    }
}

void TestVelnoctlArguments::functionAndRowThatDisagreeSellNothing_data()
{
    QTest::addColumn<QByteArray>("row");
    QTest::addColumn<QStringList>("values");

    QTest::newRow("no such argument") << QByteArray("NAME") << QStringList{u"Ekmek"_s};
    QTest::newRow("another kind") << QByteArray("AMOUNT NAME") << QStringList{u"12.50"_s, u"Ekmek"_s};
    QTest::newRow("optional and left out") << QByteArray("NAME [price=PRICE]") << QStringList{u"Ekmek"_s};
}

void TestVelnoctlArguments::functionAndRowThatDisagreeSellNothing()
{
    QFETCH(const QByteArray, row);
    QFETCH(const QStringList, values);

    const QList<Argument> kinds = argumentsOf(row);
    Arguments arguments(kinds);
    for (qsizetype i = 0; i < values.size(); ++i)
        QVERIFY(arguments.read(*kinds.at(i).kind, values.at(i)));
    const Options options;
    Report report(false);
    Interrupts interrupts;
    Session session(options, report, interrupts);
    QVERIFY_THROWS_EXCEPTION(std::logic_error, addItem(session, arguments));
    QVERIFY_THROWS_EXCEPTION(std::logic_error, addItems(session, arguments));
    QVERIFY_THROWS_EXCEPTION(std::logic_error, pay(session, arguments));
}

QTEST_GUILESS_MAIN(TestVelnoctlArguments)
#include "tst_velnoctl_arguments.moc"
