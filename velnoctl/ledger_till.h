// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnotill.h"

#include <QByteArray>
#include <QString>

namespace VelnoCtl {

class Session;

/** The till of the options' register, for one command: its connection passes from the device to the till and
 * back. What goes on is told on standard error. */
class LedgerTill
{
public:
    explicit LedgerTill(Session &session);
    ~LedgerTill();
    Q_DISABLE_COPY_MOVE(LedgerTill)

    /** @return a VelnoTillResult; velnotill_problem() tells why it is another than 0 */
    int open();

    operator VelnoTill *() const { return m_till; }

private:
    static void tell(const char *key, int stage, const VelnoTillOutcome *outcome, void *self);

    Session &m_session;
    VelnoTill *m_till = nullptr;
};

} // namespace VelnoCtl
