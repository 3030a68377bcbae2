#include "tests/support/closing_times.h"
#include "tests/support/ends_with_test.h"
#include "tests/support/window_under_test.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QNetworkInterface>
#include <QProcess>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>
#include <QTimer>

#include <thread>

using namespace Qt::StringLiterals;

namespace {

using Window = WindowUnderTest;

constexpr int longWait = 30'000; // ms, for a machine under load

/** Connects to the workflow's port as soon as it listens, and closes at once. */
void connectAndLeave(quint16 port)
{
    const QDeadlineTimer deadline(longWait);
    QTcpSocket socket;
    do {
        socket.abort();
        socket.connectToHost(QHostAddress::LocalHost, port);
    } while (!socket.waitForConnected(longWait) && !deadline.hasExpired()); // nobody listens yet
}

/** Whether somebody listens on this port of all addresses. A look alone: who tried it would be in the way. */
bool isListenedOn(quint16 port)
{
    QFile sockets(u"/proc/net/tcp"_s);
    const QByteArray line =
        ": 00000000:" + QByteArray::number(port, 16).rightJustified(4, '0').toUpper() + " 00000000:0000 0A ";
    return sockets.open(QIODevice::ReadOnly) && sockets.readAll().contains(line);
}

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

class TestWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

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

    void wrongFormIsRefused_data();
    void wrongFormIsRefused();
    void firstWrongFieldIsReported();
    void rightFormIsAccepted_data();
    void rightFormIsAccepted();

    void failedPairingShowsItsCode();
    void secondClickIsPartOfTheFirst();
    void paintsWhileAPairingWaits();
    void closingEndsAPairingAtOnce_data();
    void closingEndsAPairingAtOnce();
    void destructionEndsAPairingAtOnce();
    void windowThatWasClosedPairsAgain();
    void failureIsExplainedInTurkish();
    void pairsWithARegister_data();
    void pairsWithARegister();
    void pairsAgainAndAgain();

private:
    QString file(const QString &name, const QByteArray &content);
    void startRegister(QProcess &cashRegister, quint16 port);
    static bool ended(QProcess &cashRegister);

    QTemporaryDir m_dir;
    QString m_application;
};

void TestWindow::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QCoreApplication::setOrganizationName(u"dalmoriven"_s);
    QCoreApplication::setApplicationName(u"velno"_s);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.filePath(u"config"_s));
    m_application = file(u"satış uygulaması"_s, "application");
}

void TestWindow::init()
{
    // What Qt says when an object is touched on a thread that is not its own.
    QTest::failOnWarning(QRegularExpression(u"thread|QSocketNotifier|QObject::"_s));
}

void TestWindow::cleanup()
{
    QSettings().clear();
}

QString TestWindow::file(const QString &name, const QByteArray &content)
{
    QFile out(m_dir.filePath(name));
    if (!out.open(QIODevice::WriteOnly) || out.write(content) != content.size())
        qFatal("cannot write a file of the test");
    return out.fileName();
}

void TestWindow::startRegister(QProcess &cashRegister, quint16 port)
{
    QFile application(m_application);
    QVERIFY(application.open(QIODevice::ReadOnly));
    const QByteArray hash = QCryptographicHash::hash(application.readAll(), QCryptographicHash::Sha256);
    cashRegister.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    cashRegister.setChildProcessModifier(TestSupport::endsWithTest());
    cashRegister.start(QStringLiteral(VELNO_REGISTER),
                       {u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"127.0.0.1:%1"_s.arg(port),
                        u"--app-hash"_s, QString::fromLatin1(hash.toHex()), u"--once"_s});
    QVERIFY2(cashRegister.waitForStarted(), qUtf8Printable(cashRegister.errorString()));
}

/** Whether the register says with its exit code that it has paired. */
bool TestWindow::ended(QProcess &cashRegister)
{
    return (cashRegister.state() == QProcess::NotRunning || cashRegister.waitForFinished()) &&
           cashRegister.exitStatus() == QProcess::NormalExit && cashRegister.exitCode() == 0;
}

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
    inside.start(u"unshare"_s,
                 {u"-rn"_s, u"sh"_s, u"-c"_s, commands + u" && exec \"$0\" \"$1\""_s,
                  QCoreApplication::applicationFilePath(),
                  QLatin1String("networksOfOtherMachines:") + QLatin1String(QTest::currentDataTag())});
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

