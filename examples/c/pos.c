/*
 * A small till: a point-of-sale application to start from. It reads what the cashier types, line by line.
 *
 *     cc pos.c books.c recovery.c look.c connection.c -o pos $(pkg-config --cflags --libs velnoext)
 *     ./pos UB1234567890 0.0.0.0 4100 books.txt
 *
 * The register must be set to connect to this computer at that port. On first contact it is paired. What
 * would be lost with this process stands in books.txt: the next one finds out how it ended.
 */
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "books.h"
#include "recovery.h"

enum { wrongUsage = 64, longestLine = 256 };

typedef struct Till
{
    Register reg;
    Sale sale;
    Books books;
} Till;

/* What the cashier is told ------------------------------------------------------------------------------ */

static void hear(void *context, const char *text)
{
    (void)context;
    fprintf(stderr, "%s\n", text);
}

/* The library's own lines, which would otherwise stand among those for the cashier. */
static void hearLibrary(const char *text, void *context)
{
    hear(context, text);
}

static const char *saleText(int code)
{
    switch (code) {
    case saleBegunAgain:
        return "The register had cancelled the sale. It stands there again; take all payments again.";
    case saleNotOurs:
        return "Somebody has worked on the register itself: compare the sale with what it shows.";
    case saleNotNoted:
        return "The books cannot be written: nothing goes on before they can.";
    case saleFull:
        return "The sale holds no more lines.";
    case saleUnsettled:
        return "What was typed before is not settled; this has not been done.";
    case notTold:
        return "The register does not tell.";
    case personMustLook:
        return "The register refuses to tell of this receipt, and nothing proves that it was cancelled.";
    case saleStuck:
        return "The sale is not whole again: the register refuses to begin it, or one of its lines.";
    default:
        return NULL;
    }
}

/* The finest reason known, or else what the code means. @return the code */
static int explainCause(const char *what, int code, int cause)
{
    const int detail = velnoext_error_detail(); /* before any other call */
    if (code == 0)
        return 0;
    if (saleText(code)) {
        fprintf(stderr, "%s: %s\n", what, saleText(code));
        return code;
    }
    fprintf(stderr, "%s failed: %s (%d)\n%s\n", what, velnoext_result_name(code), code,
            cause != 0 ? velnoext_cause_text(cause) : velnoext_result_text(code));
    if (detail != 0)
        fprintf(stderr, "%s\n", velnoext_detail_text(detail));
    return code;
}

static int explain(const char *what, int code)
{
    return explainCause(what, code, velnoext_cause());
}

static void printAmount(const char *name, long long kurus)
{
    printf("%s %lld.%02lld", name, kurus / 100, kurus % 100);
}

static void printPayments(const VelnoEcrSaleTotals *totals)
{
    printAmount(", cash", totals->values[paidInCash]);
    printAmount(", card", totals->values[paidByCard]);
    printAmount(", change", totals->values[changeGiven]);
    printf("\n");
}

static void printTotals(const char *what, const VelnoEcrSaleTotals *totals)
{
    printf("%s: lines %d", what, totals->number);
    printAmount(", total", totals->values[totalToPay]);
    printPayments(totals);
}

static void printReceipt(const char *what, const VelnoReceiptRef *receipt)
{
    printf("%s: receipt %d of Z %d\n", what, receipt->second, receipt->first);
}

/* Words that the cashier types -------------------------------------------------------------------------- */

/* "12.50" with 2 decimals is 1250. @return whether it is such a number */
static int readDecimal(const char *word, int decimals, long long *value)
{
    int digits = 0, behind = -1;
    *value = 0;
    if (!word)
        return 0;
    for (; *word; ++word) {
        if (*word == '.' && behind < 0 && digits > 0) {
            behind = 0;
        } else if (*word >= '0' && *word <= '9' && digits < 12 && behind < decimals) {
            *value = *value * 10 + (*word - '0');
            ++digits;
            behind += behind >= 0;
        } else {
            return 0;
        }
    }
    for (behind = behind < 0 ? 0 : behind; behind < decimals; ++behind)
        *value *= 10;
    return digits > 0;
}

/* Cuts the first word off. @return NULL: there is none */
static const char *takeWord(char **rest)
{
    char *word = *rest ? *rest + strspn(*rest, " ") : NULL;
    char *space;
    if (!word || !*word)
        return NULL;
    space = strchr(word, ' ');
    *rest = space ? space + 1 : NULL;
    if (space)
        *space = '\0';
    return word;
}

