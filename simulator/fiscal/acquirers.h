// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QList>

namespace Simulator {

/** The banks that the register's card reader can send a payment to. */
QList<qint32> activeAcquirers();

/** Null for a number that no acquirer has. */
const char16_t *acquirerName(int acquirer);

/** To whom the payment goes that is made by card after so many others on the same receipt: one after the
 * other. */
int acquirerInTurn(qsizetype cardPayments);

} // namespace Simulator
