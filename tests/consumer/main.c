// SPDX-License-Identifier: Apache-2.0

#include <velnoext.h>

#include <stdio.h>

int main(void)
{
    printf("interface %s, without a register: %d\n", velnoext_version(), velnoext_login(1));
    return 0;
}
