#define _POSIX_C_SOURCE 200112L /* fsync, ftruncate */

#include "books.h"

#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "recovery.h"

enum { longestEntry = 200 };

/* What the lines say ------------------------------------------------------------------------------------ */

static int isSame(const VelnoReceiptRef *left, const VelnoReceiptRef *right)
{
    return left->first == right->first && left->second == right->second;
}

static void forgetDoubt(Books *books, const VelnoReceiptRef *receipt)
{
    int i, kept = 0;
    for (i = 0; i < books->doubtfulCount; ++i)
        if (!isSame(&books->doubtful[i], receipt))
            books->doubtful[kept++] = books->doubtful[i];
    books->doubtfulCount = kept;
}

/* The end of a receipt, be it of the open one or of one that was in doubt. */
static void takeEnd(Books *books, const VelnoReceiptRef *receipt)
{
    forgetDoubt(books, receipt);
    if (isSame(&books->open, receipt))
        memset(&books->open, 0, sizeof books->open);
}

static void takeOpen(Books *books, const VelnoReceiptRef *receipt)
{
    books->open = *receipt;
    memset(&books->paid, 0, sizeof books->paid);
}

static void takeClosed(Books *books, const VelnoReceiptRef *receipt, const VelnoEcrSaleTotals *totals)
{
    takeEnd(books, receipt);
    books->closed = *receipt;
    books->totals = *totals;
    books->isTold = 0;
}

static int takeDoubt(Books *books, const VelnoReceiptRef *receipt)
{
    takeEnd(books, receipt);
    if (books->doubtfulCount == mostDoubtful)
        return 0;
    books->doubtful[books->doubtfulCount++] = *receipt;
    return 1;
}

/* @return whether it is the line of a report */
static int readReport(Books *books, const char *line)
{
    int z;
    if (sscanf(line, "reported %d", &z) == 1 || sscanf(line, "refused %d", &z) == 1)
        books->report = 0;
    else if (sscanf(line, "report %d", &z) == 1)
        books->report = z;
    else
        return 0;
    return 1;
}

/* Takes over what a line says. @return whether it is one of the books' lines */
static int readLine(Books *books, const char *line)
{
    VelnoReceiptRef receipt;
    long long total, cash, card, change;
    VelnoEcrSaleTotals totals;
    memset(&totals, 0, sizeof totals);
    if (sscanf(line, "open %d %d", &receipt.first, &receipt.second) == 2) {
        takeOpen(books, &receipt);
    } else if (sscanf(line, "paid %d %d %lld %lld", &receipt.first, &receipt.second, &cash, &card) == 4) {
        books->paid.values[paidInCash] = cash;
        books->paid.values[paidByCard] = card;
    } else if (sscanf(line, "closed %d %d %lld %lld %lld %lld", &receipt.first, &receipt.second, &total,
                      &cash, &card, &change) == 6) {
        totals.values[totalToPay] = total;
        totals.values[paidInCash] = cash;
        totals.values[paidByCard] = card;
        totals.values[changeGiven] = change;
        takeClosed(books, &receipt, &totals);
    } else if (sscanf(line, "told %d %d", &receipt.first, &receipt.second) == 2) {
        books->isTold = 1;
    } else if (sscanf(line, "probably-cancelled %d %d", &receipt.first, &receipt.second) == 2) {
        return takeDoubt(books, &receipt);
    } else if (sscanf(line, "cancelled %d %d", &receipt.first, &receipt.second) == 2) {
        takeEnd(books, &receipt);
    } else {
        return readReport(books, line);
    }
    return 1;
}

/* The file ---------------------------------------------------------------------------------------------- */

/* A file of its own to read through: lines are written without a buffer that a failure would leave full. */
static int readLines(Books *books, FILE *file)
{
    char line[longestEntry];
    int count = 0;
    while (fgets(line, sizeof line, file)) {
        ++count;
        if (!strchr(line, '\n') && feof(file))
            break;
        if (!readLine(books, line))
            return count;
        books->size = ftell(file);
    }
    return ferror(file) ? -1 : 0;
}

int openBooks(Books *books, const char *path)
{
    FILE *file;
    int problem;
    memset(books, 0, sizeof *books);
    books->isTold = 1;
    books->file = open(path, O_RDWR | O_APPEND | O_CREAT, S_IRUSR | S_IWUSR);
    if (books->file < 0)
        return -1;
    file = fopen(path, "r");
    problem = file ? readLines(books, file) : -1;
    if (file)
        fclose(file);
    if (problem == 0 && ftruncate(books->file, (off_t)books->size) != 0)
        problem = -1;
    if (problem != 0)
        closeBooks(books);
    return problem;
}

void closeBooks(Books *books)
{
    if (books->file >= 0)
        close(books->file);
    books->file = -1;
}

/* A line is there whole or not at all: the next one must not be appended to half of it. */
static int writeLine(Books *books, const char *format, ...)
{
    char line[longestEntry];
    va_list values;
    int length;
    va_start(values, format);
    length = vsnprintf(line, sizeof line, format, values);
    va_end(values);
    if (length > 0 && write(books->file, line, (size_t)length) == length && fsync(books->file) == 0) {
        books->size += length;
        return 0;
    }
    length = errno;
    if (ftruncate(books->file, (off_t)books->size) != 0)
        closeBooks(books); /* nothing can be noted any more */
    errno = length;
    return -1;
}

int noteOpen(Books *books, const VelnoReceiptRef *receipt)
{
    if (writeLine(books, "open %d %d\n", receipt->first, receipt->second) != 0)
        return -1;
    takeOpen(books, receipt);
    return 0;
}

int notePaid(Books *books, const VelnoReceiptRef *receipt, const VelnoEcrSaleTotals *totals)
{
    if (writeLine(books, "paid %d %d %lld %lld\n", receipt->first, receipt->second,
                  totals->values[paidInCash], totals->values[paidByCard]) != 0)
        return -1;
    books->paid = *totals;
    return 0;
}

int noteClosed(Books *books, const VelnoReceiptRef *receipt, const VelnoEcrSaleTotals *totals)
{
    if (writeLine(books, "closed %d %d %lld %lld %lld %lld\n", receipt->first, receipt->second,
                  totals->values[totalToPay], totals->values[paidInCash], totals->values[paidByCard],
                  totals->values[changeGiven]) != 0)
        return -1;
    takeClosed(books, receipt, totals);
    return 0;
}

int noteTold(Books *books)
{
    if (writeLine(books, "told %d %d\n", books->closed.first, books->closed.second) != 0)
        return -1;
    books->isTold = 1;
    return 0;
}

int noteDoubtful(Books *books, const VelnoReceiptRef *receipt)
{
    if (books->doubtfulCount == mostDoubtful ||
        writeLine(books, "probably-cancelled %d %d\n", receipt->first, receipt->second) != 0)
        return -1;
    takeDoubt(books, receipt);
    return 0;
}

int noteCancelled(Books *books, const VelnoReceiptRef *receipt)
{
    if (writeLine(books, "cancelled %d %d\n", receipt->first, receipt->second) != 0)
        return -1;
    takeEnd(books, receipt);
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
