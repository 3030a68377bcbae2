// SPDX-License-Identifier: Apache-2.0

/*
 * A till without Qt of its own: sells the receipt under a key on the register at the port given, twice, with the ledger
 * given. With "stay" behind them it ends without closing the till.
 */
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "velnotill.h"

static const char receipt[] = "{\"items\":[{\"name\":\"Ekmek\",\"price\":\"12.50\",\"section\":1}],"
                              "\"payments\":[{\"cash\":\"rest\"}]}";

static int sellOnce(VelnoTill *till)
{
    VelnoTillOutcome outcome = {.size = sizeof outcome};
    const int result = velnotill_sell(till, "sale 1", receipt, &outcome);
    if (result != 0)
        printf("%s\n", velnotill_problem());
    printf("result %d state %s receipt %d/%d locale %s\n", result, velnotill_state_name(outcome.state),
           outcome.reference.first, outcome.reference.second, setlocale(LC_ALL, NULL));
    return result;
}

int main(int argc, char **argv)
{
    VelnoTillSettings settings = {.size = sizeof settings,
                                  .appNo = 5,
                                  .port = argc > 1 ? (unsigned)atoi(argv[1]) : 0,
                                  .connectTimeout = 20000,
                                  .serial = "UB1234567890",
                                  .address = "127.0.0.1",
                                  .ledger = argc > 2 ? argv[2] : ""};
    VelnoTill *till = NULL;
    int result = velnotill_open(&till, &settings);
    if (result != 0) {
        printf("%s\n", velnotill_problem());
        return result;
    }
    result = sellOnce(till);
    if (result == 0)
        result = sellOnce(till);
    if (argc > 3 && strcmp(argv[3], "stay") == 0)
        return result;
    return velnotill_close(till) + result;
}
