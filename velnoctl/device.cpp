// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/device.h"

#include "ExtDevice/gmp3/trust_anchors.h"
#include "translations/spoken.h"
#include "velnoext.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr int notReady = 1;
constexpr int connectionFailed = 2;
constexpr int pairingFailed = 10;

void progress(const QString &text)
{
    std::fputs((text + u'\n').toUtf8().constData(), stderr);
}

} // namespace

Device::Device(const Options &options, Interrupts &interrupts)
    : m_options(options)
    , m_interrupts(interrupts)
{
}

Device::~Device()
{
    if (!m_isInitialised)
        return;
    velnoext_close_all();
    velnoext_close(); // also a connection whose pairing failed
}

QString Device::target() const
{
    const QString text = m_options.isRelay ? Spoken::tr("%1 at %2") : Spoken::tr("%1 on %2");
    return text.arg(QString::fromLatin1(m_options.serial), m_options.place());
}

int Device::connect(Needs needs)
{
    const bool isSpoilt = m_isConnected && m_hasStrayAnswer && needs == Needs::Connection;
    if (m_isConnected && !isSpoilt)
        return 0;
    m_whenInterrupted = Spoken::tr("before it was sent");
    if (m_interrupts.requested())
        return Interrupted;
    announce(isSpoilt);
    m_isInitialised = true;
    velnoext_set_answer_limit(m_options.answerLimit.value_or(noLimit));
    const int code = velnoext_initialize(m_options.app, m_options.serial.constData(),
                                         m_options.address.constData(), m_options.port, m_options.timeout);
    m_isConnected = code == 0;
    m_hasStrayAnswer = false; // this connection has seen no command yet
    if (m_isConnected)
        progress(Spoken::tr("%1 is connected").arg(QString::fromLatin1(m_options.serial)));
    if ((code == connectionFailed || code == pairingFailed) && m_interrupts.requested()) {
        m_whenInterrupted = code == pairingFailed
                                ? Spoken::tr("while pairing with %1; nothing was sent").arg(target())
                                : Spoken::tr("while waiting for %1; nothing was sent").arg(target());
        return Interrupted;
    }
    return code;
}

int Device::forget()
{
    m_isConnected = false;
    return ask(velnoext_forget_device, m_options.serial.constData());
}

void Device::handOver()
{
    if (!m_isInitialised)
        Velno::GMP::warnOfDevelopmentAuthority("velnoctl");
    else
        velnoext_close_all();
    m_isInitialised = true;
    m_isConnected = false;
    m_hasStrayAnswer = false;
}

void Device::announce(bool isSpoilt)
{
    if (!m_isInitialised)
        Velno::GMP::warnOfDevelopmentAuthority("velnoctl");
    progress(Spoken::tr("waiting for %1 …").arg(target()));
    if (isSpoilt)
        progress(
            Spoken::tr("(afresh, since what it answers to send could come as the next command's answer)"));
    if (!m_isInitialised)
        progress(Spoken::tr("(it is paired first, which takes three connections)"));
}

int Device::noted(int code)
{
    // The next command connects afresh: in the shell a cable may have been put back.
    if (code == notReady || code == connectionFailed)
        m_isConnected = false;
    if (code != connectionFailed || !m_interrupts.requested())
        return code;
    m_whenInterrupted =
        Spoken::tr("while it was under way; whether the register carried it out is not known: "
                   "docs/recovery.md tells how to find out");
    return Interrupted;
}

} // namespace VelnoCtl
