// SPDX-License-Identifier: Apache-2.0

/*
 * Every function of velnotill.h once, in an order that makes sense: look here for how one is called.
 *
 *     cc every_till_call.c -o every_till_call $(pkg-config --cflags --libs velnotill)
 *     ./every_till_call UB1234567890 127.0.0.1 4100 till.ledger
 *
 * For a simulated register and a ledger of its own: it sells, and ends the day with a Z report.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <velnotill.h>

static const char receipt[] = "{\"items\": [{\"name\": \"Ekmek\", \"price\": \"12.50\", \"section\": 1}],"
                              " \"payments\": [{\"cash\": \"20.00\"}]}";
static const char slip[] = "{\"encoding\": \"UTF-8\", \"lines\": [\"Afiyet olsun\", {\"feed\": 2}]}";

static VelnoTill *till;
static int failures;

static void step(const char *name, int result)
{
    printf("%s: %s\n", name, velnotill_result_name(result));
    if (result == VelnoTillResult_Done)
        return;
    ++failures;
    fprintf(stderr, "%s\n%s\n", velnotill_result_text(result, "en"), velnotill_problem());
}

/* Told while an order is under way: for a cashier's display. */
static void hear(const char *key, int stage, const VelnoTillOutcome *outcome, void *context)
{
    (void)outcome;
    (void)context;
    fprintf(stderr, "%s: %s (%s)\n", key, velnotill_stage_text(stage, "en"), velnotill_stage_name(stage));
}

/* 0 is not "sold": the state tells. */
static void show(const VelnoTillOutcome *outcome)
{
    char *text = NULL;
    printf("%s %s, paper %s, question %s, answer %s: %s\n", velnotill_kind_name(outcome->kind),
           velnotill_state_name(outcome->state), velnotill_paper_name(outcome->paper),
           velnotill_question_name(outcome->question), velnotill_answer_name(outcome->answer),
           velnotill_state_text(outcome->state, "en"));
    if (velnotill_message(outcome, "en", &text) == VelnoTillResult_Done)
        printf("%s\n", text);
    velnotill_free_text(text);
}

static void showOrder(const char *key, const VelnoTillOutcome *outcome, void *context)
{
    (void)context;
    printf("%s: %s\n", key, velnotill_state_name(outcome->state));
}

static void showEvent(const VelnoTillEvent *event, void *context)
{
    (void)context;
    printf("%s, %s\n", velnotill_state_name(event->state), event->text);
}

static void sell(void)
{
    VelnoTillOutcome outcome = {.size = sizeof outcome};
    step("check receipt", velnotill_check_receipt(receipt));
    step("sell", velnotill_sell(till, "sale 1", receipt, &outcome));
    show(&outcome);
    step("sell again", velnotill_sell(till, "sale 1", receipt, &outcome)); /* sells nothing: it is the same */
    step("find", velnotill_find(till, "sale 1", &outcome));
}

/* On record first, worked off later; and one that is not wanted any more. */
static void acceptAndWork(void)
{
    VelnoTillOutcome outcome = {.size = sizeof outcome};
    step("accept", velnotill_accept(till, "sale 2", receipt, &outcome));
    step("accept", velnotill_accept(till, "sale 3", receipt, &outcome));
    step("answer", velnotill_answer(till, "sale 3", VelnoTillAnswer_Drop, "Ayşe", &outcome));
    step("list", velnotill_list(till, VELNOTILL_UNSETTLED_STATES, showOrder, NULL));
    step("work", velnotill_work(till));
    step("list", velnotill_list(till, VELNOTILL_ALL_STATES, showOrder, NULL));
}

static void print(void)
{
    VelnoTillOutcome outcome = {.size = sizeof outcome};
    step("check slip", velnotill_check_slip(slip));
    step("print slip", velnotill_print_slip(till, "slip 1", slip, &outcome));
    step("x report", velnotill_x_report(till, "x 1", &outcome));
    step("z report", velnotill_z_report(till, "z 1", &outcome));
    show(&outcome);
}

static void readTheLedger(void)
{
    char *json = NULL;
    int count = 0;
    step("history", velnotill_history(till, "sale 1", showEvent, NULL));
    step("json", velnotill_json(till, "sale 1", &json));
    printf("%u bytes of JSON\n", json ? (unsigned)strlen(json) : 0U);
    velnotill_free_text(json);
    step("prune", velnotill_prune(till, 30u * 24 * 60 * 60, &count)); /* those settled a month ago */
    printf("%d orders forgotten\n", count);
}

int main(int argc, char **argv)
{
    VelnoTillSettings settings = {.size = sizeof settings, .appNo = 5};
    int result;
    if (argc != 5) {
        fprintf(stderr, "Usage: %s SERIAL ADDRESS PORT LEDGER\n", argv[0]);
        return 64;
    }
    settings.serial = argv[1];
    settings.address = argv[2];
    settings.port = (unsigned)strtoul(argv[3], NULL, 10);
    settings.ledger = argv[4];
    result = velnotill_open(&till, &settings);
    step("open", result);
    if (result != VelnoTillResult_Done)
        return 1;
    step("set listener", velnotill_set_listener(till, hear, NULL));
    velnotill_interrupt(till); /* ends the work of another thread; here there is none, so it does nothing */
    sell();
    acceptAndWork();
    print();
    readTheLedger();
    step("close", velnotill_close(till));
    return failures == 0 ? 0 : 1;
}
