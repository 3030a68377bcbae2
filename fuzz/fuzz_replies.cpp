// SPDX-License-Identifier: Apache-2.0

// Replies that pass every check of who sent them, to each function of velnoext.h that asks a register: an
// honest register's keys in the hands of somebody who is not.
#include "ExtDevice/velnoext/command_exchange.h"
#include "ExtDevice/velnoext/connection_thread.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/paired_record.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;
using namespace Velno::Ext;
using namespace Velno::GMP;

namespace {

/** Answers each request with what comes next of the input, and with an end when that is used up. */
class AnsweringDevice : public QIODevice
{
public:
    explicit AnsweringDevice(Fuzz::Input &input)
        : m_input(input)
    {
        open(QIODevice::ReadWrite | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return m_unread.size() + QIODevice::bytesAvailable(); }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        const QByteArray taken = m_unread.left(qsizetype(std::min<qint64>(size, m_unread.size())));
        m_unread.remove(0, taken.size());
        std::copy(taken.cbegin(), taken.cend(), data);
        return taken.size();
    }

    qint64 writeData(const char *, qint64 size) override
    {
        if (m_input.atEnd())
            return size;
        const QByteArray frame = Fuzz::sealed(activeRecord(), m_input.chunk());
        QByteArray length(sizeof(quint32), Qt::Uninitialized);
        qToBigEndian(quint32(frame.size()), length.data());
        m_unread += length + frame;
        return size;
    }

private:
    Fuzz::Input &m_input;
    QByteArray m_unread;
};

constexpr unsigned int patience = 1000;

VelnoSaleItem item()
{
    VelnoSaleItem item{};
    item.price = 1250;
    item.quantity = 1000;
    item.section = 1;
    qstrcpy(item.name, "Ekmek");
    return item;
}

int addItem()
{
    VelnoSaleItem one = item();
    VelnoEcrSaleTotals totals{};
    return velnoext_add_sale_item(patience, &one, &totals);
}

int addItems()
{
    VelnoSaleItemList list{2, {item(), item()}};
    VelnoEcrSaleTotals totals{};
    return velnoext_add_multiple_sale_items(patience, &list, &totals);
}

int saleState()
{
    int first = 0;
    VelnoEcrSaleTotals totals{};
    VelnoReceiptRef receipt{};
    return velnoext_sale_state(patience, &first, &totals, &receipt);
}

int receiptData()
{
    VelnoReceiptRef receipt{1, 1};
    VelnoEcrSaleTotals totals{};
    return velnoext_receipt_data(patience, &receipt, &totals);
}

int endWithInvoice()
{
    VelnoInvoice invoice{};
    qstrcpy(invoice.idNumber, "11111111111");
    qstrcpy(invoice.reference, "ABC2026000000001");
    invoice.mode = 1;
    return velnoext_end_sale_with_invoice(&invoice);
}

int printSlip()
{
    velnoext_printer_set_encoding("UTF-8");
    velnoext_printer_add_text("Merhaba", nullptr);
    return velnoext_print_slip(patience, true);
}

/** @param ask  one of the two that fill a list, which never writes behind its room */
int acquirers(int (*ask)(unsigned int, int *, int *))
{
    std::array<int, 4> list{};
    int count = int(list.size()) - 1;
    const int result = ask(patience, list.data(), &count);
    FUZZ_EXPECT(list.back() == 0 && count >= -1);
    return result;
}

template <auto Function>
int asking()
{
    return Function(patience);
}

template <auto Function, typename Value>
int askingFor()
{
    Value value{};
    return Function(patience, &value);
}

struct Row
{
    const char *name;
    int (*call)();
};

constexpr std::array functions{
    Row{"velnoext_login", asking<velnoext_login>},
    Row{"velnoext_logout", asking<velnoext_logout>},
    Row{"velnoext_check_printer_paper", asking<velnoext_check_printer_paper>},
    Row{"velnoext_ecr_state", askingFor<velnoext_ecr_state, int>},
    Row{"velnoext_current_z", askingFor<velnoext_current_z, int>},
    Row{"velnoext_last_z_datetime", askingFor<velnoext_last_z_datetime, int>},
    Row{"velnoext_ecr_datetime", askingFor<velnoext_ecr_datetime, int>},
    Row{"velnoext_sale_limit", askingFor<velnoext_sale_limit, long long>},
    Row{"velnoext_start_sale", asking<velnoext_start_sale>},
    Row{"velnoext_start_sale_with_invoice", asking<velnoext_start_sale_with_invoice>},
    Row{"velnoext_sale_state", saleState},
    Row{"velnoext_add_sale_item", addItem},
    Row{"velnoext_add_multiple_sale_items", addItems},
    Row{"velnoext_add_medical_contribution",
        [] { return velnoext_add_medical_contribution(patience, 100, 11111111110); }},
    Row{"velnoext_delete_last_sale_item", askingFor<velnoext_delete_last_sale_item, VelnoEcrSaleTotals>},
    Row{"velnoext_delete_sale_item",
        [] {
            VelnoEcrSaleTotals totals{};
            return velnoext_delete_sale_item(patience, 1, &totals);
        }},
    Row{"velnoext_add_payment", [] { return velnoext_add_payment(10, 1250); }},
    Row{"velnoext_end_sale", [] { return velnoext_end_sale(10); }},
    Row{"velnoext_cancel_sale", asking<velnoext_cancel_sale>},
    Row{"velnoext_end_sale_with_invoice", endWithInvoice},
    Row{"velnoext_receipt_data", receiptData},
    Row{"velnoext_active_acquirers", [] { return acquirers(velnoext_active_acquirers); }},
    Row{"velnoext_acquirers_of_sale", [] { return acquirers(velnoext_acquirers_of_sale); }},
    Row{"velnoext_section_data",
        [] {
            VelnoSaleItem one = item();
            return velnoext_section_data(patience, &one);
        }},
    Row{"velnoext_print_slip", printSlip},
    Row{"velnoext_x_report", velnoext_x_report},
    Row{"velnoext_z_report", velnoext_z_report},
};

/** Functions that hear no reply, or, like velnoext_initialize(), not on a connection with keys. */
constexpr std::array silentFunctions{
    "velnoext_version",
    "velnoext_initialize",
    "velnoext_set_active_device",
    "velnoext_active_device",
    "velnoext_error_detail",
    "velnoext_close",
    "velnoext_close_all",
    "velnoext_interrupt",
    "velnoext_cause",
    "velnoext_cause_name",
    "velnoext_cause_text",
    "velnoext_library_version",
    "velnoext_set_language",
    "velnoext_set_answer_limit",
    "velnoext_forget_device",
    "velnoext_set_log",
    "velnoext_result_name",
    "velnoext_result_text",
    "velnoext_detail_text",
    "velnoext_send_data",
    "velnoext_get_data", // takes a frame that its caller has read: fuzz_envelope
    "velnoext_ecr_serialno",
    "velnoext_printer_set_encoding",
    "velnoext_printer_add_text",
    "velnoext_printer_add_line_feed",
    "velnoext_printer_add_justified_text",
};

/** Ends the program when the library shows a function that stands in neither table. */
bool tablesAreComplete()
{
    QSet<QString> known;
    for (const Row &row : functions)
        known << QString::fromLatin1(row.name);
    for (const char *const name : silentFunctions)
        known << QString::fromLatin1(name);
    QFile map(QString::fromUtf8(VELNO_LIBRARY_MAP));
    FUZZ_EXPECT(map.open(QIODevice::ReadOnly));
    static const QRegularExpression rule(u"\\b(velnoext_\\w+);"_s);
    auto found = rule.globalMatch(QString::fromUtf8(map.readAll()));
    FUZZ_EXPECT(found.hasNext());
    while (found.hasNext()) {
        const QString name = found.next().captured(1);
        if (known.contains(name))
            continue;
        std::fprintf(stderr, "%s is in no table of fuzz_replies.cpp\n", qPrintable(name));
        std::abort();
    }
    return true;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static int argumentCount = 0;
    static const QCoreApplication application(argumentCount, nullptr);
    [[maybe_unused]] static const bool isSilent = Fuzz::silence();
    [[maybe_unused]] static const bool isComplete = tablesAreComplete();
    if (!library().connectionThread)
        library().connectionThread = ConnectionThread::start();
    library().activeDevice = Fuzz::serial;
    library().pairingRecords[Fuzz::serial] = Fuzz::pairedRecord();

    Fuzz::Input input(data, size);
    do {
        if (!connectionOf(Fuzz::serial))
            library().connections.emplace(Fuzz::serial, new AnsweringDevice(input));
        const Row &row = functions[input.byte() % functions.size()];
        const int result = row.call();
        FUZZ_EXPECT(result >= Success && result <= NoApplicationHash);
    } while (!input.atEnd());
    library().connections.erase(Fuzz::serial);
    library().slipContent.clear();
    return 0;
}
