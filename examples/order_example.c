/* SPDX-License-Identifier: MIT */
/* A C host of the order library: reads a client order from a tagged message,
 * prints what a blotter shows for it, moves its price by property name as an
 * order screen would, and saves it into the order database that the OMS INI
 * file (OMS_INI) names.
 *
 *   qal_order_example [message]
 *
 * Without a message it takes a manual, fill-and-kill house order: buy 2000
 * HSBC (0005.HK) at 62.35 for account A1001, entered by dealer D001, with the
 * client's instruction in the remark. No Qt application object is created:
 * the library needs none, and the texts come out in English.
 * Exit status 0 when the order was saved, 1 otherwise. */
#include <stdio.h>

#include "qalpack/qalpack.h"

/* Tags: 0 symbol, 10 account, 13 user, 4 quantity, 3 price, 11 side (0 buy),
 * 5 status (1 pending), 20 exchange, 40 instructions (0x20 manual, 0x80 fill
 * and kill: 160), 46 principal (12 house), 25 remark. */
static const char sampleMessage[] = "H|0|0005.HK|10|A1001|13|D001|4|2000|3|62.35|11|0|5|1|20|SEHK|"
                                    "40|160|46|12|25|\xe9\x99\xb3\xe7\x94\x9f call back|";

static int report(const char* what, QalOrder* order)
{
    fprintf(stderr, "qal_order_example: %s: %s\n", what, qalLastError());
    qalFreeOrder(order);
    return 1;
}

int main(int argc, char** argv)
{
    const char* message = argc > 1 ? argv[1] : sampleMessage;
    QalOrder* order;

    printf("library  qalpack %s\n", qalVersion());
    order = qalOrderFromMessage(message, QAL_UTF8);
    if (order == NULL)
        return report("cannot read the message", NULL);

    printf("order    %s %s %s @ %s for %s\n", qalOrderSideText(order), qalOrderGetProperty(order, "RQty"),
        qalOrderGetProperty(order, "RSymbol"), qalOrderGetProperty(order, "RPrice"),
        qalOrderGetProperty(order, "RAccount"));
    printf("remark   %s\n", qalOrderRemark(order));
    printf("status   %s\n", qalOrderStatusText(order));

    /* The dealer improves the limit by one tick before sending. */
    if (qalOrderSetProperty(order, "WPrice", "62.40") != 0)
        return report("cannot set the price", order);

    if (orderSaveOrder(order) != 0)
        return report("the order was not saved", order);
    printf("saved    order %s at %s, price %s\n", qalOrderGetProperty(order, "ROmsOrder_No"),
        qalOrderGetProperty(order, "ROrder_Time"), qalOrderGetProperty(order, "RPrice"));
    printf("message  %s\n", qalOrderImageMessage(order, QAL_UTF8));

    qalFreeOrder(order);
    return 0;
}
