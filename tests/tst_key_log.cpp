// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/file.h"
#include "ExtDevice/gmp3/key_log.h"
#include "tests/support/error_output.h"
#include "tests/support/program_run.h"
#include "tests/support/shop.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <optional>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::GMP;

/** The keys of pairings, in files for who looks into the wire. */
class TestKeyLog : public LibraryTest
{
    Q_OBJECT

private slots:
    void lineHasTheDocumentedForm();
    void bothSidesLogTheSameKeys();
    void everyPairingIsAppended();
    void nothingIsLoggedUnasked();
    void unfitFileIsLeftAlone_data();
    void unfitFileIsLeftAlone();
    void nameThatBreaksTheLineIsRefused();
    void libraryPairsWithoutItsLog();
    void registerRefusesToStart_data();
    void registerRefusesToStart();
    void registerPairsWithoutItsLog();
};

namespace {

/** Sets the library's variable while it lives. */
class Wish
{
public:
    explicit Wish(const QByteArray &file) { qputenv("VELNO_KEY_LOG", file); }
    ~Wish() { qunsetenv("VELNO_KEY_LOG"); }
    Q_DISABLE_COPY_MOVE(Wish)
};

constexpr auto ownersOnly = QFile::ReadOwner | QFile::WriteOwner;

QByteArray contentOf(const QString &path)
{
    QByteArray content;
    Velno::readData(path, &content);
    return content;
}

MatchExt someKeys()
{
    MatchExt keys;
    keys.registerData = serial;
    keys.randomDFC10D = QByteArray(16, '\x0D');
    keys.randomDFC10E = QByteArray(16, '\x0E');
    keys.aesKey = QByteArray(32, '\xAE');
    keys.hmacKey = QByteArray(32, '\x4A');
    return keys;
}

const QByteArray someLine = "VELNO_KEYS UB1234567890 " + QByteArray("0D").repeated(16) + ' ' +
                            QByteArray("0E").repeated(16) + ' ' + QByteArray("AE").repeated(32) + ' ' +
                            QByteArray("4A").repeated(32) + '\n';

bool write(const QString &path, const QByteArray &content, QFile::Permissions permissions)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() &&
           file.setPermissions(permissions);
}

/** Makes a file of this kind and returns its path. */
QString unfitFile(const QString &kind, const QTemporaryDir &folder)
{
    const QString path = folder.filePath(u"keys"_s);
    if (kind == u"open to others")
        write(path, "kept", ownersOnly | QFile::ReadGroup);
    else if (kind == u"link")
        QFile::link(folder.filePath(u"target"_s), path);
    else if (kind == u"folder")
        return folder.path();
    else if (kind == u"device")
        return u"/dev/null"_s;
    else
        return folder.filePath(u"none/keys"_s);
    return path;
}

void addUnfitFiles()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"open to others", "link", "folder", "device", "in no folder"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

} // namespace

void TestKeyLog::lineHasTheDocumentedForm()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"keys"_s);
    QCOMPARE(keyLogProblem(path), QString());
    QCOMPARE(contentOf(path), QByteArray());
    QCOMPARE(appendToKeyLog(path, someKeys()), QString());
    QCOMPARE(appendToKeyLog(path, someKeys()), QString());
    QCOMPARE(contentOf(path), someLine + someLine);
    QCOMPARE(QFile::permissions(path) & ~(QFile::ReadUser | QFile::WriteUser), ownersOnly);
}

void TestKeyLog::bothSidesLogTheSameKeys()
{
    const QTemporaryDir folder;
    const QString library = folder.filePath(u"library"_s);
    const QString reg = folder.filePath(u"register"_s);
    const Wish wish(QFile::encodeName(library));
    Shop shop({u"--key-log"_s, reg});
    QCOMPARE(shop.connected, 0);
    const MatchExt &record = Velno::Ext::library().pairingRecords[serial];
    const QByteArray line = contentOf(library);
    QCOMPARE(line.split(' ').value(4), record.aesKey.toHex().toUpper());
    QCOMPARE(line.split(' ').value(5).trimmed(), record.hmacKey.toHex().toUpper());
    QCOMPARE(contentOf(reg), line);
}