void TestWindow::wrongFormIsRefused_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("status");

    const auto rows = [](const char *title, const QString &field, const QStringList &values,
                         const QString &status) {
        for (const QString &value : values)
            QTest::addRow("%s '%s'", title, qUtf8Printable(value)) << field << value << status;
    };
    rows("port", u"portLineEdit"_s,
         {u""_s, u"0"_s, u"00000"_s, u"65536"_s, u"70000"_s, u"-1"_s, u"0x50"_s, u"8a"_s},
         u"Port geçerli değil."_s);
    rows("path", u"applicationPathLineEdit"_s, {u""_s}, u"Uygulama seçilmemiş."_s);
    rows("path", u"applicationPathLineEdit"_s, {u"/nothing/is/here"_s}, u"Uygulama yolu geçerli değil."_s);
    rows("serial number", u"serialNoLineEdit"_s,
         {u""_s, u"UB123"_s, u"UB123456789"_s, u"AB1234567890"_s, u"ub1234567890"_s, u"Ub1234567890"_s,
          u"U"_s, u"VELN12345678"_s, u"velno1234567"_s, u"VELNO123456"_s, u" UB123456789"_s},
         u"Cihaz sicil no geçerli değil."_s);
    rows("application number", u"applicationNoLineEdit"_s,
         {u""_s, u"0"_s, u"abc"_s, u"-1"_s, u"0x1F"_s, u"1.5"_s}, u"Uygulama no geçerli değil."_s);
    rows("hardware address", u"hardwareId"_s, {u""_s, u"001A2B3C4D5"_s, u"001A2B3C4D5E0"_s},
         u"Geçerli ağ arayüzü bulunamadı."_s);
    // A folder exists but does not open as a file: so does a file without permission, which root may read.
    rows("folder", u"applicationPathLineEdit"_s, {QDir::tempPath()},
         u"Uygulama dosyası açılamadı. Hata kodu: 5"_s);
#ifdef Q_OS_LINUX
    // Opens, but nothing is mapped at its beginning: the first read fails.
    rows("unreadable", u"applicationPathLineEdit"_s, {u"/proc/self/mem"_s},
         u"Uygulama özeti hesaplanamadı."_s);
#endif
}

void TestWindow::wrongFormIsRefused()
{
    QFETCH(const QString, field);
    QFETCH(const QString, value);
    QFETCH(const QString, status);
    Window window;
    window.fill(m_application);
    if (field == u"hardwareId"_s)
        window.hardwareId = value;
    else
        window.findChild<QLineEdit *>(field)->setText(value);

    QByteArray hash = "untouched";
    QVERIFY(!window.verifyData(hash));
    QCOMPARE(hash, "untouched");
    QCOMPARE(window.status(), status);

    // Both buttons check first and start nothing.
    window.setText(QString());
    window.pair();
    QCOMPARE(window.status(), status);
    window.setText(QString());
    window.test();
    QCOMPARE(window.status(), status);
    QCoreApplication::processEvents();
    QVERIFY(window.buttonsEnabled());
}

void TestWindow::firstWrongFieldIsReported()
{
    Window window;
    window.hardwareId.clear();
    const Ui_Gmp3UI &form = window.form();
    const auto status = [&window] {
        QByteArray hash;
        return window.verifyData(hash) ? u"accepted"_s : window.status();
    };

    QCOMPARE(status(), u"Port geçerli değil."_s);
    form.portLineEdit->setText(u"65535"_s);
    QCOMPARE(status(), u"Uygulama seçilmemiş."_s);
    form.applicationPathLineEdit->setText(u"/nothing/is/here"_s);
    QCOMPARE(status(), u"Uygulama yolu geçerli değil."_s);
    form.applicationPathLineEdit->setText(m_dir.path()); // exists: opening it comes last
    QCOMPARE(status(), u"Cihaz sicil no geçerli değil."_s);
    form.serialNoLineEdit->setText(u"VELNO1234567"_s);
    QCOMPARE(status(), u"Uygulama no geçerli değil."_s);
    form.applicationNoLineEdit->setText(u"1"_s);
    QCOMPARE(status(), u"Geçerli ağ arayüzü bulunamadı."_s);
    window.hardwareId = u"001A2B3C4D5E"_s;
    QCOMPARE(status(), u"Uygulama dosyası açılamadı. Hata kodu: 5"_s);
    form.applicationPathLineEdit->setText(m_application);
    QCOMPARE(status(), u"accepted"_s);
}

