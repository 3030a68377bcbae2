// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pairing/gmp3ui.h"
#include "tests/support/test_support.h"

#include "ui_gmp3ui.h"

#include <QTest>
#include <QTextDocumentFragment>

/** The window with its inside visible. */
class WindowUnderTest : public Gmp3UI
{
public:
    using Gmp3UI::hardwareId;
    using Gmp3UI::testPause;

    Ui_Gmp3UI &form() { return *ui; }
    QString status() { return form().resultLabel->text(); }
    /** What the tool tip of the status says, as it is read. */
    QString reason() { return QTextDocumentFragment::fromHtml(form().resultLabel->toolTip()).toPlainText(); }
    bool buttonsEnabled() { return form().pairPushButton->isEnabled() && form().testPushButton->isEnabled(); }
    bool buttonsDisabled()
    {
        return !form().pairPushButton->isEnabled() && !form().testPushButton->isEnabled();
    }
    quint16 port() { return form().portLineEdit->text().toUShort(); }

    void chooseAddress(const QString &text)
    {
        form().ipComboBox->addItem(text);
        form().ipComboBox->setCurrentIndex(form().ipComboBox->count() - 1);
    }
    void pair() { QTest::mouseClick(form().pairPushButton, Qt::LeftButton); }
    void test() { QTest::mouseClick(form().testPushButton, Qt::LeftButton); }

    /** A form that verifyData() accepts, on a machine with and without a network alike. */
    void fill(const QString &applicationPath)
    {
        using namespace Qt::StringLiterals;
        hardwareId = u"001A2B3C4D5E"_s;
        form().portLineEdit->setText(QString::number(TestSupport::freePort()));
        form().applicationPathLineEdit->setText(applicationPath);
        form().serialNoLineEdit->setText(u"UB1234567890"_s);
        form().applicationNoLineEdit->setText(u"4711"_s);
    }
};