void TestKeyLog::everyPairingIsAppended()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"keys"_s);
    Shop shop({u"--key-log"_s, path});
    QCOMPARE(shop.connected, 0);
    const QByteArray first = contentOf(path);
    QCOMPARE(first.count('\n'), 1);
    QCOMPARE(velnoext_forget_device(serial), 0);
    QCOMPARE(shop.connect(), 0);
    const QByteArray both = contentOf(path);
    QVERIFY(both.startsWith(first));
    QCOMPARE(both.count('\n'), 2);
    QVERIFY(both != first + first);
}

void TestKeyLog::nothingIsLoggedUnasked()
{
    std::optional<Wish> wish;
    for (const bool empty : {false, true}) {
        if (empty)
            wish.emplace(QByteArray());
        ErrorOutput errors;
        Shop shop;
        QCOMPARE(shop.connected, 0);
        QVERIFY2(!errors.text().contains("velnoext: "), errors.text().constData());
        QCOMPARE(velnoext_forget_device(serial), 0);
    }
}

void TestKeyLog::unfitFileIsLeftAlone_data()
{
    addUnfitFiles();
}

void TestKeyLog::unfitFileIsLeftAlone()
{
    QFETCH(const QString, kind);
    const QTemporaryDir folder;
    const QString path = unfitFile(kind, folder);
    QVERIFY2(keyLogProblem(path).startsWith(u"keys cannot be logged to "_s + path), qPrintable(kind));
    QCOMPARE(appendToKeyLog(path, someKeys()), keyLogProblem(path));
    if (kind == u"open to others")
        QCOMPARE(contentOf(path), QByteArray("kept"));
    QVERIFY(!QFileInfo::exists(folder.filePath(u"target"_s)));
}

void TestKeyLog::nameThatBreaksTheLineIsRefused()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"keys"_s);
    MatchExt keys = someKeys();
    keys.registerData = "UB12345\n7890";
    QVERIFY(!appendToKeyLog(path, keys).isEmpty());
    keys.registerData = "UB1"; // frames carry it with spaces behind it
    QCOMPARE(appendToKeyLog(path, keys), QString());
    QCOMPARE(contentOf(path), QByteArray(someLine).replace("UB1234567890", "UB1         "));
}

void TestKeyLog::libraryPairsWithoutItsLog()
{
    const Wish wish("/no/such/folder/keys");
    ErrorOutput errors;
    Shop shop;
    QCOMPARE(shop.connected, 0);
    QVERIFY2(errors.text().contains("velnoext: keys cannot be logged to /no/such/folder/keys: "),
             errors.text().constData());
}

void TestKeyLog::registerRefusesToStart_data()
{
    addUnfitFiles();
    QTest::newRow("without a name") << QString();
}

void TestKeyLog::registerRefusesToStart()
{
    QFETCH(const QString, kind);
    const QTemporaryDir folder;
    const QString path = kind.isEmpty() ? QString() : unfitFile(kind, folder);
    checkWrongUsage(
        SimulatedRegister::program(),
        {u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:9"_s, u"--key-log"_s, path},
        kind.isEmpty() ? "--key-log \"\": accepted is the name of a file"_ba
                       : "--key-log: keys cannot be"_ba);
}

void TestKeyLog::registerPairsWithoutItsLog()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"keys"_s);
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--key-log"_s, path});
    QVERIFY(reg.isReady());
    QVERIFY(QFile::setPermissions(path, ownersOnly | QFile::ReadOther));
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 0);
    QVERIFY(reg.waitFor(u"error"_s).value(u"message"_s).toString().contains(u"0600"));
    QCOMPARE(contentOf(path), QByteArray());
}

QTEST_GUILESS_MAIN(TestKeyLog)
#include "tst_key_log.moc"
