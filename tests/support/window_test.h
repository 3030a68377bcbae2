// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QTemporaryDir>

namespace TestSupport {

/** Tests of the window: each begins with settings of its own, and fails when an object is touched on another
 * thread than its own. */
class WindowTest : public QObject
{
    Q_OBJECT

protected:
    /** The path of a new file of this name. */
    QString file(const QString &name, const QByteArray &content);

    QTemporaryDir m_dir;
    QString m_application; ///< the file of an application

private slots:
    void initTestCase();
    void init();
    void cleanup();
};

} // namespace TestSupport
