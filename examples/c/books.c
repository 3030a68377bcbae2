#define _POSIX_C_SOURCE 200112L /* fsync, ftruncate */

#include "books.h"

#include <stdarg.h>
#include <string.h>
#include <unistd.h>

#include "recovery.h"

static const VelnoReceiptRef none = {0, 0};

/* Takes over what a line says. @return whether it is one of the books' lines */
static int readLine(Books *books, const char *line)
{
    VelnoReceiptRef receipt;
    int z;
    if (sscanf(line, "open %d %d", &receipt.first, &receipt.second) == 2) {
        books->open = receipt;
    } else if (sscanf(line, "closed %d %d", &receipt.first, &receipt.second) == 2) {
        books->closed = receipt;
        books->open = none;
    } else if (sscanf(line, "cancelled %d %d", &receipt.first, &receipt.second) == 2) {
        books->open = none;
    } else if (sscanf(line, "reported %d", &z) == 1 || sscanf(line, "refused %d", &z) == 1) {
        books->report = 0;
    } else if (sscanf(line, "report %d", &z) == 1) {
        books->report = z;
    } else {
        return 0;
    }
    return 1;
}

static int readLines(Books *books)
{
    char line[200];
    int count = 0;
    long end = 0;
    while (fgets(line, sizeof line, books->file)) {
        ++count;
        if (!strchr(line, '\n') && feof(books->file))
            break;
        if (!readLine(books, line))
            return count;
        end = ftell(books->file);
    }
    if (ferror(books->file) || ftruncate(fileno(books->file), end) != 0)
        return -1;
    return fseek(books->file, 0, SEEK_END);
}

int openBooks(Books *books, const char *path)
{
    int problem;
    memset(books, 0, sizeof *books);
    books->file = fopen(path, "a+");
    if (!books->file)
        return -1;
    rewind(books->file);
    problem = readLines(books);
    if (problem != 0)
        closeBooks(books);
    return problem;
}

void closeBooks(Books *books)
{
    if (books->file)
        fclose(books->file);
    books->file = NULL;
}

static int writeLine(Books *books, const char *format, ...)
{
    va_list values;
    int written;
    va_start(values, format);
    written = vfprintf(books->file, format, values);
    va_end(values);
    return written > 0 && fflush(books->file) == 0 && fsync(fileno(books->file)) == 0 ? 0 : -1;
}

int noteOpen(Books *books, const VelnoReceiptRef *receipt)
{
    if (writeLine(books, "open %d %d\n", receipt->first, receipt->second) != 0)
        return -1;
    books->open = *receipt;
    return 0;
}

int noteClosed(Books *books, const VelnoReceiptRef *receipt, const VelnoEcrSaleTotals *totals)
{
    if (writeLine(books, "closed %d %d %lld %lld %lld %lld\n", receipt->first, receipt->second,
                  totals->values[totalToPay], totals->values[paidInCash], totals->values[paidByCard],
                  totals->values[changeGiven]) != 0)
        return -1;
    books->open = none;
    books->closed = *receipt;
    return 0;
}

int noteCancelled(Books *books, const VelnoReceiptRef *receipt)
{
    if (writeLine(books, "cancelled %d %d\n", receipt->first, receipt->second) != 0)
        return -1;
    books->open = none;
    return 0;
}

int noteReport(Books *books, int z)
{
    if (writeLine(books, "report %d\n", z) != 0)
        return -1;
    books->report = z;
    return 0;
}

int noteReportEnd(Books *books, int z, int made)
{
    if (writeLine(books, made ? "reported %d\n" : "refused %d\n", z) != 0)
        return -1;
    books->report = 0;
    return 0;
}
