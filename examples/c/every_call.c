// SPDX-License-Identifier: Apache-2.0

/*
 * Every function of velnoext.h once, in an order that makes sense: look here for how one is called.
 *
 *     cc every_call.c -o every_call $(pkg-config --cflags --libs velnoext)
 *     ./every_call UB1234567890 127.0.0.1 4100
 *
 * For a simulated register: it sells, and ends the day with a Z report.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <velnoext.h>

enum { application = 5, rawApplication = 14242, connectTimeout = 30000, timeout = 5000 };

static const char *serial;
static const char *address;
static unsigned short port;
static int failures;

/* A step in a line; one that fails with its reason, asked for before any other call. */
static void step(const char *name, int code)
{
    const int cause = velnoext_cause();
    const int detail = velnoext_error_detail();
    printf("%s: %s\n", name, velnoext_result_name(code));
    if (code == VelnoResult_Success)
        return;
    ++failures;
    fprintf(stderr, "%s\n%s (%d)\n%s\n%s\n", velnoext_result_text(code), velnoext_cause_name(cause), cause,
            velnoext_cause_text(cause), velnoext_detail_text(detail));
}

static void showTotals(const VelnoEcrSaleTotals *totals)
{
    printf("to pay %lld, tax %lld, cash %lld, card %lld, change %lld kuruş, %d lines\n",
           totals->values[VelnoTotal_ToPay], totals->values[VelnoTotal_Tax],
           totals->values[VelnoTotal_Cash], totals->values[VelnoTotal_Card],
           totals->values[VelnoTotal_Change], totals->number);
}

static VelnoSaleItem itemOf(const char *name, long long price, int quantity)
{
    VelnoSaleItem item;
    memset(&item, 0, sizeof item);
    strncpy(item.name, name, sizeof item.name - 1);
    item.price = price;
    item.quantity = quantity;
    item.section = 1;
    item.type = VelnoItemType_Piece;
    return item;
}

/* What the library says of a pairing that fails; it belongs to no result. */
static void hear(const char *text, void *context)
{
    (void)context;
    fprintf(stderr, "%s\n", text);
}

static int connectRegister(unsigned int appNo)
{
    const int code = velnoext_initialize(appNo, serial, address, port, connectTimeout);
    step("initialize", code);
    return code;
}

static int begin(void)
{
    char active[13];
    printf("interface %s, library %s\n", velnoext_version(), velnoext_library_version());
    velnoext_set_log(hear, NULL);
    step("set language", velnoext_set_language("en"));
    step("set answer limit", velnoext_set_answer_limit(120000)); /* somebody may have to act at the register */
    velnoext_interrupt(); /* ends the call of another thread; here there is none, so it does nothing */
    if (connectRegister(application) != VelnoResult_Success)
        return 0;
    step("set active device", velnoext_set_active_device(serial));
    step("active device", velnoext_active_device(active));
    printf("active is %s\n", active);
    return 1;
}

static void askTheRegister(void)
{
    char pairedAs[17];
    int state = 0, z = 0, lastZ = 0, now = 0;
    int acquirers[10];
    int count = sizeof acquirers / sizeof *acquirers;
    long long limit = 0;
    VelnoSaleItem section = itemOf("", 0, 0);
    step("login", velnoext_login(timeout));
    step("check printer paper", velnoext_check_printer_paper(timeout));
    step("ecr state", velnoext_ecr_state(timeout, &state));
    step("ecr serialno", velnoext_ecr_serialno(pairedAs));
    step("current z", velnoext_current_z(timeout, &z));
    step("last z datetime", velnoext_last_z_datetime(timeout, &lastZ));
    step("ecr datetime", velnoext_ecr_datetime(timeout, &now));
    step("sale limit", velnoext_sale_limit(timeout, &limit));
    step("active acquirers", velnoext_active_acquirers(timeout, acquirers, &count));
    step("section data", velnoext_section_data(timeout, &section));
    printf("%s: state %d, Z %d, limit %lld kuruş, %d acquirers, section 1 is %s\n", pairedAs, state, z, limit,
           count, section.name);
}

