// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/match_ext.h"
#include "simulator/register/command_table.h"
#include "simulator/register/faults.h"

#include <QString>

namespace Simulator {

/**
 * The register's side of a connection on which an application commands it: holds the keys of the last
 * pairing, opens what comes and seals what goes, right or under faults. Sockets are not its business.
 *
 * What it takes and sends is described in envelope.h; of an application it accepts a ciphertext and its MAC
 * in this order alone.
 */
class CommandResponder
{
public:
    /** What came, or why it cannot be answered. */
    struct Request
    {
        const CommandRow *command = nullptr; ///< null: the application holds no keys
        Velno::GMP::Items items;             ///< what it carries
        QString refusal;
    };

    struct Answer
    {
        QByteArray frame;             ///< empty for a command that is not answered
        Refusal refusal = NotRefused; ///< why the register says no
    };

    /** @param faults  looked at for every request; must outlive the responder, like the model */
    CommandResponder(const QByteArray &serial, FiscalModel &model, const Faults &faults);

    void setKeys(const Velno::GMP::MatchExt &keys) { m_keys = keys; }
    bool holdsKeys() const { return !m_keys.aesKey.isEmpty(); }

    /** An application without keys makes the register forget its own. */
    Request read(const QByteArray &frame);

    /** Does what a request with a command asks for. */
    Answer answer(const Request &request, const Faults &faults);

private:
    QByteArray seal(const QByteArray &plaintext, const Faults &faults) const;
    void forgetKeys();

    QByteArray m_serial;
    FiscalModel &m_model;
    const Faults &m_faults;
    Velno::GMP::MatchExt m_keys;
};

} // namespace Simulator