void TestWindow::rightFormIsAccepted_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("serialNo");
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("smallest port") << u"1"_s << u"192.0.2.1"_s << u"UB1234567890"_s << QByteArray("a");
    QTest::newRow("largest port") << u"65535"_s << u"192.0.2.1"_s << u"VELNO1234567"_s << QByteArray("a");
    QTest::newRow("relay without port") << QString() << u"TSM"_s << u"UBxxxxxxxxxx"_s << QByteArray("a");
    QTest::newRow("relay with a wrong port")
        << u"70000"_s << u"TSM"_s << u"UB1234567890"_s << QByteArray("a");
    QTest::newRow("empty application") << u"80"_s << u"192.0.2.1"_s << u"UB1234567890"_s << QByteArray();
    QTest::newRow("application of many pieces")
        << u"80"_s << u"192.0.2.1"_s << u"UB1234567890"_s << QByteArray(3'000'001, 'x');
}

void TestWindow::rightFormIsAccepted()
{
    QFETCH(const QString, port);
    QFETCH(const QString, address);
    QFETCH(const QString, serialNo);
    QFETCH(const QByteArray, content);
    Window window;
    window.fill(file(u"application"_s, content));
    window.chooseAddress(address);
    window.form().portLineEdit->setText(port);
    window.form().serialNoLineEdit->setText(serialNo);

    QByteArray hash;
    QVERIFY2(window.verifyData(hash), qUtf8Printable(window.status()));
    QCOMPARE(hash, QCryptographicHash::hash(content, QCryptographicHash::Sha256));
    QCOMPARE(window.status(), QString());
}

void TestWindow::failedPairingShowsItsCode()
{
    Window window;
    window.fill(m_application);
    window.form().applicationNoLineEdit->setText(u"14242"_s);
    const quint16 port = window.port();

    window.pair();
    QCOMPARE(window.status(), u"Cihazda eşlemeyi başlatabilirsiniz."_s);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsDisabled(), longWait);
    QVERIFY(window.form().browsePushButton->isEnabled());
    const std::jthread peer(connectAndLeave, port);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
    // The peer is gone before its first answer: seen by the write or by the read.
    QVERIFY2(QRegularExpression(u"^Eşleme hatası: [23]00[5-7]$"_s).match(window.status()).hasMatch(),
             qUtf8Printable(window.status()));
    QVERIFY(!QSettings().contains(u"irup"_s) && !QSettings().contains(u"irudsn"_s));
}

void TestWindow::secondClickIsPartOfTheFirst()
{
    Window window;
    window.fill(m_application);
    const quint16 port = window.port();
    window.pair();
    window.form().portLineEdit->setText(u"0"_s);
    QVERIFY(window.form().pairPushButton->isEnabled()); // no event has disabled it yet
    window.pair();
    QCOMPARE(window.status(), u"Cihazda eşlemeyi başlatabilirsiniz."_s);

    const std::jthread peer(connectAndLeave, port);
    QTRY_VERIFY_WITH_TIMEOUT(window.status().startsWith(u"Eşleme hatası: "_s), longWait);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
    window.pair(); // the next one counts again
    QCOMPARE(window.status(), u"Port geçerli değil."_s);
}

void TestWindow::paintsWhileAPairingWaits()
{
    QThreadPool *const pool = QThreadPool::globalInstance();
    const auto restore =
        qScopeGuard([pool, count = pool->maxThreadCount()] { pool->setMaxThreadCount(count); });
    pool->setMaxThreadCount(1); // as on a computer with one core; Qt paints with the same threads
    Window window;
    window.fill(m_application);
    const quint16 port = window.port();
    window.show();
    window.pair();
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsDisabled(), longWait);
    window.grab();
    QCoreApplication::processEvents();
    QCOMPARE(window.status(), u"Cihazda eşlemeyi başlatabilirsiniz."_s);
    connectAndLeave(port);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
}

void TestWindow::closingEndsAPairingAtOnce_data()
{
    QTest::addColumn<bool>("connected");
    QTest::newRow("that waits for a register") << false;
    QTest::newRow("with a register that is silent") << true;
}

