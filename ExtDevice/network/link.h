// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

#include <functional>

namespace Velno {

/**
 * A connection that a conversation is held over, whatever carries it. Arguments and statuses are those of
 * velno_network_write(), velno_network_read() and velno_network_disconnect(). No lock: one thread at a time.
 */
class Link
{
public:
    Link() = default;
    virtual ~Link() = default;
    Q_DISABLE_COPY_MOVE(Link)

    [[nodiscard]] virtual int write(const char *data, int size, unsigned int timeout) = 0;
    [[nodiscard]] virtual int read(char *buffer, int *size, unsigned int timeout) = 0;
    virtual int close() = 0;
};

/** A connection of the transport, which goes on when this object ends. */
class HandleLink final : public Link
{
public:
    [[nodiscard]] int write(const char *data, int size, unsigned int timeout) override;
    [[nodiscard]] int read(char *buffer, int *size, unsigned int timeout) override;
    int close() override;

    unsigned int handle = 0; ///< of velno_network.h; 0 for none, as after close()
};

/**
 * One of two ends that are joined in memory: what is written here is read there. Nobody waits: a read that
 * finds nothing lets the other side do its work once, and when nothing has come then, that is its time-out.
 * An end that is joined with nobody is closed; what came before can still be read.
 */
class MemoryLink final : public Link
{
public:
    ~MemoryLink() override;

    /** Joins two ends, each of which is closed first. */
    static void join(MemoryLink &one, MemoryLink &other);

    [[nodiscard]] int write(const char *data, int size, unsigned int timeout) override;
    [[nodiscard]] int read(char *buffer, int *size, unsigned int timeout) override;
    int close() override;

    qsizetype bytesAvailable() const { return m_arrived.size(); }

    std::function<void()> serveOtherSide; ///< called by a read that finds nothing; may be empty

private:
    MemoryLink *m_other = nullptr;
    QByteArray m_arrived;
};

} // namespace Velno
