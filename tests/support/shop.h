// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/velnoext/velnoext.h"
#include "tests/support/library_test.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

/** An application that sells at the real velno-register through the device library. */
namespace TestSupport {

inline constexpr int cash = 0;
inline constexpr int card = 1;
inline constexpr unsigned long long patient = 11'111'111'111;

/** A register and the library, connected. */
class Shop
{
public:
    explicit Shop(const QStringList &arguments = {});

    int connect();

    /** What the printer prints next. */
    QString printed();

    const quint16 port = freePort();
    SimulatedRegister reg;
    int connected = -1;
};

VelnoSaleItem itemOf(long long price, const QByteArray &name = "Ekmek", signed char section = 1);

// One call each: they return its code.
int addItem(long long price, const QByteArray &name = "Ekmek", signed char section = 1);
int addItemInList(long long price, const QByteArray &name);
int deleteLast();
int medical();
int endWithInvoice();
int printSlip();
int receipt(VelnoReceiptRef ref, QList<long long> *values = nullptr);

/** The state; -1 when it is not told. */
int state();

/** What sale-state tells: the code alone unless it is 0. */
struct SaleState
{
    int code = -1;
    QList<long long> totals;
    VelnoReceiptRef ref{};
};

SaleState saleState();

/** The five totals and the number. */
QList<long long> valuesOf(const VelnoEcrSaleTotals &totals);

/** With one space where there are several. */
QString squeezed(const QString &text);

} // namespace TestSupport
