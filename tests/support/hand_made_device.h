// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/match_ext.h"
#include "tests/support/hand_made_register.h"

#include <QMutex>

#include <memory>

QT_FORWARD_DECLARE_CLASS(QTcpServer)

namespace TestSupport {

using namespace Qt::StringLiterals;

/**
 * A register as the device library meets it, on a thread of its own: it pairs when asked to, then stays
 * connected and answers each frame as the test says.
 */
class HandMadeDevice
{
public:
    /** Runs of bytes to write, one by one, for the payload of a frame that came. */
    using Answer = std::function<QList<QByteArray>(const QByteArray &payload)>;

    explicit HandMadeDevice(const QByteArray &serialNo = "UB1234567890");
    ~HandMadeDevice();
    Q_DISABLE_COPY_MOVE(HandMadeDevice)

    /** Comes as a register that was never paired: announcement, key exchange, data. */
    void pairAndServe(quint16 port, int times = 1, HandMadeRegister::Hook hook = {});
    /** Comes with the keys of `record`: data only. `times`: how often it comes again after a close. */
    void serve(quint16 port, int times = 1);
    /** From now on contacts come through a relay that this object plays. Its answer to a name: see echo. */
    void playRelay(quint16 port);
    void stop();

    void setAnswer(const Answer &answer);
    /** Answers every command with this plaintext. */
    void answerPlain(const QByteArray &plaintext);
    /** Answers one command after the other with these, says nothing for an empty one, and closes behind them.
     */
    void answerInTurn(const QList<QByteArray> &plaintexts);
    /** Answers with this plaintext and closes in the same segment, so that both are there at once. */
    void answerAndClose(const QByteArray &plaintext);
    /** Closes in place of an answer. */
    void answerByClosing();

    /** The plaintexts of the commands that came. */
    QList<QByteArray> commands();
    void forgetCommands();

    QByteArray sealed(const QByteArray &plaintext) const; ///< the frame of an honest reply
    QByteArray withElements(const QByteArray &run) const; ///< a frame around any elements
    QByteArray opened(const QByteArray &frame) const;     ///< the plaintext of a command's frame
    static QByteArray framed(const QByteArray &payload);  ///< with its length in front

    Velno::GMP::MatchExt record;
    QByteArray announcement;          ///< payload on the first contact
    QByteArray appHash;               ///< as received
    QString address = u"127.0.0.1"_s; ///< where the library listens
    /** What the relay answers to a name, written run by run; it leaves behind fewer than 12 bytes. */
    std::function<QList<QByteArray>(const QByteArray &)> echo = [](const QByteArray &name) {
        return QList{name};
    };
    bool leavesWithEcho = false; ///< the relay's echo and its close arrive in one segment
    std::atomic<int> contacts = 0;

private:
    std::unique_ptr<QTcpSocket> nextContact();
    std::unique_ptr<QTcpSocket> contactThroughRelay();
    void answerName(QTcpSocket &socket);
    void run(quint16 port, const std::function<void()> &contactsInOrder);
    void listenAsRelay();
    void announce();
    void exchangeKeys(const HandMadeRegister::Hook &hook);
    void serveOne();
    bool await(QTcpSocket &socket, qint64 count);
    QByteArray readPayload(QTcpSocket &socket);
    void answerTo(QTcpSocket &socket, const QByteArray &payload);

    QByteArray m_serialNo;
    quint16 m_port = 0;
    quint16 m_relayPort = 0;
    std::unique_ptr<QTcpServer> m_relay;
    mutable QMutex m_sealing; // guards what `record` keeps for its cipher and MAC
    QMutex m_mutex;           // guards the three below
    Answer m_answer;
    bool m_closesBehind = false;
    QList<QByteArray> m_commands;
    std::atomic<bool> m_stop = false;
    std::atomic<bool> m_relayReady = false;
    std::thread m_thread;
};

} // namespace TestSupport
