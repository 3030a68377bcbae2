// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/command_items.h"
#include "ExtDevice/gmp3/item_stream.h"
#include "simulator/fiscal/fiscal_model.h"

#include <optional>

namespace Simulator {

/** What the register is told to do wrong with a command. */
struct Disturbance
{
    bool refuse = false;              ///< not to do it
    bool overLimit = false;           ///< to find every sale over its limit
    std::optional<qint32> state = {}; ///< to be in this state as far as anybody asks
    std::optional<qint32> error = {}; ///< to have this error, and to leave the sale's items as they are
};

/** A command in progress. */
struct CommandCall
{
    FiscalModel &model;
    const Velno::GMP::Items &items; ///< what the command carries
    Velno::GMP::ItemWriter &reply;  ///< the answer's items; a command without an answer writes none
    const Disturbance &wrong;
};

/** Does a command and writes the answer. @return why it is not done, or that it tells an error made up by a
 * fault */
using Execution = Refusal (*)(const CommandCall &call);

} // namespace Simulator
