// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/** A connected TCP socket without anything around it. Every failure ends the benchmark with a message. */
class BareSocket
{
public:
    explicit BareSocket(int descriptor);
    ~BareSocket();
    BareSocket(BareSocket &&other) noexcept
        : m_descriptor(other.m_descriptor)
    {
        other.m_descriptor = -1;
    }
    BareSocket(const BareSocket &) = delete;
    BareSocket &operator=(const BareSocket &) = delete;
    BareSocket &operator=(BareSocket &&) = delete;

    /** Connects to a port of this machine, trying until somebody listens. */
    static BareSocket connectTo(uint16_t port);

    int descriptor() const { return m_descriptor; }
    void write(const std::string &bytes) const;

    /** A frame with a 2-byte length in front; empty when the peer has closed. */
    std::string readFrame() const;

private:
    bool readExactly(char *bytes, size_t size) const;

    int m_descriptor;
};

/** Listens on a port of this machine; 0 is any free one. */
class BareListener
{
public:
    explicit BareListener(uint16_t port = 0);
    ~BareListener();
    BareListener(const BareListener &) = delete;
    BareListener &operator=(const BareListener &) = delete;

    uint16_t port() const { return m_port; }
    BareSocket accept() const;

private:
    int m_descriptor;
    uint16_t m_port = 0;
};

/** Ends the process with a message unless the condition holds. */
void require(bool condition, const char *what);
