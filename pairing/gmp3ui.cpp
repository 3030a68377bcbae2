// SPDX-License-Identifier: Apache-2.0

#include "pairing/gmp3ui.h"

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/network/local_interfaces.h"
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "ui_gmp3ui.h"

#include <QCloseEvent>
#include <QFile>
#include <QFileDialog>
#include <QSettings>
#include <QStandardPaths>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int pcApplicationNo = 14242; // this tool's own application on the PC
constexpr int serialNoLength = 12;
constexpr int hardwareIdLength = 12;

constexpr unsigned int deviceTimeout = 10'000; // ms
constexpr int noPaper = 9;

const auto tsmSuffix = ":tsm"_L1;
const auto tsmAddress = "255.255.255.255"_ba; // stands for the relay

bool isPort(const QString &text)
{
    bool ok = false;
    return text.toUShort(&ok, 10) != 0 && ok;
}

bool isSerialNo(const QString &text)
{
    return text.size() == serialNoLength && (text.startsWith("UB"_L1) || text.startsWith("VELNO"_L1));
}

bool isApplicationNo(const QString &text)
{
    bool ok = false;
    return text.toUInt(&ok, 10) != 0 && ok;
}

void storeRegister(int port, const QString &serialNo)
{
    QSettings settings;
    settings.setValue(u"irup"_s, port);
    settings.setValue(u"irudsn"_s, serialNo);
}

/** The exchange leaves the session open. The socket belongs to this thread, and nothing is said on it any
 * more. */
void closeSession()
{
    velno_network_disconnect(std::exchange(Velno::GMP::connection_handle, 0U));
}

/** A text of several lines for a tool tip: of rich text alone, long lines are broken. */
QString inLines(const QString &text)
{
    if (text.isEmpty())
        return {};
    return u"<p>%1</p>"_s.arg(text.toHtmlEscaped().replace(QLatin1Char('\n'), "<br>"_L1));
}

/**
 * While it lives, the pool may start one thread more than it has: this one does little but wait. Qt paints
 * with threads of the same pool, and on a computer with one core it would have none left for the window.
 */
class WaitingThread
{
public:
    WaitingThread() { QThreadPool::globalInstance()->releaseThread(); }
    ~WaitingThread() { QThreadPool::globalInstance()->reserveThread(); }
    Q_DISABLE_COPY_MOVE(WaitingThread)
};

} // namespace

Gmp3UI::Gmp3UI(QWidget *parent)
    : QWidget(parent)
    , ui(std::make_unique<Ui_Gmp3UI>())
{
    ui->setupUi(this);
    velnoext_set_language("tr");
    setIpAddresses();
    ui->tsmCheckBox->hide();
}

Gmp3UI::~Gmp3UI()
{
    // The workflow posts to our widgets until its last line. What it has posted goes away with them.
    stop();
    m_workflow.waitForFinished();
}

void Gmp3UI::closeEvent(QCloseEvent *event)
{
    stop();
    QWidget::closeEvent(event);
}

bool Gmp3UI::verifyData(QByteArray &hash)
{
    const auto refuse = [this](const QString &text) {
        setText(text);
        return false;
    };

    if (ui->ipComboBox->currentText() != "TSM"_L1 && !isPort(ui->portLineEdit->text()))
        return refuse(tr("Port geçerli değil."));

    const QString path = ui->applicationPathLineEdit->text();
    if (path.isEmpty())
        return refuse(tr("Uygulama seçilmemiş."));
    if (!QFile::exists(path))
        return refuse(tr("Uygulama yolu geçerli değil."));
    if (!isSerialNo(ui->serialNoLineEdit->text()))
        return refuse(tr("Cihaz sicil no geçerli değil."));
    if (!isApplicationNo(ui->applicationNoLineEdit->text()))
        return refuse(tr("Uygulama no geçerli değil."));
    if (hardwareId.size() != hardwareIdLength)
        return refuse(tr("Geçerli ağ arayüzü bulunamadı."));

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) // it is read in large pieces
        return refuse(tr("Uygulama dosyası açılamadı.") + tr(" Hata kodu: ") + QString::number(file.error()));
    const QByteArray digest = Velno::sha256Sum(file);
    if (digest.isEmpty())
        return refuse(tr("Uygulama özeti hesaplanamadı."));
    hash = digest;
    return true;
}

void Gmp3UI::setText(const QString &text)
{
    setText(text, 0);
}

void Gmp3UI::setText(const QString &text, int cause)
{
    const QString reason = cause == 0 ? QString() : QString::fromUtf8(velnoext_cause_text(cause));
    const auto show = [label = ui->resultLabel, text, reason] {
        label->setText(text);
        label->setToolTip(inLines(reason));
        label->setAccessibleDescription(reason);
    };
    if (QThread::currentThread() == thread())
        show();
    else
        QMetaObject::invokeMethod(ui->resultLabel, show);
}

void Gmp3UI::setButtonsEnabled(bool enabled)
{
    QMetaObject::invokeMethod(ui->pairPushButton, "setEnabled", Q_ARG(bool, enabled));
    QMetaObject::invokeMethod(ui->testPushButton, "setEnabled", Q_ARG(bool, enabled));
}

void Gmp3UI::on_pairPushButton_clicked()
{
    if (m_running != Workflow::None)
        return;

    QByteArray hash;
    if (!verifyData(hash))
        return;

    begin(Workflow::Pairing);
    m_workflow = QtConcurrent::run(&Gmp3UI::exchangeKey, this, device(), ui->serialNoLineEdit->text(),
                                   ui->applicationNoLineEdit->text(), terminalId(), hash);
    setText(tr("Cihazda eşlemeyi başlatabilirsiniz."));
}

