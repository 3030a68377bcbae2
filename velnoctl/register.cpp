#include "velnoctl/register.h"

#include "ExtDevice/gmp3/trust_anchors.h"
#include "velnoext.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr int notReady = 1;
constexpr int connectionFailed = 2;

void progress(const QString &text)
{
    std::fputs((text + u'\n').toUtf8().constData(), stderr);
}

} // namespace

Register::Register(const Options &options, Interrupts &interrupts)
    : m_options(options)
    , m_interrupts(interrupts)
{
}

Register::~Register()
{
    if (!m_isInitialised)
        return;
    const Interrupts::Call call(m_interrupts, "closing the connection");
    velnoext_close_all();
    velnoext_close(); // also ends what a failed connecting left
}

int Register::connect(Needs needs)
{
    const bool isSpoilt = m_isConnected && m_hasStrayAnswer && needs == Needs::Connection;
    if (m_isConnected && !isSpoilt)
        return 0;
    const QString serial = QString::fromLatin1(m_options.serial);
    const Interrupts::Call call(m_interrupts, "waiting for the register");
    if (!call.mayBegin())
        return Interrupted;
    if (!m_isInitialised)
        Velno::GMP::warnOfDevelopmentAuthority("velnoctl");
    progress(
        u"waiting for %1 %2 %3 …"_s.arg(serial, m_options.isRelay ? u"at"_s : u"on"_s, m_options.place()));
    if (isSpoilt)
        progress(u"(afresh, since what it answers to send could come as the next command's answer)"_s);
    if (!m_isInitialised)
        progress(u"(it is paired first, which takes three connections)"_s);
    m_isInitialised = true;
    const int code = velnoext_initialize(m_options.app, m_options.serial.constData(),
                                         m_options.address.constData(), m_options.port, m_options.timeout);
    m_isConnected = code == 0;
    m_hasStrayAnswer = false; // this connection has seen no command yet
    if (m_isConnected)
        progress(u"%1 is connected"_s.arg(serial));
    return code;
}

int Register::noted(int code)
{
    // The next command connects afresh: in the shell a cable may have been put back.
    if (code == notReady || code == connectionFailed)
        m_isConnected = false;
    return code;
}

} // namespace VelnoCtl
