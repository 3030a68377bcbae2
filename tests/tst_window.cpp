// SPDX-License-Identifier: Apache-2.0

#include "tests/support/closing_times.h"
#include "tests/support/window_test.h"
#include "tests/support/window_under_test.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QNetworkInterface>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <thread>

using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

using Window = WindowUnderTest;

// Set in the process of networksOfOtherMachines() that runs inside the other network.
constexpr const char *expectedNetwork = "VELNO_TEST_EXPECTED_NETWORK";

/** The hardware address that the window has found, and all addresses that it lists. */
QString networkOf(Window &window)
{
    QStringList found(window.hardwareId);
    for (int i = 0; i < window.form().ipComboBox->count(); ++i)
        found << window.form().ipComboBox->itemText(i);
    return found.join(u' ');
}

QStringList usableAddresses()
{
    QStringList addresses;
    for (const QNetworkInterface &interface : QNetworkInterface::allInterfaces()) {
        const auto flags = interface.flags();
        if (flags & QNetworkInterface::IsLoopBack || !(flags & QNetworkInterface::IsUp))
            continue;
        for (const QNetworkAddressEntry &entry : interface.addressEntries())
            if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol)
                addresses << entry.ip().toString();
    }
    return addresses;
}

} // namespace

/** The window as it stands there: its texts, limits and order, the networks that it lists, its answers to
 * what is done. */
class TestWindow : public WindowTest
{
    Q_OBJECT

private slots:
    void formShowsItsTexts_data();
    void formShowsItsTexts();
    void formKeepsItsLimits();
    void formKeepsItsLayout();
    void memberOrderIsTheOrderOfTheForm();
    void labelsHaveTheirFieldsAsBuddies();
    void tabFollowsTheEye();
    void returnInAFieldDoesNothing();
    void objectNameIsKept();
    void slotsStandInOrder();
    void startsReadyAndSilent();
    void listsTheAddressesOfThisMachine();
    void hardwareIdIsTheFirstUsableInterface();
    void networksOfOtherMachines_data();
    void networksOfOtherMachines();

    void textFromTheGuiThreadShowsAtOnce();
    void textFromAnotherThreadShowsLater();
    void buttonsAreEnabledByEvents();
    void browsing_data();
    void browsing();
};

void TestWindow::formShowsItsTexts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");

    QTest::newRow("address") << u"label_2"_s << u"IP:"_s;
    QTest::newRow("port") << u"label"_s << u"Port:"_s;
    QTest::newRow("relay") << u"tsmCheckBox"_s << u"TSM"_s;
    QTest::newRow("application") << u"label_5"_s << u"Uygulama:"_s;
    QTest::newRow("browse") << u"browsePushButton"_s << u"Gözat..."_s;
    QTest::newRow("serial number") << u"label_3"_s << u"Cihaz Sicil No:"_s;
    QTest::newRow("application number") << u"label_4"_s << u"Uygulama No:"_s;
    QTest::newRow("pair") << u"pairPushButton"_s << u"Eşle"_s;
    QTest::newRow("test") << u"testPushButton"_s << u"Test"_s;
    QTest::newRow("status") << u"resultLabel"_s << QString();
    QTest::newRow("port field") << u"portLineEdit"_s << QString();
    QTest::newRow("application field") << u"applicationPathLineEdit"_s << QString();
    QTest::newRow("serial number field") << u"serialNoLineEdit"_s << QString();
    QTest::newRow("application number field") << u"applicationNoLineEdit"_s << QString();
}

void TestWindow::formShowsItsTexts()
{
    QFETCH(const QString, name);
    QFETCH(const QString, text);
    const Window window;
    const auto *widget = window.findChild<QWidget *>(name, Qt::FindDirectChildrenOnly);
    QVERIFY(widget);
    QCOMPARE(widget->property("text").toString(), text);
    QCOMPARE(window.windowTitle(), u"Velno GMP3 Cihaz Eşleme"_s);
}

