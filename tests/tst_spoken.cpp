// SPDX-License-Identifier: Apache-2.0

#include "translations/spoken.h"

#include <QHash>
#include <QTest>

#include <clocale>

using namespace Qt::StringLiterals;

/** Which language an environment asks for, and that it is spoken as long as a Speaker lives. */
class TestSpoken : public QObject
{
    Q_OBJECT

private slots:
    void environmentChoosesTheLanguage_data();
    void environmentChoosesTheLanguage();
    void speaksAsLongAsItLives();
    void englishStandsInTheCode();
    void numbersKeepTheirDot();
};

namespace {

const char *const text = "%1 takes no value";
const QString inEnglish = u"%1 takes no value"_s;
const QString inTurkish = u"%1: değer almaz"_s;

} // namespace

void TestSpoken::environmentChoosesTheLanguage_data()
{
    QTest::addColumn<QByteArray>("environment"); // LC_ALL LC_MESSAGES LANG LANGUAGE; - is not set
    QTest::addColumn<QByteArray>("language");

    const auto row = [](const char *environment, const char *language) {
        QTest::newRow(environment) << QByteArray(environment) << QByteArray(language);
    };
    row("- - - -", "en");
    row("- - tr_TR.UTF-8 -", "tr");
    row("- - tr_TR -", "tr");
    row("- - tr -", "tr");
    row("- - tr_CY.UTF-8 -", "tr");
    row("- - tr_TR@variant -", "tr");
    row("- tr_TR.UTF-8 C -", "tr");
    row("tr_TR.UTF-8 C en_US.UTF-8 -", "tr");
    row("C tr_TR.UTF-8 tr_TR.UTF-8 tr", "en");
    row("C.UTF-8 - tr_TR.UTF-8 tr", "en");
    row("POSIX - tr_TR.UTF-8 tr", "en");
    row("- C tr_TR.UTF-8 tr", "en");
    row("- - - tr", "en");
    row("- - C tr", "en");
    row("- - en_US.UTF-8 -", "en");
    row("- - de_DE.UTF-8 -", "en");
    row("- - trv_TW.UTF-8 -", "en"); // a language of Taiwan
    row("- - en_US.UTF-8 tr", "tr");
    row("- - en_US.UTF-8 de:tr_TR:en", "tr");
    row("- - tr_TR.UTF-8 en:tr", "en");
    row("- - tr_TR.UTF-8 de:fr", "tr");
    row("- - de_DE.UTF-8 de:fr", "en");
}

void TestSpoken::environmentChoosesTheLanguage()
{
    QFETCH(const QByteArray, environment);
    QFETCH(const QByteArray, language);
    const QList<QByteArray> values = environment.split(' ');
    const QHash<QByteArray, QByteArray> variables{{"LC_ALL"_ba, values.at(0)},
                                                  {"LC_MESSAGES"_ba, values.at(1)},
                                                  {"LANG"_ba, values.at(2)},
                                                  {"LANGUAGE"_ba, values.at(3)}};
    const auto variable = [&variables](const char *name) {
        const QByteArray value = variables.value(name);
        return value == "-" ? QByteArray() : value;
    };
    QCOMPARE(Spoken::languageOf(variable), language);
}

void TestSpoken::speaksAsLongAsItLives()
{
    QCOMPARE(Spoken::tr(text), inEnglish);
    {
        const Spoken::Speaker speaker("tr"_ba);
        QCOMPARE(Spoken::tr(text), inTurkish);
        QCOMPARE(Spoken::tr("nobody has translated this"), u"nobody has translated this"_s);
    }
    QCOMPARE(Spoken::tr(text), inEnglish);
    QCOMPARE(std::setlocale(LC_MESSAGES, nullptr), "C");
}

void TestSpoken::englishStandsInTheCode()
{
    const Spoken::Speaker speaker("en"_ba);
    QCOMPARE(Spoken::tr(text), inEnglish);
    QCOMPARE(std::setlocale(LC_MESSAGES, nullptr), "C");
}

void TestSpoken::numbersKeepTheirDot()
{
    QVERIFY(std::setlocale(LC_NUMERIC, "C.UTF-8")); // the one locale that every system has beside C
    const Spoken::Speaker speaker("tr"_ba);
    QCOMPARE(std::setlocale(LC_NUMERIC, nullptr), "C");
}

QTEST_GUILESS_MAIN(TestSpoken)
#include "tst_spoken.moc"
