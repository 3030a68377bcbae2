// SPDX-License-Identifier: Apache-2.0

/*
 * A small till: a point-of-sale application to start from. It reads what the cashier types, line by line, and
 * hands over each sale as one receipt.
 *
 *     cc pos.c -o pos $(pkg-config --cflags --libs velnotill)
 *     ./pos UB1234567890 0.0.0.0 4100 till.ledger
 *
 * The register must be set to connect to this computer at that port. On first contact it is paired. Whatever
 * was handed over stands in the ledger: the next start goes on with it.
 */
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <velnotill.h>

enum { wrongUsage = 64, longestLine = 256, longestQuoted = 2 * longestLine + 3, longestPart = 1024 };
enum { mostItems = 200, mostPayments = 10 };

/* The sale that is being typed, each line as it stands in the receipt. */
typedef struct Pos
{
    VelnoTill *till;
    char items[mostItems][longestPart];
    int itemCount;
    char payments[mostPayments][longestPart];
    int paymentCount;
    int orders; /* since the start */
} Pos;

/* A receipt as JSON ------------------------------------------------------------------------------------- */

typedef struct Text
{
    char bytes[(mostItems + mostPayments) * longestPart + longestPart];
    size_t size;
} Text;

static Text json; /* of the receipt or slip that is handed over */

static void begin(void)
{
    json.size = 0;
    json.bytes[0] = '\0';
}

static void add(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    json.size += (size_t)vsnprintf(json.bytes + json.size, sizeof json.bytes - json.size, format, arguments);
    va_end(arguments);
}

/* What the cashier typed, between quotes. @param to  room for longestQuoted bytes */
static char *quoted(char *to, const char *text)
{
    char *end = to;
    *end++ = '"';
    for (; *text; ++text) {
        if (*text == '"' || *text == '\\')
            *end++ = '\\';
        *end++ = *text;
    }
    *end++ = '"';
    *end = '\0';
    return to;
}

static void addList(const char *name, char (*parts)[longestPart], int count, const char *rest)
{
    int i;
    add("\"%s\": [", name);
    for (i = 0; i < count; ++i)
        add("%s%s", i > 0 ? ", " : "", parts[i]);
    add("%s%s]", count > 0 && *rest ? ", " : "", rest);
}

/* What has been typed, and the rest by this means. Cash that a cut has made void lies in the drawer: it is
 * entered again by itself. */
static const char *receiptOf(Pos *pos, const char *means)
{
    char rest[32];
    begin();
    snprintf(rest, sizeof rest, "{\"%s\": \"rest\"}", means);
    add("{");
    addList("items", pos->items, pos->itemCount, "");
    add(", ");
    addList("payments", pos->payments, pos->paymentCount, rest);
    add(", \"reenterCash\": true}");
    return json.bytes;
}

/* What the cashier is told ------------------------------------------------------------------------------ */

static void hear(const char *key, int stage, const VelnoTillOutcome *outcome, void *context)
{
    (void)key;
    (void)outcome;
    (void)context;
    if (stage == VelnoTillStage_CardPayment || stage == VelnoTillStage_Looking || stage == VelnoTillStage_Busy)
        fprintf(stderr, "%s\n", velnotill_stage_text(stage, "en"));
}

static void show(const char *key, const VelnoTillOutcome *outcome, void *context)
{
    char *text = NULL;
    (void)context;
    if (velnotill_message(outcome, "en", &text) == 0)
        printf("%s: %s\n", key, text);
    velnotill_free_text(text);
}

/* @return the result, with its problem told */
static int told(int result)
{
    if (result != VelnoTillResult_Done)
        fprintf(stderr, "%s\n", velnotill_problem());
    return result;
}

static int usage(const char *accepted)
{
    fprintf(stderr, "Not understood. Accepted: %s\n", accepted);
    return wrongUsage;
}

/* Selling ----------------------------------------------------------------------------------------------- */