void TestWindow::formKeepsItsLimits()
{
    Window window;
    const Ui_Gmp3UI &form = window.form();
    QCOMPARE(form.portLineEdit->maxLength(), 5);
    QCOMPARE(form.portLineEdit->inputMask(), QString());
    QCOMPARE(form.portLineEdit->minimumWidth(), 120);
    QCOMPARE(form.portLineEdit->maximumWidth(), 100);
    QCOMPARE(form.serialNoLineEdit->maxLength(), 12);
    QCOMPARE(form.applicationNoLineEdit->maxLength(), 5);
    QCOMPARE(form.applicationPathLineEdit->maxLength(), 32767);
    QCOMPARE(form.browsePushButton->minimumHeight(), 25);
    QCOMPARE(form.pairPushButton->minimumSize(), QSize(100, 50));
    QCOMPARE(form.testPushButton->minimumSize(), QSize(100, 50));
    QCOMPARE(form.resultLabel->minimumHeight(), 50);
    QVERIFY(!form.ipComboBox->isEditable());
    QCOMPARE(window.size(), QSize(612, 230));
    QCOMPARE(window.minimumWidth(), 600);
    QCOMPARE(window.font().pointSize(), 12);

    const auto policy = [](const QWidget *widget) {
        return qMakePair(widget->sizePolicy().horizontalPolicy(), widget->sizePolicy().verticalPolicy());
    };
    QCOMPARE(policy(form.ipComboBox), qMakePair(QSizePolicy::Expanding, QSizePolicy::Fixed));
    QCOMPARE(policy(form.pairPushButton), qMakePair(QSizePolicy::Minimum, QSizePolicy::Preferred));
    QCOMPARE(policy(form.testPushButton), qMakePair(QSizePolicy::Minimum, QSizePolicy::Preferred));
    QCOMPARE(policy(form.resultLabel), qMakePair(QSizePolicy::Preferred, QSizePolicy::Expanding));
}

void TestWindow::formKeepsItsLayout()
{
    Window window;
    const Ui_Gmp3UI &form = window.form();
    QCOMPARE(window.layout(), form.gridLayout);
    QCOMPARE(form.gridLayout->contentsMargins(), QMargins(11, 11, 11, 11));
    QCOMPARE(form.gridLayout->horizontalSpacing(), 6);
    QCOMPARE(form.gridLayout->verticalSpacing(), 6);
    QCOMPARE(form.gridLayout->itemAtPosition(0, 0)->layout(), form.horizontalLayout);
    QCOMPARE(form.gridLayout->itemAtPosition(1, 0)->layout(), form.horizontalLayout_3);
    QCOMPARE(form.gridLayout->itemAtPosition(2, 0)->layout(), form.horizontalLayout_2);
    QCOMPARE(form.gridLayout->itemAtPosition(3, 0)->widget(), form.resultLabel);

    const QList<QPair<QHBoxLayout *, QList<QWidget *>>> rows = {
        {form.horizontalLayout,
         {form.label_2, form.ipComboBox, form.label, form.portLineEdit, form.tsmCheckBox}},
        {form.horizontalLayout_3, {form.label_5, form.applicationPathLineEdit, form.browsePushButton}},
        {form.horizontalLayout_2, {nullptr, form.pairPushButton, form.testPushButton}},
    };
    for (const auto &[row, widgets] : rows) {
        QCOMPARE(row->spacing(), 6);
        QCOMPARE(row->count(), widgets.size());
        for (int i = 0; i < row->count(); ++i)
            QCOMPARE(row->itemAt(i)->widget(), widgets[i]);
    }

    QCOMPARE(form.horizontalLayout_2->itemAt(0)->layout(), form.formLayout);
    QCOMPARE(form.formLayout->horizontalSpacing(), 6);
    QCOMPARE(form.formLayout->verticalSpacing(), 6);
    const auto cell = [&form](int row, QFormLayout::ItemRole role) {
        return form.formLayout->itemAt(row, role)->widget();
    };
    QCOMPARE(cell(0, QFormLayout::LabelRole), form.label_3);
    QCOMPARE(cell(0, QFormLayout::FieldRole), form.serialNoLineEdit);
    QCOMPARE(cell(1, QFormLayout::LabelRole), form.label_4);
    QCOMPARE(cell(1, QFormLayout::FieldRole), form.applicationNoLineEdit);
}

