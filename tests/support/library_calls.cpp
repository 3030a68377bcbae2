// SPDX-License-Identifier: Apache-2.0

#include "tests/support/library_calls.h"

#include <chrono>
#include <future>

namespace TestSupport {

int login()
{
    return velnoext_login(patience);
}

int readState()
{
    int state = 0;
    return velnoext_ecr_state(patience, &state);
}

int addItem()
{
    VelnoSaleItem item{1250, 1000, 0, 0, "Ekmek", 1, 0};
    VelnoEcrSaleTotals totals{};
    return velnoext_add_sale_item(patience, &item, &totals);
}

int readSaleState()
{
    int first = 0;
    VelnoEcrSaleTotals totals{};
    VelnoReceiptRef receipt{};
    return velnoext_sale_state(patience, &first, &totals, &receipt);
}

int addContribution()
{
    return velnoext_add_medical_contribution(patience, 100, 11'111'111'111);
}

int cancelSale()
{
    return velnoext_cancel_sale(patience);
}

int readSection()
{
    VelnoSaleItem item{};
    item.section = 1;
    return velnoext_section_data(patience, &item);
}

int readAcquirers()
{
    int list[1] = {};
    int count = 1;
    return velnoext_active_acquirers(patience, list, &count);
}

int initialize(const char *address, quint16 port, unsigned int timeout)
{
    return velnoext_initialize(5, serial, address, port, timeout);
}

Velno::GMP::MatchExt agreedKeys()
{
    return Velno::Ext::library().pairingRecords.value(serial);
}

int interrupted(const std::function<int()> &call)
{
    auto result = std::async(std::launch::async, call);
    while (result.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
        velnoext_interrupt();
    return result.get();
}

int answered(const QByteArray &plaintext, int (*call)())
{
    HandMadeDevice device;
    if (connectPaired(device) != 0)
        return -1;
    device.answerPlain(plaintext);
    return call();
}

} // namespace TestSupport
