// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/gmp3.h"
#include "tests/support/test_authority.h"

#include <QList>

QT_FORWARD_DECLARE_CLASS(QTcpSocket)

#include <atomic>
#include <functional>
#include <thread>

namespace TestSupport {

/** Field elements of a message, in order. */
using Fields = QList<Velno::GMP::Field>;

QByteArray valueOf(const Fields &fields, const QByteArray &tag);
void replaceValue(Fields &fields, const QByteArray &tag, const QByteArray &value);
void removeField(Fields &fields, const QByteArray &tag);

/** One request that the register has received. */
struct Request
{
    Velno::GMP::MessageTag kind = Velno::GMP::None;
    Fields fields;
};

/**
 * A register on a thread of its own, written without the engine's session (which the tool in the same
 * process uses), so that it can say anything. It answers honestly unless a hook says otherwise. Its keys are
 * overwritten at its end.
 */
class HandMadeRegister
{
public:
    /** Frames to send for a request; `count` numbers the requests from 1. */
    using Hook = std::function<QList<QByteArray>(HandMadeRegister &, const Request &, int count)>;

    explicit HandMadeRegister(Hook hook = {});
    ~HandMadeRegister();
    Q_DISABLE_COPY_MOVE(HandMadeRegister)

    /** Connects to the port on this machine as soon as somebody listens, and plays one conversation. */
    void start(quint16 port);

    /** Plays one conversation on the calling thread, until the peer closes. */
    void converse(QTcpSocket &socket);

    /** Waits until the conversation has ended; returns the requests that came, in order. */
    QList<Request> finish();

    /** The fields of the honest answer; making it brings this side's keys up to date. */
    Fields honestAnswer(const Request &request);

    static QByteArray frameOf(Velno::GMP::MessageTag kind, const Fields &fields, bool response = true);

    Credentials credentials = developmentRegister();
    Velno::PkeyPtr dh;  ///< of the second answer
    QByteArray secret;  ///< that the third answer's keys are made from
    QByteArray appHash; ///< as received in the third request, decrypted; empty when that failed
    QByteArray aesKey, kcvIv, hmacKey;

private:
    void connectAndConverse(quint16 port);
    Fields answerStart();
    Fields answerKeyExchange(const Request &request);
    Fields answerConfirm(const Request &request);

    Hook m_hook;
    QList<Request> m_requests;
    QByteArray m_requesterRandom;
    QByteArray m_responderRandom;
    std::atomic<bool> m_stop = false;
    std::thread m_thread;
};

} // namespace TestSupport