void TestWindow::memberOrderIsTheOrderOfTheForm()
{
    // Children are made in the order of the form's members; labels of no field come among them.
    const Window window;
    QStringList names;
    for (const QWidget *widget : window.findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        names << widget->objectName();
    QCOMPARE(names, u"label_2 ipComboBox label portLineEdit tsmCheckBox label_5 applicationPathLineEdit "
                    "browsePushButton label_3 serialNoLineEdit label_4 applicationNoLineEdit pairPushButton "
                    "testPushButton resultLabel"_s.split(u' '));
}

void TestWindow::labelsHaveTheirFieldsAsBuddies()
{
    Window window;
    const Ui_Gmp3UI &form = window.form();
    QCOMPARE(form.label_2->buddy(), form.ipComboBox);
    QCOMPARE(form.label->buddy(), form.portLineEdit);
    QCOMPARE(form.label_5->buddy(), form.applicationPathLineEdit);
    QCOMPARE(form.label_3->buddy(), form.serialNoLineEdit);
    QCOMPARE(form.label_4->buddy(), form.applicationNoLineEdit);
}

void TestWindow::tabFollowsTheEye()
{
    Window window;
    const Ui_Gmp3UI &form = window.form();
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    form.ipComboBox->setFocus();
    const QList<QWidget *> order = {
        form.ipComboBox,       form.portLineEdit,     form.applicationPathLineEdit,
        form.browsePushButton, form.serialNoLineEdit, form.applicationNoLineEdit,
        form.pairPushButton,   form.testPushButton,   form.ipComboBox};
    for (const QWidget *expected : order) {
        QCOMPARE(QApplication::focusWidget(), expected);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
}

void TestWindow::returnInAFieldDoesNothing()
{
    Window window;
    window.show();
    const QSignalSpy pairs(window.form().pairPushButton, &QPushButton::clicked);
    const QSignalSpy browses(window.form().browsePushButton, &QPushButton::clicked);
    const QSignalSpy tests(window.form().testPushButton, &QPushButton::clicked);
    for (QLineEdit *field : window.findChildren<QLineEdit *>())
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter})
            QTest::keyClick(field, key);
    QCOMPARE(pairs.count() + browses.count() + tests.count(), 0);
    QVERIFY(window.isVisible());
    QCOMPARE(window.status(), QString());
}

void TestWindow::objectNameIsKept()
{
    QCOMPARE(Window().objectName(), u"Gmp3UI"_s);

    Ui_Gmp3UI form;
    QWidget named;
    named.setObjectName(u"named"_s);
    form.setupUi(&named);
    QCOMPARE(named.objectName(), u"named"_s);
}

void TestWindow::slotsStandInOrder()
{
    const QMetaObject &meta = Gmp3UI::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 3);
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), "on_pairPushButton_clicked()");
    QCOMPARE(meta.method(meta.methodOffset() + 1).methodSignature(), "on_browsePushButton_clicked()");
    QCOMPARE(meta.method(meta.methodOffset() + 2).methodSignature(), "on_testPushButton_clicked()");
}

void TestWindow::startsReadyAndSilent()
{
    Window window;
    window.show();
    QVERIFY(window.buttonsEnabled());
    QCOMPARE(window.status(), QString());
    QVERIFY(window.form().tsmCheckBox->isHidden());
    QVERIFY(!window.form().tsmCheckBox->isEnabled());
    QVERIFY(!window.form().tsmCheckBox->isChecked());
}

void TestWindow::listsTheAddressesOfThisMachine()
{
    Window window;
    const QComboBox &box = *window.form().ipComboBox;
    QStringList listed;
    for (int i = 0; i < box.count(); ++i) {
        listed << box.itemText(i);
        QVERIFY(box.itemIcon(i).isNull());
        QVERIFY(!box.itemData(i).isValid());
    }
    QCOMPARE(listed, usableAddresses());
}

void TestWindow::hardwareIdIsTheFirstUsableInterface()
{
    const Window window;
    if (usableAddresses().isEmpty()) {
        QCOMPARE(window.hardwareId, QString());
        return;
    }
    const QString address = usableAddresses().constFirst();
    QVERIFY(!window.hardwareId.contains(u':'));
    for (const QNetworkInterface &interface : QNetworkInterface::allInterfaces()) {
        for (const QNetworkAddressEntry &entry : interface.addressEntries()) {
            if (entry.ip().toString() != address)
                continue;
            QCOMPARE(window.hardwareId, interface.hardwareAddress().split(u':').join(QString()));
            if (interface.type() == QNetworkInterface::Ethernet)
                QVERIFY(QRegularExpression(u"^[0-9A-F]{12}$"_s).match(window.hardwareId).hasMatch());
            return;
        }
    }
    QFAIL("the first address belongs to no interface");
}

void TestWindow::networksOfOtherMachines_data()
{
    QTest::addColumn<QString>("setUp");
    QTest::addColumn<QString>("network");

    const QString bridge = u"ip link add br9 type bridge && ip link set br9 address 00:1a:2b:3c:4d:5e"_s;
    const QString up = u" && ip link set br9 up"_s;
    const QString two =
        u" && ip address add 192.0.2.1/24 dev br9 && ip address add 198.51.100.1/24 dev br9"_s;
    QTest::newRow("loopback alone") << u"true"_s << QString();
    QTest::newRow("an interface with two addresses")
        << bridge + two + up << u"001A2B3C4D5E 192.0.2.1 198.51.100.1"_s;
    QTest::newRow("an interface that is down") << bridge + two << QString();
    QTest::newRow("IPv6 alone") << bridge + u" && ip address add 2001:db8::1/64 dev br9"_s + up << QString();
}