void Gmp3UI::on_browsePushButton_clicked()
{
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Select Application"), QStandardPaths::writableLocation(QStandardPaths::DesktopLocation));
    if (!path.isEmpty())
        ui->applicationPathLineEdit->setText(path);
}

void Gmp3UI::on_testPushButton_clicked()
{
    if (m_running != Workflow::None)
        return;

    QByteArray hash; // not needed here, but the test asks for the same form as the pairing
    if (!verifyData(hash))
        return;
    if (ui->applicationNoLineEdit->text() == QString::number(pcApplicationNo))
        return setText(tr("Cihaz testi velno PC uygulaması için yapılamaz."));

    begin(Workflow::Test);
    m_workflow = QtConcurrent::run(&Gmp3UI::testDevice, this, device(), ui->serialNoLineEdit->text(),
                                   ui->applicationNoLineEdit->text(), terminalId());
}

/** The addresses a register can be told to connect to. The first interface that has one names this computer.
 */
void Gmp3UI::setIpAddresses()
{
    hardwareId.clear();
    for (const Velno::LocalInterface &interface : Velno::localInterfaces()) {
        for (const QHostAddress &address : interface.addresses)
            ui->ipComboBox->addItem(address.toString());
        if (hardwareId.isEmpty())
            hardwareId = interface.hardwareAddress;
    }
}

QString Gmp3UI::terminalId() const
{
    return ui->tsmCheckBox->isChecked() ? hardwareId + tsmSuffix : hardwareId;
}

Gmp3UI::Device Gmp3UI::device() const
{
    return {ui->ipComboBox->currentText().toLatin1(), ui->portLineEdit->text().toUShort()};
}

void Gmp3UI::begin(Workflow workflow)
{
    m_workflow.waitForFinished(); // the one before has ended but for its return
    m_stop.tryAcquire(m_stop.available());
    m_ended.tryAcquire(m_ended.available());
    m_call.emplace(m_interruption); // from here on stop() reaches it
    m_running = workflow;
}

void Gmp3UI::stop()
{
    if (m_running == Workflow::None)
        return;
    m_stop.release();
    do {
        m_interruption.request();
        velnoext_interrupt(); // and again: a device test may be between two calls
    } while (!m_ended.tryAcquire(1, 10));
}

void Gmp3UI::end()
{
    OPENSSL_thread_stop();      // here, as the pool may end the thread when OpenSSL is gone
    m_running = Workflow::None; // before the buttons come back: the next click counts
    setButtonsEnabled(true);
    m_ended.release();
}

/** Runs on a thread of the global pool. The address is not used: the register may come in on any of ours. */
void Gmp3UI::exchangeKey(Device device, QString serialNo, QString applicationNo, QString terminalId,
                         QByteArray applicationHash)
{
    const WaitingThread waiting;
    const Velno::WaitScope scope(m_interruption);
    setButtonsEnabled(false);

    Velno::GMP::MatchExt record;
    const int result =
        Velno::GMP::GMP3_KeyExchange_Server(record, quint16(device.second), serialNo.toLatin1().constData(),
                                            terminalId.toLatin1().constData(), applicationHash);
    closeSession();
    if (result != 0) {
        if (!isStopping())
            setText(tr("Eşleme hatası: ") + QString::number(result), result);
    } else {
        setText(tr("Eşleme başarılı."));
        if (applicationNo.toInt() == pcApplicationNo)
            storeRegister(terminalId.endsWith(tsmSuffix) ? 0 : device.second, serialNo);
    }
    end();
}

/** Runs on a thread of the global pool. The register must come to the address that the form names. */
void Gmp3UI::testDevice(Device device, QString serialNo, QString applicationNo, QString terminalId)
{
    const WaitingThread waiting;
    setButtonsEnabled(false);
    if (terminalId.endsWith(tsmSuffix))
        device.first = tsmAddress;

    setText(tr("Cihaza bağlanılıyor..."));
    const int result = velnoext_initialize(applicationNo.toUInt(), serialNo.toLatin1().constData(),
                                           device.first.constData(), device.second, deviceTimeout);
    if (passed(result, tr("Bağlantı hatası: %1"))) {
        setText(tr("Cihaza bağlanıldı."));
        queryDevice();
    }
    end();
}

void Gmp3UI::queryDevice()
{
    int state = 0;
    if (!pause() || !passed(velnoext_ecr_state(deviceTimeout, &state), tr("Cihaz durumu sorgulanamadı: %1")))
        return;
    setText(tr("Cihaz durumu: %1").arg(state));

    int z = 0;
    if (!pause() || !passed(velnoext_current_z(deviceTimeout, &z), tr("Z no sorgulanamadı: %1")))
        return;
    setText(tr("Z no: %1").arg(quint32(z)));

    if (!pause())
        return;
    const int paper = velnoext_check_printer_paper(deviceTimeout);
    if (paper == noPaper)
        setText(tr("Yazıcıda kağıt yok.")); // and the text for paper after it: technicians know this sequence
    else if (!passed(paper, tr("Kağıt durumu sorgulanamadı: %1")))
        return;
    velnoext_close();
    setText(tr("Yazıcıda kağıt var."));
    if (pause())
        setText(tr("Cihaz testi tamamlandı."));
}

bool Gmp3UI::passed(int result, const QString &failure)
{
    if (result == 0)
        return true;
    const int cause = velnoext_cause(); // closing sets it back
    velnoext_close();
    if (!isStopping())
        setText(failure.arg(result), cause);
    return false;
}

bool Gmp3UI::pause()
{
    if (!m_stop.tryAcquire(1, testPause))
        return true;
    m_stop.release(); // it stays a wish until the next workflow
    velnoext_close();
    return false;
}