static int readNumber(const char *word, int smallest, int largest, int *value)
{
    long long number;
    if (!readDecimal(word, 0, &number) || number < smallest || number > largest)
        return 0;
    *value = (int)number;
    return 1;
}

static int usage(const char *accepted)
{
    fprintf(stderr, "Not understood. Accepted: %s\n", accepted);
    return wrongUsage;
}

/* Selling ----------------------------------------------------------------------------------------------- */

/* Money that was taken on a receipt that does not count. */
static void printPaid(const Books *books)
{
    if (books->paid.values[paidInCash] == 0 && books->paid.values[paidByCard] == 0)
        return;
    printAmount("It had been paid: cash", books->paid.values[paidInCash]);
    printAmount(", card", books->paid.values[paidByCard]);
    printf(". Give that back, or take it anew.\n");
}

static int notePayment(Books *books, const VelnoReceiptRef *receipt, const VelnoEcrSaleTotals *totals)
{
    const int isPaid = totals->values[paidInCash] != 0 || totals->values[paidByCard] != 0;
    return isPaid ? notePaid(books, receipt, totals) : 0;
}

/* Whatever becomes of a receipt is in the books before anything follows from it. */
static int noteSale(void *context, SaleStatus status, const VelnoReceiptRef *receipt,
                    const VelnoEcrSaleTotals *totals)
{
    Books *const books = context;
    int problem;
    if (status == SaleClosed)
        return noteClosed(books, receipt, totals);
    if (status == SaleOpen)
        return books->open.first != 0 ? notePayment(books, receipt, totals) : noteOpen(books, receipt);
    problem = status == SaleDoubtful ? noteDoubtful(books, receipt) : noteCancelled(books, receipt);
    if (problem == 0) {
        printReceipt(status == SaleDoubtful ? "Probably cancelled" : "Cancelled", receipt);
        printPaid(books);
    }
    return problem;
}

/* Asks once more, at another time, about receipts that are probably cancelled: those that the register still
 * refuses to tell of are. What cannot be told stays in doubt until the next sale. */
static int settleDoubts(Till *till)
{
    Books *const books = &till->books;
    int problem = 0;
    while (problem == 0 && books->doubtfulCount > 0) {
        const VelnoReceiptRef receipt = books->doubtful[0];
        const Question question = {receipt, till->sale.known, 0};
        View view;
        int failures = 0;
        if (look(&till->reg, &question, &view, &failures) != 0 || view.found == FoundOpen)
            return 0;
        if (view.found == FoundClosed) {
            printReceipt("Closed after all", &receipt);
            printf("What was on it may have been sold twice: compare the receipts, and take one back.\n");
        }
        problem = view.found == FoundClosed ? noteClosed(books, &receipt, &view.totals) || noteTold(books)
                                            : noteCancelled(books, &receipt);
    }
    return problem;
}

/* A receipt is closed whether or not the printer could print it. */
static void warnOfPaper(void)
{
    if (velnoext_check_printer_paper(answerTimeout) == 9)
        fprintf(stderr, "The printer has no paper: look whether the receipt is printed to its end.\n");
}

/* @return 0: it is in the books that the cashier knows */
static int tellSold(Till *till)
{
    printReceipt("Sold", &till->books.closed);
    fflush(stdout);
    warnOfPaper();
    return noteTold(&till->books) == 0 && settleDoubts(till) == 0 ? 0 : explain("Noting it", saleNotNoted);
}

static void advise(const Sale *sale)
{
    if (sale->undecided)
        fprintf(stderr, "Look at the last receipt, or print an X report on the register. Then type: sold,\n"
                        "or: unsold, if it was not closed. To ask the register once more, type: again\n");
    else if (saleIsPending(sale))
        fprintf(stderr, "It is not done, or not known to be. Do not type it once more; type: again\n"
                        "or give the whole sale up with: cancel\n");
}

/* What every step of a sale ends with. @return the code, or that the end of the sale cannot be noted */
static int settle(Till *till, const char *what, int code)
{
    const Sale *const sale = &till->sale;
    if (saleIsPending(sale))
        explain(what, code);
    else
        explainCause(what, code, sale->cause); /* it has been looked at since */
    if (code == notTold || code == saleStuck)
        explainCause("The register", sale->reason, code == saleStuck ? sale->cause : 0);
    advise(sale);
    if (code == 0 && (sale->status == SaleOpen || sale->status == SaleClosed))
        printTotals(what, &sale->totals);
    return till->books.isTold ? code : tellSold(till);
}