void TestWindow::networksOfOtherMachines()
{
    QFETCH(const QString, setUp);
    QFETCH(const QString, network);
    if (qEnvironmentVariableIsSet(expectedNetwork)) {
        Window window;
        QCOMPARE(networkOf(window), qEnvironmentVariable(expectedNetwork));
        const QString found = window.hardwareId;
        window.fill(m_application);
        window.hardwareId = found;
        QByteArray hash;
        QCOMPARE(window.verifyData(hash), !network.isEmpty());
        QCOMPARE(window.status(), network.isEmpty() ? u"Geçerli ağ arayüzü bulunamadı."_s : QString());
        return;
    }

    // The same row once more, in a process of its own with a network of its own.
    QProcess prepared;
    const QString commands = u"ip link set lo up && "_s + setUp;
    prepared.start(u"unshare"_s, {u"-rn"_s, u"sh"_s, u"-c"_s, commands});
    if (!prepared.waitForFinished() || prepared.exitStatus() != QProcess::NormalExit ||
        prepared.exitCode() != 0)
        QSKIP("this machine does not let a test make a network of its own (unshare -rn, ip)");
    QProcess inside;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(expectedNetwork), network);
    inside.setProcessEnvironment(environment);
    inside.setProcessChannelMode(QProcess::MergedChannels);
    inside.start(u"unshare"_s, {u"-rn"_s, u"sh"_s, u"-c"_s, commands + u" && exec \"$0\" \"$1\""_s,
                                QCoreApplication::applicationFilePath(),
                                "networksOfOtherMachines:"_L1 + QLatin1String(QTest::currentDataTag())});
    QVERIFY(inside.waitForFinished());
    QVERIFY2(inside.exitStatus() == QProcess::NormalExit && inside.exitCode() == 0,
             inside.readAll().constData());
}

void TestWindow::textFromTheGuiThreadShowsAtOnce()
{
    Window window;
    window.setText(u"Eşleme hatası: 1007"_s);
    QCOMPARE(window.status(), u"Eşleme hatası: 1007"_s);
}

void TestWindow::textFromAnotherThreadShowsLater()
{
    Window window;
    window.setText(u"before"_s);
    std::thread([&window] { window.setText(u"after"_s); }).join(); // ends although nobody handles events
    QCOMPARE(window.status(), u"before"_s);
    QCoreApplication::processEvents();
    QCOMPARE(window.status(), u"after"_s);
}

void TestWindow::buttonsAreEnabledByEvents()
{
    Window window;
    std::thread([&window] { window.setButtonsEnabled(false); }).join();
    QVERIFY(window.form().pairPushButton->isEnabled());
    QVERIFY(window.form().testPushButton->isEnabled());
    QCoreApplication::processEvents();
    QVERIFY(!window.form().pairPushButton->isEnabled());
    QVERIFY(!window.form().testPushButton->isEnabled());
    QVERIFY(window.form().browsePushButton->isEnabled());
    QVERIFY(window.form().serialNoLineEdit->isEnabled());
    window.setButtonsEnabled(true);
    QCoreApplication::processEvents();
    QVERIFY(window.buttonsEnabled());
}

void TestWindow::browsing_data()
{
    QTest::addColumn<bool>("choose");
    QTest::newRow("a chosen file becomes the path") << true;
    QTest::newRow("cancelling leaves the path as it was") << false;
}

void TestWindow::browsing()
{
    QFETCH(const bool, choose);
    Window window;
    window.show();
    window.form().applicationPathLineEdit->setText(u"/before"_s);

    QString caption;
    QString folder;
    QObject *parent = nullptr;
    QTimer driver;
    connect(&driver, &QTimer::timeout, this, [&] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        driver.stop();
        caption = dialog->windowTitle();
        folder = dialog->directory().absolutePath();
        parent = dialog->parent();
        if (!choose)
            return dialog->reject();
        dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(m_application);
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open)->click();
    });
    driver.start(10);
    QTest::mouseClick(window.form().browsePushButton, Qt::LeftButton); // comes back when the dialog is done

    QCOMPARE(caption, u"Select Application"_s);
    QCOMPARE(parent, &window);
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    if (QDir(desktop).exists()) // without one the dialog falls back to a folder of its own choice
        QCOMPARE(folder, QDir(desktop).absolutePath());
    QCOMPARE(window.form().applicationPathLineEdit->text(), choose ? m_application : u"/before"_s);
}

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
