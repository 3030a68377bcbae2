// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/trust_anchors.h"
#include "tests/support/error_output.h"
#include "tests/support/shop.h"

#include <QFileInfo>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** A library that trusts registers of a real authority. */
class TestKeyLogRefused : public LibraryTest
{
    Q_OBJECT

private slots:
    void keysAreWrittenNowhere();
};

void TestKeyLogRefused::keysAreWrittenNowhere()
{
    QVERIFY(!Velno::GMP::trustsDevelopmentAuthority());
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"keys"_s);
    qputenv("VELNO_KEY_LOG", path.toUtf8());
    ErrorOutput errors;
    Shop shop;
    QCOMPARE(shop.connected, 0);
    QVERIFY2(errors.text().contains("velnoext: VELNO_KEY_LOG is refused: "), errors.text().constData());
    QVERIFY(!QFileInfo::exists(path));
}

QTEST_GUILESS_MAIN(TestKeyLogRefused)
#include "tst_key_log_refused.moc"
