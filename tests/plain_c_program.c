// SPDX-License-Identifier: Apache-2.0

/*
 * A program without Qt of its own: pairs with the register on the port given and reads its state, twice.
 * With a second argument it first removes that file, its own executable; with "stay" in its place it ends
 * while connected.
 */
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "velnoext.h"

static int readOnce(unsigned short port)
{
    int state = -1;
    int code = velnoext_initialize(5, "UB1234567890", "127.0.0.1", port, 20000);
    if (code == 0)
        code = velnoext_ecr_state(5000, &state);
    printf("code %d state %d locale %s\n", code, state, setlocale(LC_ALL, NULL));
    if (code != 0)
        printf("cause %d\n", velnoext_cause());
    return code;
}

int main(int argc, char **argv)
{
    const unsigned short port = argc > 1 ? (unsigned short)atoi(argv[1]) : 0;
    const int stays = argc > 2 && strcmp(argv[2], "stay") == 0;
    if (argc > 2 && !stays && remove(argv[2]) != 0)
        return 99;
    int code = readOnce(port);
    if (stays)
        return code;
    velnoext_close_all();
    if (code == 0)
        code = readOnce(port);
    velnoext_close_all();
    return code;
}