/* Lines come and go; what is left is paid in two ways. */
static void sell(void)
{
    VelnoEcrSaleTotals totals;
    VelnoReceiptRef receipt;
    VelnoSaleItem bread = itemOf("Ekmek", 1250, 2000);
    VelnoSaleItemList list;
    int first = 0, state = 0;
    int acquirers[10];
    int count = sizeof acquirers / sizeof *acquirers;
    memset(&list, 0, sizeof list);
    list.count = 2;
    list.items[0] = itemOf("Domates", 3990, 1250);
    list.items[1] = itemOf("Su", 500, 1000);
    step("start sale", velnoext_start_sale(timeout));
    step("add sale item", velnoext_add_sale_item(timeout, &bread, &totals));
    step("add multiple sale items", velnoext_add_multiple_sale_items(timeout, &list, &totals));
    step("delete last sale item", velnoext_delete_last_sale_item(timeout, &totals));
    step("delete sale item", velnoext_delete_sale_item(timeout, 1, &totals));
    step("add medical contribution", velnoext_add_medical_contribution(timeout, 1500, 11111111111ULL));
    step("sale state", velnoext_sale_state(timeout, &first, &totals, &receipt));
    showTotals(&totals);
    step("add payment", velnoext_add_payment(VelnoPaymentKey_F10, 1000));
    step("end sale", velnoext_end_sale(VelnoPaymentKey_F11)); /* the rest by card */
    step("ecr state", velnoext_ecr_state(timeout, &state)); /* keys have no answer: ask what became of them */
    printf("state %d\n", state);
    step("acquirers of sale", velnoext_acquirers_of_sale(timeout, acquirers, &count));
    step("receipt data", velnoext_receipt_data(timeout, &receipt, &totals));
    showTotals(&totals);
}

static void changeOnesMind(void)
{
    step("start sale", velnoext_start_sale(timeout));
    step("cancel sale", velnoext_cancel_sale(timeout));
}

static void sellWithInvoice(void)
{
    VelnoEcrSaleTotals totals;
    VelnoSaleItem book = itemOf("Defter", 12000, 1000);
    VelnoInvoice invoice;
    memset(&invoice, 0, sizeof invoice);
    invoice.invoiceType = VelnoInvoiceType_Electronic;
    invoice.idKind = VelnoIdKind_Person;
    strcpy(invoice.idNumber, "11111111111"); /* anybody */
    invoice.mode = VelnoInvoiceMode_RestInCash;
    step("start sale with invoice", velnoext_start_sale_with_invoice(timeout));
    step("add sale item", velnoext_add_sale_item(timeout, &book, &totals));
    step("end sale with invoice", velnoext_end_sale_with_invoice(&invoice));
}

static void print(void)
{
    VelnoTextStyle normal = {0, 0, 0};
    step("printer set encoding", velnoext_printer_set_encoding("UTF-8"));
    step("printer add text", velnoext_printer_add_text("Afiyet olsun", &normal));
    step("printer add justified text", velnoext_printer_add_justified_text("Masa", "7", &normal));
    step("printer add line feed", velnoext_printer_add_line_feed(3));
    step("print slip", velnoext_print_slip(timeout, false));
    step("x report", velnoext_x_report());
    step("z report", velnoext_z_report());
    step("logout", velnoext_logout(timeout));
}

/* The applications 999999 and 14242 may send bytes of their own, and receive the answers by means of theirs. */
static void passBytesThrough(void)
{
    static const char currentZ[] = {0, 0, 0, VelnoExtMessage_CurrentZ};
    char plain[64];
    int size = sizeof plain;
    if (connectRegister(rawApplication) != VelnoResult_Success)
        return;
    step("send data", velnoext_send_data(currentZ, sizeof currentZ));
    /* These two bytes are no answer of a register's, so they are refused. */
    printf("get data: %s\n", velnoext_result_name(velnoext_get_data("\0", 2, plain, &size)));
}

int main(int argc, char **argv)
{
    if (argc != 4) {
        fprintf(stderr, "Usage: %s SERIAL ADDRESS PORT\n", argv[0]);
        return 64;
    }
    serial = argv[1];
    address = argv[2];
    port = (unsigned short)atoi(argv[3]);
    if (begin()) {
        askTheRegister();
        sell();
        changeOnesMind();
        sellWithInvoice();
        print();
        velnoext_close(); /* the active one */
        passBytesThrough();
        step("forget device", velnoext_forget_device(serial)); /* the next contact pairs anew */
    }
    velnoext_close_all();
    return failures == 0 ? 0 : 1;
}