static int beginIfNeeded(Till *till)
{
    int code = 0;
    if (till->sale.status != SaleOpen)
        code = explain("Starting the sale", saleStart(&till->sale, 0));
    if (code != 0)
        advise(&till->sale);
    return code;
}

static int item(Till *till, char *words)
{
    const char *const price = takeWord(&words);
    const char *const quantity = takeWord(&words);
    const char *const section = takeWord(&words);
    const char *const name = words;
    long long kurus, thousandths;
    int number, code;
    VelnoSaleItem line;
    memset(&line, 0, sizeof line);
    if (!readDecimal(price, 2, &kurus) || !readDecimal(quantity, 3, &thousandths) || thousandths > 99999999 ||
        !readNumber(section, 1, 8, &number) || !name)
        return usage("item PRICE QUANTITY SECTION NAME, as in item 12.50 2 1 Ekmek");
    line.price = kurus;
    line.quantity = (int)thousandths;
    line.section = (signed char)number;
    strncpy(line.name, name, sizeof line.name - 1);
    code = beginIfNeeded(till);
    return code != 0 ? code : settle(till, "Item", saleAddItem(&till->sale, &line));
}

static int deleteLast(Till *till, char *words)
{
    (void)words;
    return settle(till, "Deleting", saleDeleteLast(&till->sale));
}

static int pay(Till *till, char *words, int type)
{
    long long kurus;
    if (!readDecimal(words, 2, &kurus))
        return usage("cash AMOUNT or card AMOUNT, as in card 40.00");
    return settle(till, "Payment", salePay(&till->sale, type, kurus));
}

static int cash(Till *till, char *words)
{
    return pay(till, words, 0);
}

static int card(Till *till, char *words)
{
    return pay(till, words, 1);
}

static int end(Till *till, char *words)
{
    const int byCard = words && strcmp(words, "card") == 0;
    if (words && !byCard)
        return usage("end, which takes the rest in cash, or end card");
    return settle(till, "Ending", saleEnd(&till->sale, byCard));
}

static int cancel(Till *till, char *words)
{
    (void)words;
    return settle(till, "Cancelling", saleCancel(&till->sale));
}

static int again(Till *till, char *words)
{
    (void)words;
    return settle(till, "Going on", saleGoOn(&till->sale));
}

static int sold(Till *till, char *words)
{
    (void)words;
    return settle(till, "Sold, as seen", saleDecide(&till->sale, 1));
}

static int unsold(Till *till, char *words)
{
    (void)words;
    return settle(till, "Not sold, as seen", saleDecide(&till->sale, 0));
}

/* Printing ---------------------------------------------------------------------------------------------- */

static int askReceipt(Till *till, char *words)
{
    const char *const z = takeWord(&words);
    const char *const number = takeWord(&words);
    VelnoReceiptRef ref;
    VelnoEcrSaleTotals totals;
    int failures = 0, code;
    if (!readNumber(z, 1, 999999999, &ref.first) || !readNumber(number, 1, 999999999, &ref.second))
        return usage("receipt Z NUMBER, as in receipt 12 7");
    do
        code = velnoext_receipt_data(answerTimeout, &ref, &totals);
    while (code != 0 && (code = prepareToRepeat(&till->reg, code, &failures)) == 0);
    if (code == 0)
        printTotals("Receipt", &totals);
    return explain("Asking for the receipt", code);
}

static int composeSlip(const char *text)
{
    VelnoTextStyle title = {1, 1, 0}, plain = {0, 0, 0};
    int code = velnoext_printer_set_encoding("UTF-8");
    if (code == 0)
        code = velnoext_printer_add_text("VELNO", &title);
    if (code == 0)
        code = velnoext_printer_add_text(text, &plain);
    if (code == 0)
        code = velnoext_printer_add_line_feed(2);
    return code;
}

/* No register tells whether a slip or an X report has been printed: the cashier sees the paper, and types
 * the same again if there is none. The connection is made sure of before, as a slip stays in the library
 * without one. */
