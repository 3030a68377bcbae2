// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/register/pairing_responder.h"

#include <QByteArray>
#include <QHash>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

/**
 * Any number of registers behind a relay, in one process: it takes every name, pairs, and answers each
 * command with the Z number 42. What it does for one of them does not depend on how many there are.
 */
class RegisterFarm
{
public:
    /** Listens on 127.0.0.1. @param authority  folder of the development authority */
    RegisterFarm(uint16_t port, const std::string &authority);

    /** Serves until the process is killed. */
    [[noreturn]] void run();

private:
    /** What one connection has said so far. */
    struct Line
    {
        QByteArray serialNo; ///< empty until it was named
        QByteArray received;
    };

    void accept();
    void take(int descriptor);
    bool talkOnce(int descriptor, Line &line);
    void pair(int descriptor, const QByteArray &serialNo, const QByteArray &frame);
    void answer(int descriptor, const QByteArray &serialNo, const QByteArray &frame);

    Simulator::PairingResponder &responderOf(const QByteArray &serialNo);

    int m_epoll;
    int m_listener;
    QString m_credentials;
    Simulator::Faults m_faults;
    std::unordered_map<int, Line> m_lines;
    QHash<QByteArray, std::shared_ptr<Simulator::PairingResponder>> m_pairing; ///< those that pair now
    QHash<QByteArray, Velno::GMP::MatchExt> m_records;                         ///< of those that have
};
