// SPDX-License-Identifier: Apache-2.0

#include "tests/support/registers_key.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"
#include "till/words.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::Receipts;

/** docs/receipts.md: its examples sell as they stand there, and its words are those that are told. */
class TestReceiptsPage : public QObject
{
    Q_OBJECT

private slots:
    void examplesSellOnce_data();
    void examplesSellOnce();
    void wordsAreThoseThatAreTold();
};

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool plainBuild = false;
#else
constexpr bool plainBuild = true;
#endif

constexpr int longestRun = 120'000; // ms

QString page()
{
    QFile file(QString::fromUtf8(VELNO_SOURCE "/docs/receipts.md"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/** The first block of this language. */
QString blockOf(const QString &language)
{
    const QRegularExpression block(u"^```%1\\n(.*?)^```$"_s.arg(QRegularExpression::escape(language)),
                                   QRegularExpression::MultilineOption |
                                       QRegularExpression::DotMatchesEverythingOption);
    return block.match(page()).captured(1);
}

/** Runs a command there; the libraries and velnoctl of this build are found. @return its output, or what went
 * wrong
 */
QByteArray outputOf(const QStringList &command, const QString &folder)
{
    QProcess program;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LD_LIBRARY_PATH"_s, QString::fromUtf8(VELNO_LIBRARY_FOLDER));
    environment.insert(u"PATH"_s, QFileInfo(QString::fromUtf8(VELNO_VELNOCTL)).path() + u':' +
                                      environment.value(u"PATH"_s));
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(folder);
    program.start(command.first(), command.sliced(1));
    if (!program.waitForFinished(longestRun))
        program.kill();
    if (program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0)
        return program.readAllStandardOutput();
    return program.readAllStandardError() + program.errorString().toUtf8();
}

QStringList compilerFor(const char *compiler, const QString &standard)
{
    const QString sources = QString::fromUtf8(VELNO_SOURCE);
    QStringList command{QString::fromUtf8(compiler),
                        standard,
                        u"-Wall"_s,
                        u"-Wextra"_s,
                        u"-Werror"_s,
                        u"-I"_s + sources + u"/till"_s,
                        u"-I"_s + sources + u"/ExtDevice/velnoext"_s};
    return command + QString::fromUtf8(VELNO_LINK_FLAGS).split(u' ', Qt::SkipEmptyParts);
}

} // namespace

void TestReceiptsPage::examplesSellOnce_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QStringList>("compiler"); // empty: none is needed
    QTest::addColumn<QStringList>("command");  // SOURCE stands for the file

    QTest::newRow("C") << u"c"_s << compilerFor(VELNO_C_COMPILER, u"-std=c99"_s) << QStringList{u"./till"_s};
    QTest::newRow("C++") << u"cpp"_s << compilerFor(VELNO_CXX_COMPILER, u"-std=c++17"_s)
                         << QStringList{u"./till"_s};
    QTest::newRow("Python") << u"python"_s << QStringList()
                            << QStringList{QString::fromUtf8(VELNO_PYTHON), u"SOURCE"_s};
    QTest::newRow("shell") << u"sh"_s << QStringList() << QStringList{u"sh"_s, u"SOURCE"_s};
}

void TestReceiptsPage::examplesSellOnce()
{
    NEEDS_A_REGISTERS_KEY();
    QFETCH(const QString, language);
    QFETCH(const QStringList, compiler);
    QFETCH(QStringList, command);
    if (command.first().isEmpty())
        QSKIP("NOT TESTED: python3 was not there when this was configured");
    if (!plainBuild && language == "python"_L1)
        QSKIP("NOT TESTED: Python cannot load a library that was built for a sanitizer");
    const quint16 port = freePort();
    const QTemporaryDir folder;
    const QString source = folder.filePath(u"till."_s + language);
    QFile file(source);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QString block = blockOf(language);
    QVERIFY2(block.contains("4100"_L1), "the page has no such example");
    file.write(block.replace(u"4100"_s, QString::number(port)).toUtf8());
    file.close();
    if (!compiler.isEmpty()) {
        const QByteArray said = outputOf(
            compiler + QStringList{source, u"-o"_s, folder.filePath(u"till"_s),
                                   u"-L"_s + QString::fromUtf8(VELNO_LIBRARY_FOLDER), u"-lvelnotill"_s},
            folder.path());
        QVERIFY2(QFile::exists(folder.filePath(u"till"_s)), said.constData());
        command = {folder.filePath(u"till"_s)};
    }
    command.replaceInStrings(u"SOURCE"_s, source);
    const SimulatedRegister reg(port);
    const QByteArray told =
        "Receipt 1 of Z 1 is closed: total 12.50 TL, cash 20.00 TL, card 0.00 TL, change 7.50 TL.\n";
    QCOMPARE(outputOf(command, folder.path()), told);
    QCOMPARE(outputOf(command, folder.path()), told);
}

void TestReceiptsPage::wordsAreThoseThatAreTold()
{
    const QString text = page();
    for (const Word &state : stateWords()) {
        for (const char *const word : {state.name, state.english, state.turkish})
            QVERIFY2(text.contains(QString::fromUtf8(word)), word);
    }
    for (const std::span<const Word> words : {questionWords(), answerWords(), paperWords(), kindWords()}) {
        for (const Word &word : words)
            QVERIFY2(word.number == 0 || text.contains(u'`' + QString::fromUtf8(word.name) + u'`'),
                     word.name);
    }
    for (const Word &result : resultWords())
        QVERIFY2(result.number >= 100 ||
                     text.contains(u"| %1 | `%2` |"_s.arg(result.number).arg(QString::fromUtf8(result.name))),
                 result.name);
}

QTEST_GUILESS_MAIN(TestReceiptsPage)
#include "tst_receipts_page.moc"