/* Cuts the first word off. @return NULL: there is none */
static char *takeWord(char **rest)
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

/* Of clock and process: an order of another start has another one. */
static void makeKey(Pos *pos, const char *kind, char *key, size_t size)
{
    snprintf(key, size, "%s-%lld-%ld-%d", kind, (long long)time(NULL), (long)getpid(), ++pos->orders);
}

static int cancel(Pos *pos, char *words)
{
    (void)words;
    pos->itemCount = pos->paymentCount = 0;
    return 0;
}

/* Judged at once, with all that was typed before. */
static int item(Pos *pos, char *words)
{
    const char *const price = takeWord(&words);
    const char *const quantity = takeWord(&words);
    const char *const section = takeWord(&words);
    char a[longestQuoted], b[longestQuoted], c[longestQuoted];
    if (!price || !quantity || !section || !words || strspn(section, "0123456789") != strlen(section))
        return usage("item PRICE QUANTITY SECTION NAME, as in item 12.50 2 1 Ekmek");
    if (pos->itemCount == mostItems)
        return usage("no more lines");
    snprintf(pos->items[pos->itemCount++], longestPart,
             "{\"name\": %s, \"price\": %s, \"quantity\": %s, \"section\": %d}", quoted(a, words),
             quoted(b, price), quoted(c, quantity), atoi(section));
    if (velnotill_check_receipt(receiptOf(pos, "cash")) == VelnoTillResult_Done)
        return 0;
    --pos->itemCount;
    return told(VelnoTillResult_BadContent);
}

static int deleteLast(Pos *pos, char *words)
{
    (void)words;
    pos->itemCount -= pos->itemCount > 0;
    return 0;
}

static int pay(Pos *pos, const char *means, const char *amount)
{
    char text[longestQuoted];
    if (!amount || pos->itemCount == 0 || pos->paymentCount == mostPayments)
        return usage("cash AMOUNT or card AMOUNT behind an item, as in card 40.00");
    snprintf(pos->payments[pos->paymentCount++], longestPart, "{\"%s\": %s}", means, quoted(text, amount));
    if (velnotill_check_receipt(receiptOf(pos, "cash")) == VelnoTillResult_Done)
        return 0;
    --pos->paymentCount;
    return told(VelnoTillResult_BadContent);
}

static int cash(Pos *pos, char *words)
{
    return pay(pos, "cash", takeWord(&words));
}

static int card(Pos *pos, char *words)
{
    return pay(pos, "card", takeWord(&words));
}

/* What a call for an order came to. The order is on record now, whatever its state. */
static int ended(const char *key, int result, const VelnoTillOutcome *outcome)
{
    if (told(result) == VelnoTillResult_Done)
        show(key, outcome, NULL);
    return result;
}

static int end(Pos *pos, char *words)
{
    const int byCard = words && strcmp(words, "card") == 0;
    VelnoTillOutcome outcome = {.size = sizeof outcome};
    char key[64];
    int result;
    if ((words && !byCard) || pos->itemCount == 0)
        return usage("end behind an item, which takes the rest in cash, or end card");
    makeKey(pos, "sale", key, sizeof key);
    result = velnotill_sell(pos->till, key, receiptOf(pos, byCard ? "card" : "cash"), &outcome);
    if (result == VelnoTillResult_Done)
        cancel(pos, NULL); /* the ledger has it: the next sale may be typed */
    return ended(key, result, &outcome);
}

/* Printing ---------------------------------------------------------------------------------------------- */

static int slip(Pos *pos, char *words)
{
    VelnoTillOutcome outcome = {.size = sizeof outcome};
    char key[64], text[longestQuoted];
    if (!words)
        return usage("slip TEXT");
    begin();
    add("{\"encoding\": \"UTF-8\", \"lines\": [{\"text\": \"VELNO\", \"size\": 1, \"styleA\": true}, %s, "
        "{\"feed\": 2}]}",
        quoted(text, words));
    makeKey(pos, "slip", key, sizeof key);
    return ended(key, velnotill_print_slip(pos->till, key, json.bytes, &outcome), &outcome);
}

