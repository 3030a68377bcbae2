#pragma once

#include <QByteArray>
#include <QFuture>
#include <QPair>
#include <QSemaphore>
#include <QString>
#include <QWidget>

#include <atomic>
#include <memory>

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
 * Destroying the window waits for a running workflow: a pairing is seen through, a device test ends at its
 * next pause. That can take as long as it waits for a register; see endTest().
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

    /**
     * For the end of the program, once the window has been closed: ends a device test at its next pause. A
     * register may leave it without an answer for ever; after graceOfATest this ends the process with the
     * exit status. Returns when no device test runs.
     */
    void endTest(int status);

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

    void exchangeKey(Device device, QString serialNo, QString applicationNo, QString terminalId,
                     QByteArray applicationHash);
    void testDevice(Device device, QString serialNo, QString applicationNo, QString terminalId);
    /** Asks the connected register one thing after the other and closes the connection. */
    void queryDevice();
    /** Whether the result is 0; otherwise closes the connection and shows the failure, %1 the result. */
    bool passed(int result, const QString &failure);
    /** Lets the technician read. @return false when the window is being closed; so is the connection then */
    bool pause();

protected:
    std::unique_ptr<Ui_Gmp3UI> ui;

    /** 12 hexadecimal digits: the hardware address of the first usable network interface; empty without one.
     */
    QString hardwareId;

    /** How long each text of a device test stays, ms. */
    std::atomic_int testPause = 2000;

    /** How long endTest() waits for a device test to end, ms. */
    int graceOfATest = 1000;

private:
    QFuture<void> m_workflow;
    std::atomic<Workflow> m_running = Workflow::None;
    QSemaphore m_closing; ///< available once the window is being closed
};
