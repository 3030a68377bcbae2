// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/commands.h"

#include "velnoctl/house_commands.h"
#include "velnoctl/payment_commands.h"
#include "velnoctl/printing_commands.h"
#include "velnoctl/query_commands.h"
#include "velnoctl/raw_commands.h"
#include "velnoctl/receipt_commands.h"
#include "velnoctl/sale_commands.h"
#include "velnoctl/simulator_commands.h"

#include <array>

namespace VelnoCtl {

namespace {

constexpr char reading[] = "Reading";
constexpr char session[] = "Session";
constexpr char sale[] = "Sale";
constexpr char closing[] = "Its end";
constexpr char receiptsGroup[] = "Receipts";
constexpr char printing[] = "Printing";
constexpr char raw[] = "Raw bytes";
constexpr char house[] = "velnoctl";

constexpr char anItem[] =
    "PRICE NAME [section=SECTION] [quantity=QUANTITY] [percent=PERCENT] [amount=AMOUNT] [type=TYPE]";
constexpr char added[] = "added to the slip";
constexpr char totals[] = "the totals of the sale, and its number of items";

using enum Needs;

constexpr std::array table{
    Command{reading, "state", "", "the register's state, by number and name", "state 1 (idle)", "state",
            Connection, Everywhere, state},
    Command{reading, "z", "", "the number of the current Z report", "Z 17", "z", Connection, Everywhere,
            currentZ},
    Command{reading, "last-z", "", "when the last Z report was made", "local time and seconds, or never",
            "last-z", Connection, Everywhere, lastZ},
    Command{reading, "datetime", "", "the register's clock", "local time and seconds", "datetime", Connection,
            Everywhere, dateTime},
    Command{reading, "sale-limit", "", "the highest amount of one sale", "sale limit 12000.00 TL",
            "sale-limit", Connection, Everywhere, saleLimit},
    Command{reading, "paper", "", "whether the printer has paper; 9 when not", "paper present", "paper",
            Connection, Everywhere, paper},
    Command{reading, "serial", "", "the serial number that the register gave", "serial number UB1234567890",
            "serial", Connection, Everywhere, serialNumber},
    Command{reading, "section", "SECTION", "a section's name and number",
            "the section's name, and its number as the register defines it", "section 3", Connection,
            Everywhere, section},
    Command{reading, "acquirers", "", "the banks whose cards the register takes", "their numbers",
            "acquirers", Connection, Everywhere, acquirers},

    Command{session, "login", "", "opens the application's session", "logged in", "login", Connection,
            Everywhere, login},
    Command{session, "logout", "", "ends the session", "logged out", "logout", Connection, Everywhere,
            logout},

    Command{session, "forget", "", "forgets the register's keys: the next command pairs anew",
            "keys forgotten", "forget", Target, Everywhere, forget},

    Command{sale, "start-sale", "", "starts a sale", "sale started", "start-sale", Connection, Everywhere,
            startSale},
    Command{sale, "start-invoice-sale", "", "starts a sale that end-invoice ends", "sale started",
            "start-invoice-sale", Connection, Everywhere, startInvoiceSale},
    Command{sale, "sale-state", "", "how the open sale stands",
            "what the register shows, the totals, and the receipt's two numbers", "sale-state", Connection,
            Everywhere, saleState},
    Command{sale, "item", anItem, "sells an item: one of section 1 and type 0 unless told otherwise", totals,
            "item 12.50 \"Tam Ekmek\" section=1 quantity=1.250 percent=-10", Connection, Everywhere, addItem},
    Command{sale, "items", anItem, "sells up to ten items at once, all or none", totals,
            "items 12.50 Ekmek quantity=2 + 45.00 \"Beyaz Peynir\" section=2", Connection, Everywhere,
            addItems, mostItems},
    Command{sale, "medical", "AMOUNT [IDENTITY]", "adds a medical contribution, anybody's by default",
            "the amount", "medical 15.00 11111111111", Connection, Everywhere, medical},
    Command{sale, "delete", "LINE", "takes a line out of the sale", totals, "delete last", Connection,
            Everywhere, deleteItem},

    Command{closing, "pay", "MEANS AMOUNT", "pays; sale-state tells whether the register took it",
            "what was sent", "pay cash 400.00", Connection, Everywhere, pay},
    Command{closing, "end-sale", "MEANS", "ends the sale; state tells whether the register did",
            "what was sent", "end-sale cash", Connection, Everywhere, endSale},
    Command{closing, "end-invoice",
            "[type=INVOICE] [kind=KIND] [id=ID] [reference=REFERENCE] [mode=MODE] [flag=FLAG]",
            "ends the sale with an invoice, of anybody unless told otherwise", "sale ended with an invoice",
            "end-invoice type=1 kind=1 id=0000000001 mode=2", Connection, Everywhere, endInvoice},
    Command{closing, "cancel", "", "cancels the sale", "sale cancelled", "cancel", Connection, Everywhere,
            cancel},
    Command{closing, "receipt-data", "[RECEIPT]", "a closed receipt, by default the one sale-state told last",
            "its totals, and its number of items", "receipt-data 12/1", Connection, Everywhere, receiptData},
    Command{closing, "sale-acquirers", "", "the banks that the sale's cards were paid with", "their numbers",
            "sale-acquirers", Connection, Everywhere, saleAcquirers},

    Command{receiptsGroup, "receipt", "FILE.json [key=KEY]",
            "sells a whole receipt, once for each key however often it is handed over",
            "how it stands; 20 and more when it is not closed", "receipt sale.json key=4711", Target,
            Everywhere, receipt},
    Command{receiptsGroup, "receipts", "[key=KEY]", "what is in the ledger, or one order with its history",
            "a line for each order", "receipts", Target, Everywhere, receipts},
    Command{receiptsGroup, "receipt-answer", "KEY ANSWER [person=PERSON]",
            "a person's answer to what a receipt asks, which is acted upon", "how it stands then",
            "receipt-answer 4711 paid", Target, Everywhere, answerReceipt},

    Command{printing, "encoding", "ENCODING", "begins a slip, or reads its next texts otherwise",
            "texts of the slip in UTF-8", "encoding UTF-8", Target, Everywhere, encoding},
    Command{printing, "text", "TEXT [size=SIZE] [style=STYLE]", "adds a text to the slip", added,
            "text \"Afiyet olsun\" size=1 style=a", Target, Everywhere, addText},
    Command{printing, "justified", "LEFT RIGHT [style=STYLE]", "adds a line with two ends to the slip", added,
            "justified Masa 7", Target, Everywhere, addJustified},
    Command{printing, "feed", "COUNT", "adds line feeds to the slip", added, "feed 3", Target, Everywhere,
            feed},
    Command{printing, "print", "[flag=FLAG]", "prints the slip", "slip printed", "print", Connection,
            Everywhere, printSlip},
    Command{printing, "x-report", "", "prints the totals of the day so far", "X report printed", "x-report",
            Connection, Everywhere, xReport},
    Command{printing, "z-report", "", "ends the day with a Z report", "Z report printed", "z-report",
            Connection, Everywhere, zReport},

    Command{raw, "send", "HEX", "sends bytes encrypted; applications 999999 and 14242", "sent 4 bytes",
            "send 0000000C", RawConnection, Everywhere, sendRaw},
    Command{raw, "get", "HEX", "decrypts a frame received elsewhere; the same applications",
            "the plain bytes", "get 002055423132333435363738393000", RawConnection, Everywhere, getRaw},

    Command{house, "fault", "FAULT",
            "has the simulator at --control do something wrong, --serial names one of several registers",
            "what is on", "fault refuse=z", Needs::Control, Everywhere, fault},
    Command{house, "run", "FILE", "a script, one command a line, # comments; - is standard input",
            "what its commands print", "run day.velno", Target, CommandLine | Shell, runInput},
    Command{house, "shell", "", "asks for commands; Tab completes, quit or Ctrl-D ends",
            "what the commands print", "shell", Target, CommandLine, shell},
    Command{house, "explain", "CODE [DETAIL]", "what a result code means, its cause and cure",
            "the text of the code and of the detail", "explain 4 0x402", Nothing, Everywhere, explain},
    Command{house, "help", "[COMMAND]", "an overview, or one command with its arguments", "the text",
            "help item", Nothing, Everywhere, help},
    Command{house, "commands", "", "all commands, each in a line", "the text", "commands", Nothing,
            Everywhere, commands},
    Command{house, "version", "", "the version, and whom this build trusts", "the text", "version", Nothing,
            Everywhere, version},
    Command{house, "quit", "", "ends the shell", "nothing", "quit", Nothing, Shell, quit},
};

} // namespace

std::span<const Command> commandTable()
{
    return table;
}

} // namespace VelnoCtl