void TestWindow::closingEndsAPairingAtOnce()
{
    QFETCH(const bool, connected);
    ClosingTimes times;
    for (int i = 0; i < ClosingTimes::enough; ++i) {
        Window window;
        window.fill(m_application);
        window.show();
        const quint16 port = window.port();
        window.pair();
        QTRY_VERIFY_WITH_TIMEOUT(isListenedOn(port), longWait);
        QTcpSocket silent;
        if (connected) {
            silent.connectToHost(QHostAddress::LocalHost, port);
            QVERIFY(silent.waitForReadyRead(longWait)); // it has been asked, and says nothing
        }
        times.measure([&window] { window.close(); });
        QVERIFY(!window.isVisible());
        QVERIFY(QTcpServer().listen(QHostAddress::Any, port)); // free for a window that is opened next
        QCoreApplication::processEvents();
        QCOMPARE(window.status(), u"Cihazda eşlemeyi başlatabilirsiniz."_s); // no error of nobody's
        QVERIFY(window.buttonsEnabled());
    }
    QVERIFY2(times.areShort(), qPrintable(times.inWords()));
}

void TestWindow::destructionEndsAPairingAtOnce()
{
    ClosingTimes times;
    for (int i = 0; i < ClosingTimes::enough; ++i) {
        auto window = std::make_unique<Window>();
        window->fill(m_application);
        const quint16 port = window->port();
        window->pair(); // and before its thread has begun
        times.measure([&window] { window.reset(); });
        QVERIFY(QTcpServer().listen(QHostAddress::Any, port));
    }
    QVERIFY2(times.areShort(), qPrintable(times.inWords()));
}

void TestWindow::windowThatWasClosedPairsAgain()
{
    Window window;
    window.fill(m_application);
    window.show();
    window.pair();
    window.close();
    window.show();
    QProcess cashRegister;
    startRegister(cashRegister, window.port());
    window.pair();
    QTRY_COMPARE_WITH_TIMEOUT(window.status(), u"Eşleme başarılı."_s, longWait);
    QVERIFY(ended(cashRegister));
}

void TestWindow::failureIsExplainedInTurkish()
{
    Window window;
    window.fill(m_application);
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::Any, window.port()));
    window.pair();
    QTRY_COMPARE_WITH_TIMEOUT(window.status(), u"Eşleme hatası: 1006"_s, longWait);
    const QLabel *const label = window.form().resultLabel;
    const QString reason = window.reason();
    QVERIFY2(reason.startsWith(u"Bağlantı noktası (port) bu bilgisayarda kullanımda."_s), qPrintable(reason));
    QVERIFY2(reason.contains(u"\nÇözüm: "_s), qPrintable(reason));
    QCOMPARE(label->accessibleDescription(), reason);

    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
    window.form().portLineEdit->clear();
    window.pair(); // the reason goes with its text
    QCOMPARE(window.status(), u"Port geçerli değil."_s);
    QCOMPARE(label->toolTip(), QString());
    QCOMPARE(label->accessibleDescription(), QString());
}

void TestWindow::pairsWithARegister_data()
{
    QTest::addColumn<QString>("applicationNo");
    QTest::addColumn<bool>("relay");
    QTest::addColumn<bool>("stored");

    QTest::newRow("another application stores nothing") << u"4711"_s << false << false;
    QTest::newRow("the PC application stores the port") << u"14242"_s << false << true;
    QTest::newRow("the PC application over the relay stores 0") << u"14242"_s << true << true;
}

void TestWindow::pairsWithARegister()
{
    QFETCH(const QString, applicationNo);
    QFETCH(const bool, relay);
    QFETCH(const bool, stored);
    Window window;
    window.fill(m_application);
    window.form().applicationNoLineEdit->setText(applicationNo);
    window.form().tsmCheckBox->setChecked(relay);

    QProcess cashRegister;
    startRegister(cashRegister, window.port());
    window.pair();
    QTRY_COMPARE_WITH_TIMEOUT(window.status(), u"Eşleme başarılı."_s, longWait);
    QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
    QVERIFY(ended(cashRegister));

    const QSettings settings;
    QCOMPARE(settings.allKeys().size(), stored ? 2 : 0);
    if (stored) {
        QCOMPARE(settings.value(u"irup"_s).toInt(), relay ? 0 : window.port());
        QCOMPARE(settings.value(u"irudsn"_s).toString(), u"UB1234567890"_s);
    }
}

void TestWindow::pairsAgainAndAgain()
{
    Window window;
    window.fill(m_application);
    for (int i = 0; i < 3; ++i) {
        QProcess cashRegister;
        startRegister(cashRegister, window.port());
        window.pair();
        QTRY_COMPARE_WITH_TIMEOUT(window.status(), u"Eşleme başarılı."_s, longWait);
        QTRY_VERIFY_WITH_TIMEOUT(window.buttonsEnabled(), longWait);
        QVERIFY(ended(cashRegister));
    }
}

QTEST_MAIN(TestWindow)

#include "tst_window.moc"
