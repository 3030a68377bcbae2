// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/file.h"
#include "simulator/pictures/picture_module.h"
#include "tests/support/library_test.h"
#include "tests/support/program_run.h"
#include "tests/support/shop.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using Layout = Simulator::PictureLayout;

/** Prints of velno-register as pictures. */
class TestRegisterPictures : public LibraryTest
{
    Q_OBJECT

private slots:
    void aPictureShowsWhatTheTextSays();
    void lettersOfTurkishAreTheirOwn();
    void picturesNeedNoText();
    void whatDrawsIsLoadedForPicturesAlone();
    void drawingNeedsNoSession();
    void wrongUsageIsRefused_data();
    void wrongUsageIsRefused();
};

namespace {

QStringList picturesIn(const QTemporaryDir &folder, const QString &kinds)
{
    return {u"--receipts"_s, folder.path(), u"--receipts-as"_s, kinds};
}

void sell(const QByteArray &name)
{
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(1250, name), 0);
    QCOMPARE(velnoext_end_sale(cash), 0);
    QCOMPARE(state(), 1);
}

QRect cell(int line, int column)
{
    return {Layout::margin + column * Layout::cellWidth, Layout::margin + line * Layout::cellHeight,
            Layout::cellWidth, Layout::cellHeight};
}

bool hasInk(const QImage &image, const QRect &where)
{
    for (int y = where.top(); y <= where.bottom(); ++y)
        for (int x = where.left(); x <= where.right(); ++x)
            if (qGray(image.pixel(x, y)) < 128)
                return true;
    return false;
}

QStringList linesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).chopped(1).split(u'\n')
                                          : QStringList();
}

bool loadsWhatDraws(const ChildProgram &program)
{
    QFile maps(u"/proc/%1/maps"_s.arg(program.processId()));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("libQt6Gui");
}

} // namespace

void TestRegisterPictures::aPictureShowsWhatTheTextSays()
{
    const QTemporaryDir folder;
    Shop shop(picturesIn(folder, u"text,png"_s));
    sell("Çay");
    const QString path = folder.filePath(u"000001-receipt-Z1-1"_s);
    const QStringList lines = linesOf(path + u".txt"_s);
    QVERIFY(lines.size() > 10);
    const QImage image(path + u".png"_s);
    QCOMPARE(image.size(), QSize(2 * Layout::margin + Layout::columns * Layout::cellWidth,
                                 2 * Layout::margin + int(lines.size()) * Layout::cellHeight));
    for (int line = 0; line < lines.size(); ++line)
        for (int column = 0; column < Layout::columns; ++column) {
            const QChar letter = lines.at(line).leftJustified(Layout::columns).at(column);
            QVERIFY2(hasInk(image, cell(line, column)) == (letter != u' '),
                     qPrintable(u"line %1, column %2: \"%3\""_s.arg(line).arg(column).arg(letter)));
        }
    QVERIFY(!hasInk(image, {0, 0, image.width(), Layout::margin}));
    struct stat found
    {
    };
    QCOMPARE(stat((path + u".png"_s).toUtf8().constData(), &found), 0);
    QCOMPARE(found.st_mode & 0777, mode_t(0600));
}

void TestRegisterPictures::lettersOfTurkishAreTheirOwn()
{
    const QTemporaryDir folder;
    Shop shop(picturesIn(folder, u"text,png"_s));
    const QString letters = u"ÇĞİÖŞÜçğıöşüCGIOSUgi"_s;
    sell(letters.toUtf8());
    const QString path = folder.filePath(u"000001-receipt-Z1-1"_s);
    const QStringList lines = linesOf(path + u".txt"_s);
    const auto row = lines.indexOf(QRegularExpression(letters + u" .*"_s));
    QVERIFY(row >= 0);
    const QImage image(path + u".png"_s);
    const auto drawn = [&](int column) { return image.copy(cell(int(row), column)); };
    for (int one = 0; one < letters.size(); ++one)
        for (int other = 0; other < one; ++other)
            QVERIFY2(drawn(one) != drawn(other),
                     qPrintable(u"%1 looks like %2"_s.arg(letters.at(one)).arg(letters.at(other))));
}

void TestRegisterPictures::picturesNeedNoText()
{
    const QTemporaryDir folder;
    {
        Shop shop(picturesIn(folder, u"png"_s));
        sell("Ekmek");
        QVERIFY(loadsWhatDraws(shop.reg));
    }
    velnoext_close_all();
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{u"000001-receipt-Z1-1.png"_s});
    SimulatedRegister later(freePort(), picturesIn(folder, u"png"_s)); // goes on behind it
    QVERIFY(later.isReady());
}

void TestRegisterPictures::whatDrawsIsLoadedForPicturesAlone()
{
    const QTemporaryDir folder;
    const SimulatedRegister reg(freePort(), picturesIn(folder, u"text"_s));
    QVERIFY(reg.isReady());
    QVERIFY(!loadsWhatDraws(reg));
}

/** As in CI, where nobody is logged in: nothing is missed, and no folder is left. */
void TestRegisterPictures::drawingNeedsNoSession()
{
    const QTemporaryDir folder;
    const QTemporaryDir temporary;
    const QString commands = folder.filePath(u"commands"_s);
    QVERIFY(Velno::writeData(commands, "quit\n"));
    const QStringList arguments{u"--serial"_s, u"UB1234567890"_s, u"--connect"_s,
                                u"127.0.0.1:%1"_s.arg(freePort())};
    const Outcome outcome = outcomeOf(
        SimulatedRegister::program(), arguments + picturesIn(folder, u"png"_s), [&](QProcess &process) {
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.remove(u"XDG_RUNTIME_DIR"_s);
            environment.insert(u"TMPDIR"_s, temporary.path());
            process.setProcessEnvironment(environment);
            process.setStandardInputFile(commands);
        });
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY2(!outcome.errors.contains("XDG_RUNTIME_DIR"), outcome.errors.constData());
    QVERIFY(QDir(temporary.path()).isEmpty());
}

void TestRegisterPictures::wrongUsageIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("another kind") << QStringList{u"--receipts"_s, u"/tmp"_s, u"--receipts-as"_s,
                                                 u"text,pdf"_s}
                                  << "--receipts-as \"text,pdf\": accepted is text, png or text,png"_ba;
    QTest::newRow("no kind") << QStringList{u"--receipts"_s, u"/tmp"_s, u"--receipts-as"_s, u""_s}
                             << "--receipts-as \"\": accepted is text, png or text,png"_ba;
    QTest::newRow("no folder") << QStringList{u"--receipts-as"_s, u"png"_s}
                               << "--receipts-as needs --receipts, the folder for them"_ba;
}

void TestRegisterPictures::wrongUsageIsRefused()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, message);
    checkWrongUsage(SimulatedRegister::program(),
                    QStringList{u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:4100"_s} +
                        arguments,
                    message);
}

QTEST_GUILESS_MAIN(TestRegisterPictures)
#include "tst_register_pictures.moc"