static int print(Till *till, const char *what, const char *slip)
{
    int state, failures = 0, code;
    while ((code = velnoext_ecr_state(answerTimeout, &state)) != 0)
        if ((code = prepareToRepeat(&till->reg, code, &failures)) != 0)
            return explain(what, code);
    if (slip)
        code = composeSlip(slip);
    if (code == 0)
        code = slip ? velnoext_print_slip(answerTimeout, 0) : velnoext_x_report();
    explain(what, code);
    if (leavesOpen(code)) {
        fprintf(stderr, "Look whether it is printed; it is not repeated by itself.\n");
        prepareToRepeat(&till->reg, code, &failures);
    } else if (code == 8) {
        explain("The printer", velnoext_check_printer_paper(answerTimeout));
    }
    if (code == 0)
        printf("%s: printed\n", what);
    return code;
}

static int slip(Till *till, char *words)
{
    return words ? print(till, "Slip", words) : usage("slip TEXT");
}

static int xReport(Till *till, char *words)
{
    (void)words;
    return print(till, "X report", NULL);
}

static int reportZ(Till *till, int z)
{
    const int code = explain("Z report", makeZReport(&till->reg, z));
    if (code != 0 && code != 8)
        return code; /* it stays noted: not known */
    if (code == 0)
        printf("Z report %d: made\n", z);
    return noteReportEnd(&till->books, z, code == 0) == 0 ? code : explain("Noting it", saleNotNoted);
}

/* @return 0; otherwise the code, which is explained */
static int askForZ(Till *till, int *z)
{
    int failures = 0, code;
    while ((code = velnoext_current_z(answerTimeout, z)) != 0)
        if ((code = prepareToRepeat(&till->reg, code, &failures)) != 0)
            return explain("Asking for the Z number", code);
    return 0;
}

static int zReport(Till *till, char *words)
{
    int z = till->books.report, code;
    (void)words;
    if (z == 0 && (code = askForZ(till, &z)) != 0)
        return code;
    if (till->books.report == 0 && noteReport(&till->books, z) != 0)
        return explain("Noting it", saleNotNoted);
    return reportZ(till, z);
}

/* The day ----------------------------------------------------------------------------------------------- */

typedef struct Command
{
    const char *name;
    int (*run)(Till *till, char *words); /* words: what stands behind the name, or NULL */
} Command;

static int help(Till *till, char *words);

static const Command commands[] = {
    {"item", item},     {"delete", deleteLast}, {"cash", cash}, {"card", card},     {"end", end},
    {"cancel", cancel}, {"again", again},       {"sold", sold}, {"unsold", unsold}, {"receipt", askReceipt},
    {"slip", slip},     {"x", xReport},         {"z", zReport}, {"help", help},
};

enum { commandCount = sizeof commands / sizeof *commands };

static void listCommands(FILE *file)
{
    int i;
    for (i = 0; i < commandCount; ++i)
        fprintf(file, " %s", commands[i].name);
    fprintf(file, " quit\n");
}

static int help(Till *till, char *words)
{
    (void)till;
    (void)words;
    printf("Commands:");
    listCommands(stdout);
    return 0;
}

static int obey(Till *till, char *line)
{
    const char *const name = takeWord(&line);
    int i;
    if (!name)
        return 0;
    for (i = 0; i < commandCount; ++i)
        if (strcmp(name, commands[i].name) == 0)
            return commands[i].run(till, line);
    fprintf(stderr, "Not understood. Accepted:");
    listCommands(stderr);
    return wrongUsage;
}

/* A line; a longer one is read to its end and is none. @return NULL at the end */
static char *readCommand(char *line)
{
    fflush(stdout);
    if (!fgets(line, longestLine, stdin))
        return NULL;
    if (!strchr(line, '\n') && !feof(stdin)) {
        int c;
        while ((c = getchar()) != EOF && c != '\n') {
        }
        strcpy(line, "?");
    }
    line[strcspn(line, "\r\n")] = '\0';
    return strcmp(line, "quit") == 0 ? NULL : line;
}

/* What an earlier process has sold, and perhaps could not say any more. */
static int tellEarlierSale(Books *books)
{
    if (books->isTold)
        return 0;
    printReceipt("Sold before this start", &books->closed);
    printAmount("It came to: total", books->totals.values[totalToPay]);
    printPayments(&books->totals);
    fflush(stdout);
    return noteTold(books) == 0 ? 0 : explain("Noting it", saleNotNoted);
}

/* The end of a sale that an earlier process did not see. Its lines are forgotten, so one that is open is
 * cancelled. */
