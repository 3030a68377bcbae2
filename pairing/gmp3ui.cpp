#include "pairing/gmp3ui.h"

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/network/velno_network.h"
#include "ui_gmp3ui.h"

#include <QFile>
#include <QFileDialog>
#include <QNetworkInterface>
#include <QSettings>
#include <QStandardPaths>
#include <QThread>
#include <QtConcurrent>

#include <utility>

namespace {

constexpr int pcApplicationNo = 14242; // this tool's own application on the PC
constexpr int serialNoLength = 12;
constexpr int hardwareIdLength = 12;

const auto tsmSuffix = QLatin1String(":tsm");

bool isPort(const QString &text)
{
    bool ok = false;
    return text.toUShort(&ok, 10) != 0 && ok;
}

bool isSerialNo(const QString &text)
{
    return text.size() == serialNoLength &&
           (text.startsWith(QLatin1String("UB")) || text.startsWith(QLatin1String("VELNO")));
}

bool isApplicationNo(const QString &text)
{
    bool ok = false;
    return text.toUInt(&ok, 10) != 0 && ok;
}

void storeRegister(int port, const QString &serialNo)
{
    QSettings settings;
    settings.setValue(QStringLiteral("irup"), port);
    settings.setValue(QStringLiteral("irudsn"), serialNo);
}

/** The exchange leaves the session open. The socket belongs to this thread, and nothing is said on it any
 * more. */
void closeSession()
{
    velno_network_disconnect(std::exchange(Velno::GMP::connection_handle, 0U));
}

} // namespace

Gmp3UI::Gmp3UI(QWidget *parent)
    : QWidget(parent)
    , ui(std::make_unique<Ui_Gmp3UI>())
{
    ui->setupUi(this);
    setIpAddresses();
    ui->tsmCheckBox->hide();
}

Gmp3UI::~Gmp3UI()
{
    // The workflow posts to our widgets until its last line. What it has posted goes away with them.
    m_workflow.waitForFinished();
}

bool Gmp3UI::verifyData(QByteArray &hash)
{
    const auto refuse = [this](const QString &text) {
        setText(text);
        return false;
    };

    if (ui->ipComboBox->currentText() != QLatin1String("TSM") && !isPort(ui->portLineEdit->text()))
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
    if (QThread::currentThread() == thread())
        ui->resultLabel->setText(text);
    else
        QMetaObject::invokeMethod(ui->resultLabel, "setText", Q_ARG(QString, text));
}

void Gmp3UI::setButtonsEnabled(bool enabled)
{
    QMetaObject::invokeMethod(ui->pairPushButton, "setEnabled", Q_ARG(bool, enabled));
    QMetaObject::invokeMethod(ui->testPushButton, "setEnabled", Q_ARG(bool, enabled));
}

void Gmp3UI::on_pairPushButton_clicked()
{
    // The buttons are disabled by the workflow itself, so a quick second click still comes through. The
    // engine holds one conversation in a process: the click counts as part of the pairing under way.
    if (m_pairing)
        return;

    QByteArray hash;
    if (!verifyData(hash))
        return;

    m_workflow.waitForFinished(); // of the one before nothing but its return can be left
    m_pairing = true;
    const Device device{ui->ipComboBox->currentText().toLatin1(), ui->portLineEdit->text().toUShort()};
    m_workflow = QtConcurrent::run(&Gmp3UI::exchangeKey, this, device, ui->serialNoLineEdit->text(),
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
    QByteArray hash;
    if (!verifyData(hash))
        return;
    if (ui->applicationNoLineEdit->text() == QString::number(pcApplicationNo))
        setText(tr("Cihaz testi velno PC uygulaması için yapılamaz."));
    else
        setText(tr("Cihaz testi bu sürümde yok.")); // until the device library, which it drives, is here
}

/** The addresses a register can be told to connect to. The first interface that has one names this computer.
 */
void Gmp3UI::setIpAddresses()
{
    hardwareId.clear();
    for (const QNetworkInterface &interface : QNetworkInterface::allInterfaces()) {
        if (interface.flags().testFlag(QNetworkInterface::IsLoopBack) ||
            !interface.flags().testFlag(QNetworkInterface::IsUp))
            continue;
        for (const QNetworkAddressEntry &entry : interface.addressEntries()) {
            if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol)
                continue;
            ui->ipComboBox->addItem(entry.ip().toString());
            if (hardwareId.isEmpty())
                hardwareId = interface.hardwareAddress().remove(QLatin1Char(':'));
        }
    }
}

QString Gmp3UI::terminalId() const
{
    return ui->tsmCheckBox->isChecked() ? hardwareId + tsmSuffix : hardwareId;
}

/** Runs on a thread of the global pool. The address is not used: the register may come in on any of ours. */
void Gmp3UI::exchangeKey(Device device, QString serialNo, QString applicationNo, QString terminalId,
                         QByteArray applicationHash)
{
    setButtonsEnabled(false);

    Velno::GMP::MatchExt record;
    const int result =
        Velno::GMP::GMP3_KeyExchange_Server(record, quint16(device.second), serialNo.toLatin1().constData(),
                                            terminalId.toLatin1().constData(), applicationHash);
    closeSession();
    OPENSSL_thread_stop(); // what it keeps for this thread: the pool ends the thread when OpenSSL may be gone
    if (result != 0) {
        setText(tr("Eşleme hatası: ") + QString::number(result));
    } else {
        setText(tr("Eşleme başarılı."));
        if (applicationNo.toInt() == pcApplicationNo)
            storeRegister(terminalId.endsWith(tsmSuffix) ? 0 : device.second, serialNo);
    }

    m_pairing = false; // before the buttons come back: the next click counts
    setButtonsEnabled(true);
}
