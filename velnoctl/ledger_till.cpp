// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/ledger_till.h"

#include "velnoctl/session.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace VelnoCtl {

LedgerTill::LedgerTill(Session &session)
    : m_session(session)
{
}

LedgerTill::~LedgerTill()
{
    if (!m_till)
        return;
    m_session.interrupts().setTill(nullptr);
    velnotill_close(m_till);
}

int LedgerTill::open()
{
    const Options &options = m_session.device().options();
    const QString file = options.ledgerFile();
    if (options.ledger.isEmpty()) // the folder of the user's own data, which need not be there yet
        QDir().mkpath(QFileInfo(file).path());
    const QByteArray path = file.toLocal8Bit();
    VelnoTillSettings settings{};
    settings.size = sizeof settings;
    settings.appNo = options.app;
    settings.port = options.isRelay ? 0 : options.port;
    settings.connectTimeout = qMax(options.timeout, 1U); // 0 would be the till's own
    settings.answerLimit = options.answerLimit.value_or(0);
    settings.serial = options.serial.constData();
    settings.address = options.address.constData();
    settings.ledger = path.constData();
    if (const int result = velnotill_open(&m_till, &settings); result != VelnoTillResult_Done)
        return result;
    velnotill_set_listener(m_till, tell, this);
    m_session.interrupts().setTill(m_till);
    m_session.device().handOver();
    return VelnoTillResult_Done;
}

void LedgerTill::tell(const char *, int stage, const VelnoTillOutcome *, void *self)
{
    const QByteArray &language = static_cast<LedgerTill *>(self)->m_session.device().options().language;
    if (stage != VelnoTillStage_Settled)
        std::fprintf(stderr, "%s\n", velnotill_stage_text(stage, language.constData()));
}

} // namespace VelnoCtl