static int findEarlierSale(Till *till)
{
    const VelnoReceiptRef receipt = till->books.open;
    int code;
    if (receipt.first == 0)
        return 0;
    printReceipt("Not seen to its end", &receipt);
    code = saleFind(&till->sale, &receipt);
    if (code == 0 && till->sale.status == SaleOpen)
        code = saleCancel(&till->sale);
    code = settle(till, "Finding it", code);
    return till->sale.undecided ? 0 : code; /* the cashier may answer later */
}

/* Nothing is sold before the number is noted: an open sale that is not in the books is empty, or somebody
 * else's. @return 6: there is none (any more) */
static int cancelEmptySale(void)
{
    VelnoReceiptRef receipt;
    VelnoEcrSaleTotals totals;
    int first, code = velnoext_sale_state(answerTimeout, &first, &totals, &receipt);
    if (code == 0 && (totals.number != 0 || totals.values[totalToPay] != 0))
        return saleNotOurs;
    if (code == 0 && (code = velnoext_cancel_sale(answerTimeout)) == 6)
        code = 7; /* a 6 of its own does not say that no sale is open */
    return code;
}

static int findUnknownSale(Till *till)
{
    int failures = 0, code;
    do
        code = cancelEmptySale();
    while (code == 0 || (code != 6 && (code = prepareToRepeat(&till->reg, code, &failures)) == 0));
    if (code == saleNotOurs)
        fprintf(stderr, "A sale is open that is none of this till: end it on the register.\n");
    else if (code != 6)
        explain("Cancelling an empty sale", code);
    return code == 6 ? 0 : code == saleNotOurs ? 6 : code;
}

/* Whether the report that an earlier process began is made. It is not made now: the day may have gone on. */
static int findEarlierReport(Till *till)
{
    const int z = till->books.report;
    int current, code;
    if (z == 0)
        return 0;
    code = askForZ(till, &current);
    if (code != 0)
        return code;
    if (current < z)
        return explain("The Z number", saleNotOurs); /* it never becomes smaller: another register */
    printf("Z report %d: %s\n", z, current != z ? "was made" : "was not made");
    return noteReportEnd(&till->books, z, current != z) == 0 ? 0 : explain("Noting it", saleNotNoted);
}

static int openTill(Till *till)
{
    int code = tellEarlierSale(&till->books);
    if (code == 0)
        code = explain("Connecting", connectRegister(&till->reg));
    if (code == 0 && settleDoubts(till) != 0)
        code = explain("Noting it", saleNotNoted);
    if (code == 0)
        code = findEarlierSale(till);
    if (code == 0)
        code = findUnknownSale(till);
    return code == 0 ? findEarlierReport(till) : code;
}

static int sell(Till *till)
{
    char line[longestLine];
    int code = openTill(till);
    if (code != 0)
        return code;
    printf("Ready\n");
    while (readCommand(line))
        obey(till, line);
    if (till->books.open.first != 0)
        fprintf(stderr, "A sale is open; the next start looks after it.\n");
    return 0;
}

static int openBooksAt(Till *till, const char *path)
{
    const int problem = openBooks(&till->books, path);
    if (problem > 0)
        fprintf(stderr, "%s, line %d: not a line of the books\n", path, problem);
    else if (problem < 0)
        fprintf(stderr, "%s: cannot be used: %s\n", path, strerror(errno));
    return problem;
}

/* @return whether the arguments are as they should be */
static int prepare(Till *till, char **arguments)
{
    int port;
    if (!readNumber(arguments[3], 1, 65535, &port))
        return 0;
    till->reg.serial = arguments[1];
    till->reg.address = arguments[2];
    till->reg.port = (unsigned short)port;
    till->reg.patience = 30000;
    till->reg.notice = hear;
    till->sale.reg = &till->reg;
    till->sale.note = noteSale;
    till->sale.context = &till->books;
    return 1;
}

int main(int argc, char **argv)
{
    static Till till;
    int code;
    if (argc != 5 || !prepare(&till, argv)) {
        fprintf(stderr, "Usage: %s SERIAL ADDRESS PORT BOOKS\n", argv[0]);
        return wrongUsage;
    }
    if (openBooksAt(&till, argv[4]) != 0)
        return wrongUsage;
    till.sale.known = till.books.closed;
    velnoext_set_log(hearLibrary, NULL);
    code = sell(&till);
    velnoext_close(); /* also after a failure: ends the library's thread */
    closeBooks(&till.books);
    return code;
}
