// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <utility>

namespace Fuzz {

/** A socket descriptor, closed with the object. */
class Descriptor
{
public:
    explicit Descriptor(int number = -1)
        : m_number(number)
    {
    }
    ~Descriptor();
    Descriptor(Descriptor &&other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {
    }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    Q_DISABLE_COPY(Descriptor)

    int number() const { return m_number; }
    explicit operator bool() const { return m_number >= 0; }

    /** Sends what the other side has room for. */
    void send(const QByteArray &bytes) const;
    /** What has come from the other side until now. Never waits. */
    QByteArray received() const;
    void endWriting() const;
    /** Whether the other side has closed; what it has sent until then is thrown away. Never waits. */
    bool hasEnded() const;

private:
    int m_number;
};

/** A listening port of this computer, reached at 127.0.0.1 only. Ends the program where there is none. */
class Listener
{
public:
    /** @param port  0: any free one */
    explicit Listener(quint16 port = 0);

    quint16 port() const { return m_port; }

    /** The connection that has been waiting longest. @param wait  false: nothing when there is none */
    Descriptor accept(bool wait = true) const;

private:
    Descriptor m_socket;
    quint16 m_port = 0;
};

/** A connection to a port of this computer. */
Descriptor connectTo(quint16 port);

} // namespace Fuzz
