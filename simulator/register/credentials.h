// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/register/faults.h"

namespace Simulator {

/**
 * Whether a register can answer with what lies in the folder: client.crt and client.key, for the fault
 * expired-certificate expired.crt and expired.key too. Each pair is a certificate and its RSA key, both PEM,
 * the key without a password. Nothing else is checked: a fault may need a certificate that nobody trusts.
 *
 * @return an empty text, or what is wrong and what is accepted
 */
QString credentialsProblem(const QString &folder, const Faults &faults);

} // namespace Simulator