static int xReport(Pos *pos, char *words)
{
    VelnoTillOutcome outcome = {.size = sizeof outcome};
    char key[64];
    (void)words;
    makeKey(pos, "x", key, sizeof key);
    return ended(key, velnotill_x_report(pos->till, key, &outcome), &outcome);
}

static int zReport(Pos *pos, char *words)
{
    VelnoTillOutcome outcome = {.size = sizeof outcome};
    char key[64];
    (void)words;
    makeKey(pos, "z", key, sizeof key);
    return ended(key, velnotill_z_report(pos->till, key, &outcome), &outcome);
}

/* What is left ------------------------------------------------------------------------------------------ */

/* Goes on with everything that waits, and shows what is still not settled. */
static int again(Pos *pos, char *words)
{
    const int result = told(velnotill_work(pos->till));
    (void)words;
    velnotill_list(pos->till, VELNOTILL_UNSETTLED_STATES, show, NULL);
    return result;
}

static int answer(Pos *pos, char *words)
{
    const char *const key = takeWord(&words);
    const char *const person = takeWord(&words);
    VelnoTillOutcome outcome = {.size = sizeof outcome};
    int number = VelnoTillAnswer_Paid;
    while (words && number <= VelnoTillAnswer_Drop && strcmp(words, velnotill_answer_name(number)) != 0)
        ++number;
    if (!key || !person || !words || number > VelnoTillAnswer_Drop)
        return usage("answer KEY NAME paid, sell-again or drop, as in answer sale-1795341600-812-1 Ayşe paid");
    if (told(velnotill_answer(pos->till, key, number, person, &outcome)) != VelnoTillResult_Done)
        return wrongUsage;
    told(velnotill_work(pos->till));
    return ended(key, velnotill_find(pos->till, key, &outcome), &outcome);
}

/* The day ----------------------------------------------------------------------------------------------- */

typedef struct Command
{
    const char *name;
    int (*run)(Pos *pos, char *words); /* words: what stands behind the name, or NULL */
} Command;

static const Command commands[] = {
    {"item", item},     {"delete", deleteLast}, {"cash", cash}, {"card", card}, {"end", end},
    {"cancel", cancel}, {"again", again},       {"slip", slip}, {"x", xReport}, {"z", zReport},
    {"answer", answer},
};

enum { commandCount = sizeof commands / sizeof *commands };

static void obey(Pos *pos, char *line)
{
    const char *const name = takeWord(&line);
    int i;
    for (i = 0; name && i < commandCount; ++i)
        if (strcmp(name, commands[i].name) == 0) {
            commands[i].run(pos, line);
            return;
        }
    fprintf(stderr, "Not understood. Accepted:");
    for (i = 0; i < commandCount; ++i)
        fprintf(stderr, " %s", commands[i].name);
    fprintf(stderr, " quit\n");
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

int main(int argc, char **argv)
{
    static Pos pos;
    char line[longestLine];
    VelnoTillSettings settings = {.size = sizeof settings, .appNo = 5};
    if (argc != 5) {
        fprintf(stderr, "Usage: %s SERIAL ADDRESS PORT LEDGER\n", argv[0]);
        return wrongUsage;
    }
    settings.serial = argv[1];
    settings.address = argv[2];
    settings.port = (unsigned)strtoul(argv[3], NULL, 10);
    settings.ledger = argv[4];
    if (told(velnotill_open(&pos.till, &settings)) != VelnoTillResult_Done)
        return wrongUsage;
    velnotill_set_listener(pos.till, hear, NULL);
    again(&pos, NULL); /* what an earlier process has left */
    printf("Ready\n");
    while (readCommand(line))
        obey(&pos, line);
    return velnotill_close(pos.till);
}
