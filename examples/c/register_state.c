// SPDX-License-Identifier: Apache-2.0

/*
 * Reads the state and the Z number of a cash register: the smallest program on libvelnoext.
 *
 *     cc register_state.c -o register_state $(pkg-config --cflags --libs velnoext)
 *     ./register_state UB1234567890 0.0.0.0 4100
 *
 * The register must be set to connect to this computer at that port. On first contact it is paired.
 */
#include <stdio.h>
#include <stdlib.h>

#include <velnoext.h>

enum { application = 5, connectTimeout = 30000, answerTimeout = 5000 };

static int report(const char *step, int code)
{
    const int cause = velnoext_cause(); /* both before any other call */
    const int detail = velnoext_error_detail();
    fprintf(stderr, "%s failed: %s (%d), %s (%d)\n%s\n", step, velnoext_result_name(code), code,
            velnoext_cause_name(cause), cause, velnoext_cause_text(cause));
    if (detail != 0)
        fprintf(stderr, "%s\n", velnoext_detail_text(detail));
    velnoext_close(); /* also after a failure: ends the library's thread */
    return code;
}

/* The library's own lines do not belong among the results. */
static void hearLibrary(const char *text, void *context)
{
    (void)context;
    fprintf(stderr, "%s\n", text);
}

int main(int argc, char **argv)
{
    int code, state, z;
    if (argc != 4) {
        fprintf(stderr, "Usage: %s SERIAL ADDRESS PORT\n", argv[0]);
        return 64;
    }
    velnoext_set_log(hearLibrary, NULL);
    code = velnoext_initialize(application, argv[1], argv[2], (unsigned short)atoi(argv[3]), connectTimeout);
    if (code != 0)
        return report("Connecting", code);
    if ((code = velnoext_ecr_state(answerTimeout, &state)) != 0)
        return report("Reading the state", code);
    if ((code = velnoext_current_z(answerTimeout, &z)) != 0)
        return report("Reading the Z number", code);
    printf("Register %s is in state %d, Z number %d.\n", argv[1], state, z);
    velnoext_close_all();
    return 0;
}
