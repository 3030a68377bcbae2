// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/velnoext.h"
#include "bench/bare_socket.h"
#include "bench/many_descriptors.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/prctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// What each of the registers takes that one velno-register plays: by how much a process with a thousand of
// them is larger than one with a single one, when each has paired with the library and sold a receipt.

namespace {

constexpr int registers = 1000;
constexpr quint16 firstPort = 30'000; // above those of the tests, below those that the system gives out
constexpr unsigned int timeout = 30'000;
constexpr double mostKibPerRegister = 20;

QByteArray serialOf(int index)
{
    return "UB" + QByteArray::number(index).rightJustified(10, '0');
}

long residentBytes(qint64 process)
{
    QFile file(u"/proc/%1/statm"_s.arg(process));
    require(file.open(QIODevice::ReadOnly), "velno-register has ended");
    return file.readAll().split(' ').at(1).toLong() * sysconf(_SC_PAGESIZE);
}

/** Ends the benchmark, with what the library says, unless the call was successful. */
void requireOf(int index, const char *step, int code)
{
    if (code == 0)
        return;
    const int cause = velnoext_cause();
    std::fprintf(stderr, "register %d of %d, port %d: %s: %s (%d), %s (%d)\n%s\n", index + 1, registers,
                 firstPort + index, step, velnoext_result_name(code), code, velnoext_cause_name(cause), cause,
                 velnoext_cause_text(cause));
    std::exit(1);
}

/** Pairs with a register, and sells one item for cash. */
void sellAt(int index)
{
    VelnoSaleItem item{};
    item.price = 1250;
    item.quantity = 1000;
    item.section = 1;
    VelnoEcrSaleTotals totals{};
    int state = 0;
    requireOf(index, "meeting it",
              velnoext_initialize(5, serialOf(index).constData(), "127.0.0.1", quint16(firstPort + index),
                                  timeout));
    requireOf(index, "beginning a sale", velnoext_start_sale(timeout));
    requireOf(index, "selling an item", velnoext_add_sale_item(timeout, &item, &totals));
    requireOf(index, "ending the sale", velnoext_end_sale(0));
    requireOf(index, "reading its state", velnoext_ecr_state(timeout, &state));
    require(state == 1, "a receipt is still open");
}

/** The memory of a velno-register that plays so many, when each has sold. */
long bytesAfterSalesAt(int count)
{
    QProcess program;
    // One that outlived a benchmark that was killed would meet the next one in the place of its own.
    program.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.setStandardOutputFile(QProcess::nullDevice());
    program.start(QString::fromUtf8(VELNO_REGISTER),
                  {u"--serial"_s, QString::fromLatin1(serialOf(0)), u"--connect"_s,
                   u"127.0.0.1:%1"_s.arg(firstPort), u"--registers"_s, QString::number(count)});
    require(program.waitForStarted(), "velno-register did not start");
    for (int i = 0; i < count; ++i)
        sellAt(i);
    const long bytes = residentBytes(program.processId());
    velnoext_close_all();
    for (int i = 0; i < count; ++i)
        velnoext_forget_device(serialOf(i).constData());
    program.terminate();
    program.waitForFinished();
    return bytes;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    allowManyDescriptors();
    const long one = bytesAfterSalesAt(1);
    const auto start = std::chrono::steady_clock::now();
    const long all = bytesAfterSalesAt(registers);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    constexpr double kib = 1024;
    const double each = double(all - one) / kib / (registers - 1);
    std::printf(
        "one register: %.1f MiB of resident memory; %d in one process: %.1f KiB for each more (goal: at most"
        " %.0f); %.1f ms to meet, pair and sell\n",
        double(one) / kib / kib, registers, each, mostKibPerRegister, taken.count() * 1000 / registers);
    return each <= mostKibPerRegister ? 0 : 1;
}
