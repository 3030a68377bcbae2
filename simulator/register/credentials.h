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

/**
 * Whether an application of this build believes the client.crt in the folder, which has no problem.
 *
 * @return an empty text, or that it does not, and why
 */
QString credentialsDoubt(const QString &folder);

} // namespace Simulator
