// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/network/interruption.h"

#include <QByteArray>
#include <QFuture>
#include <QPair>
#include <QSemaphore>
#include <QString>
#include <QWidget>

#include <atomic>
#include <memory>
#include <optional>

QT_BEGIN_NAMESPACE
class Ui_Gmp3UI;
QT_END_NAMESPACE

/**
 * The pairing window: collects what a pairing or a device test needs, runs one of them at a time on a thread
 * of the global pool and shows one line of status. Widgets are touched on the GUI thread alone; a workflow
 * reaches the window only through setText() and setButtonsEnabled().
 *
 * The workflow itself disables the buttons, so a quick second click still comes through. The engine holds one
 * conversation in a process: such a click counts as part of the workflow under way.
 *
 * Closing the window ends a running workflow, whatever it waits for, within 200 ms; so does its destruction.
 * The port is free then, and nothing more is shown.
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

    /** Shows a status text without a reason. From any thread; returns at once. */
    void setText(const QString &text);

    /**
     * Shows a status text, and a failure's reason as the tool tip and accessible description of its label.
     * From any thread; returns at once.
     *
     * @param cause  as velnoext_cause() and the codes of a pairing; 0 for none
     */
    void setText(const QString &text, int cause);

    /** Enables or disables both action buttons, once the GUI thread gets to it. From any thread. */
    void setButtonsEnabled(bool enabled);

private slots:
    void on_pairPushButton_clicked();
    void on_browsePushButton_clicked();
    void on_testPushButton_clicked();

private:
    using Device = QPair<QByteArray, unsigned short>; ///< local address (Latin-1) and port

    enum class Workflow { None, Pairing, Test };

    void setIpAddresses();
    Device device() const;
    QString terminalId() const;
    void begin(Workflow workflow);
    void end(); ///< the last that a workflow does
    /** Ends the workflow that is under way, if any. */
    void stop();
    bool isStopping() const { return m_stop.available() > 0; }

    void exchangeKey(Device device, QString serialNo, QString applicationNo, QString terminalId,
                     QByteArray applicationHash);
    void testDevice(Device device, QString serialNo, QString applicationNo, QString terminalId);
    /** Asks the connected register one thing after the other and closes the connection. */
    void queryDevice();
    /** Whether the result is 0; otherwise closes the connection and shows the failure, %1 the result. */
    bool passed(int result, const QString &failure);
    /** Lets the technician read. @return false when the workflow is to end; the connection is closed then */
    bool pause();

protected:
    void closeEvent(QCloseEvent *event) override;

    std::unique_ptr<Ui_Gmp3UI> ui;

    /** 12 hexadecimal digits: the hardware address of the first usable network interface; empty without one.
     */
    QString hardwareId;

    /** How long each text of a device test stays, ms. */
    std::atomic_int testPause = 2000;

private:
    QFuture<void> m_workflow;
    std::atomic<Workflow> m_running = Workflow::None;
    QSemaphore m_stop;  ///< available once the workflow is to end
    QSemaphore m_ended; ///< available once the workflow has ended
    Velno::Interruption m_interruption;
    std::optional<Velno::Interruption::Call> m_call; ///< from a workflow's beginning to the next one's
};
