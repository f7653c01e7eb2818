/* SPDX-License-Identifier: MIT */
/* A C host: the version it was built against and the one it loaded. */
#include <stdio.h>
#include <string.h>

#include "qalpack/qalpack.h"
#include "qalpack/version.h"

int main(void)
{
    printf("built against %s, loaded %s\n", QALPACK_VERSION_STRING, qalVersion());
    return strcmp(QALPACK_VERSION_STRING, qalVersion()) == 0 ? 0 : 1;
}
