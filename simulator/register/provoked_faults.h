// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/register/faults.h"

#include <span>

/**
 * Faults that a sale provokes by what it contains, so that the tests of an application can choose a failure
 * through the sale alone: an item named "!" and a fault of commands, or one at a price of this table.
 */
namespace Simulator {

struct ProvocationRow
{
    qint64 price;      ///< kuruş
    const char *fault; ///< as it is typed
};

std::span<const ProvocationRow> provocationTable();

/** The faults that these items provoke, as they are typed. */
QStringList provokedBy(const QList<ItemRequest> &items);

/** For each of these items that is named as if it provoked a fault, and provokes none: why, and what is
 * accepted. */
QStringList misnamedAmong(const QList<ItemRequest> &items);

/**
 * The faults that the open sale has provoked. Each goes off once, one with *N behind its command N times: at
 * its command, or at the next one when it names none; until then it changes nothing. What has not gone off by
 * then is forgotten when another sale is opened.
 */
class ProvokedFaults
{
public:
    /** One that waits already is not added a second time, but counts as the newest. */
    void add(const QStringList &faults);
    void clear() { m_faults.clear(); }

    /** The command comes: what goes off at it, beside the faults that stand. It is off from now on. */
    Faults take(const CommandRow &command, Faults standing);

    /** Those that have not gone off, the newest last. */
    const QStringList &waiting() const { return m_faults; }

private:
    QStringList m_faults;
};

} // namespace Simulator
