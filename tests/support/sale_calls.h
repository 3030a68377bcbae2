// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/hand_made_device.h"
#include "tests/support/keys_request.h"

#include <QList>
#include <QString>

#include <functional>
#include <limits>

/** What the tests of the calls that sell, pay and ask share. */
namespace TestSupport {

inline constexpr qint64 largest = std::numeric_limits<qint64>::max();
inline constexpr qint64 smallest = std::numeric_limits<qint64>::min();
inline constexpr int largestInt = std::numeric_limits<int>::max();
inline constexpr int smallestInt = std::numeric_limits<int>::min();

/** What a call may write to, filled so that any writing shows. */
struct Outputs
{
    Outputs();

    bool untouchedBesidesFirst() const;
    bool untouched() const { return first == Outputs().first && untouchedBesidesFirst(); }

    int first;
    VelnoEcrSaleTotals totals;
    VelnoReceiptRef receipt;
    VelnoSaleItem item; ///< of section 3
    int list[4];
    int count = 4;
};

/** One function of a family with arguments that pass. */
struct Call
{
    const char *name;
    std::function<int(Outputs &)> run;
    QByteArray request;
    QByteArray reply; ///< a good one; empty for none
    QByteArray state; ///< what the register says before, if it is asked

    bool asksFirst() const { return !state.isEmpty(); }
};

Call callNamed(const QList<Call> &calls, const QString &name);

/** The column "name", and a row for each call that belongs there. */
void addCallRows(
    const QList<Call> &calls,
    const std::function<bool(const Call &)> &belongs = [](const Call &) { return true; });

/** The register answers the call with this. */
void answer(HandMadeDevice &device, const Call &call, const QByteArray &reply);

/** The state of a register with an open sale and no error. */
QByteArray openSale(int extra = 0);

QByteArray someTotals(); ///< as they stand in a reply
QByteArray bytesOf(const VelnoEcrSaleTotals &totals);

VelnoSaleItem goodItem();
QByteArray goodItemBytes(); ///< as they stand in a request
VelnoSaleItemList listOf(const QList<VelnoSaleItem> &items);

VelnoInvoice goodInvoice();
QByteArray goodInvoiceRequest();

} // namespace TestSupport
