/* SPDX-License-Identifier: MIT */
/* Compiles the exported header on its own as C, and takes the address of a
 * few functions so that their declarations are really used. */
#include "qalpack/qalpack.h"

typedef QalOrder* (*OrderFromMessage)(const char*, int);

OrderFromMessage qalHeaderCheckOrderFromMessage(void);

OrderFromMessage qalHeaderCheckOrderFromMessage(void)
{
    return &qalOrderFromMessage;
}
