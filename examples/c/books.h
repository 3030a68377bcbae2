/*
 * What a till must not forget when its process ends at a bad moment: a text file that only grows. Each line
 * is on the disk before the till goes on.
 *
 *     open 12 7                              a sale is begun on receipt 7 of Z report 12
 *     paid 12 7 10000 4000                   so much has been paid on it: cash, card, in kuruş
 *     closed 12 7 10750 10000 4000 3250      it is sold: total, cash, card, change
 *     told 12 7                              and the cashier has been told
 *     probably-cancelled 12 7                the register refuses to tell of it, and tells of another
 *     cancelled 12 7                         it is not sold, for certain
 *     report 12                              Z report 12 is begun
 *     reported 12                            it is made
 *     refused 12                             it is not made
 */
#ifndef BOOKS_H
#define BOOKS_H

#include <velnoext.h>

enum { mostDoubtful = 32 };

typedef struct Books
{
    int file;
    long long size;                         /**< of its whole lines, in bytes */
    VelnoReceiptRef open;                   /**< the sale of which the end is not noted yet; 0, 0: none */
    VelnoEcrSaleTotals paid;                /**< cash and card paid on it */
    VelnoReceiptRef closed;                 /**< the last one that was sold; 0, 0: none */
    VelnoEcrSaleTotals totals;              /**< of that one */
    int isTold;                             /**< the cashier has been told of it */
    int report;                             /**< the Z report of which the end is not noted yet; 0: none */
    VelnoReceiptRef doubtful[mostDoubtful]; /**< probably cancelled: to be asked about once more */
    int doubtfulCount;
} Books;

/**
 * Opens or makes the file and reads how it ends. A last line without its line feed was not on the disk when
 * the till went on, so nothing has followed from it, and it is taken off.
 *
 * @return 0; -1: it cannot be used (errno), or line N holds something else: N
 */
int openBooks(Books *books, const char *path);
void closeBooks(Books *books);

/* @return 0: it is on the disk; -1: it is not (errno), and nothing of it is */
int noteOpen(Books *books, const VelnoReceiptRef *receipt);
int notePaid(Books *books, const VelnoReceiptRef *receipt, const VelnoEcrSaleTotals *totals);
int noteClosed(Books *books, const VelnoReceiptRef *receipt, const VelnoEcrSaleTotals *totals);
int noteTold(Books *books);
int noteDoubtful(Books *books, const VelnoReceiptRef *receipt); /* -1 also when there are too many */
int noteCancelled(Books *books, const VelnoReceiptRef *receipt);
int noteReport(Books *books, int z);
int noteReportEnd(Books *books, int z, int made);

#endif
