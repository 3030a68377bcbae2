// SPDX-License-Identifier: Apache-2.0

#include <velnotill.h>

#include <stdio.h>

int main(void)
{
    VelnoTill *till = NULL;
    const int result = velnotill_open(&till, NULL);
    printf("without settings: %d, %s\n", result, velnotill_result_name(result));
    return 0;
}
