#pragma once

#include <QByteArray>
#include <QFuture>
#include <QPair>
#include <QString>
#include <QWidget>

#include <atomic>
#include <memory>

QT_BEGIN_NAMESPACE
class Ui_Gmp3UI;
QT_END_NAMESPACE

/**
 * The pairing window: collects what a pairing needs, runs it on a thread of the global pool and shows one
 * line of status. Widgets are touched on the GUI thread alone; a workflow reaches the window only through
 * setText() and setButtonsEnabled(). Destroying the window waits for a running workflow, which can take as
 * long as the workflow waits for a register.
 */
class Gmp3UI : public QWidget
{
    Q_OBJECT

public:
    explicit Gmp3UI(QWidget *parent = nullptr);
    ~Gmp3UI() override;

    /**
     * Checks the form and hashes the application file; shows the first thing that is wrong.
     *
     * @param hash  SHA-256 of the application file, 32 bytes; untouched on failure
     */
    [[nodiscard]] bool verifyData(QByteArray &hash);

    /** Shows a status text. From any thread; returns at once. */
    void setText(const QString &text);

    /** Enables or disables both action buttons, once the GUI thread gets to it. From any thread. */
    void setButtonsEnabled(bool enabled);

private slots:
    void on_pairPushButton_clicked();
    void on_browsePushButton_clicked();
    void on_testPushButton_clicked();

private:
    using Device = QPair<QByteArray, unsigned short>; ///< local address (Latin-1) and port

    void setIpAddresses();
    QString terminalId() const;
    void exchangeKey(Device device, QString serialNo, QString applicationNo, QString terminalId,
                     QByteArray applicationHash);

protected:
    std::unique_ptr<Ui_Gmp3UI> ui;

    /** 12 hexadecimal digits: the hardware address of the first usable network interface; empty without one.
     */
    QString hardwareId;

private:
    QFuture<void> m_workflow;
    std::atomic_bool m_pairing = false;
};
