/*
 * What a till must not forget when its process ends at a bad moment: a text file that only grows. Each line
 * is on the disk before the till goes on.
 *
 *     open 12 7                              a sale is begun on receipt 7 of Z report 12
 *     closed 12 7 10750 10000 4000 3250      it is sold: total, cash, card, change, in kuruş
 *     cancelled 12 7                         it is not
 *     report 12                              Z report 12 is begun
 *     reported 12                            it is made
 *     refused 12                             it is not made
 */
#ifndef BOOKS_H
#define BOOKS_H

#include <stdio.h>

#include <velnoext.h>

typedef struct Books
{
    FILE *file;
    VelnoReceiptRef open;   /**< the sale of which the end is not noted yet; 0, 0: none */
    VelnoReceiptRef closed; /**< the last one that was sold; 0, 0: none */
    int report;             /**< the Z report of which the end is not noted yet; 0: none */
} Books;

/**
 * Opens or makes the file and reads how it ends. A last line that is not whole was not on the disk when the
 * till ended, and is taken off.
 *
 * @return 0; -1: it cannot be used (errno), or line N holds something else: N
 */
int openBooks(Books *books, const char *path);
void closeBooks(Books *books);

/* @return 0: it is on the disk; -1: it is not (errno) */
int noteOpen(Books *books, const VelnoReceiptRef *receipt);
int noteClosed(Books *books, const VelnoReceiptRef *receipt, const VelnoEcrSaleTotals *totals);
int noteCancelled(Books *books, const VelnoReceiptRef *receipt);
int noteReport(Books *books, int z);
int noteReportEnd(Books *books, int z, int made);

#endif
