// SPDX-License-Identifier: Apache-2.0

#include "tests/support/window_test.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
#include <QSettings>
#include <QTest>

using namespace Qt::StringLiterals;

namespace TestSupport {

void WindowTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QCoreApplication::setOrganizationName(u"dalmoriven"_s);
    QCoreApplication::setApplicationName(u"velno"_s);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.filePath(u"config"_s));
    m_application = file(u"satış uygulaması"_s, "application");
}

void WindowTest::init()
{
    // What Qt says when an object is touched on a thread that is not its own.
    QTest::failOnWarning(QRegularExpression(u"thread|QSocketNotifier|QObject::"_s));
}

void WindowTest::cleanup()
{
    QSettings().clear();
}

QString WindowTest::file(const QString &name, const QByteArray &content)
{
    QFile out(m_dir.filePath(name));
    if (!out.open(QIODevice::WriteOnly) || out.write(content) != content.size())
        qFatal("cannot write a file of the test");
    return out.fileName();
}

} // namespace TestSupport
