// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/commands.h"

#include "translations/spoken.h"
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

constexpr const char *reading = Spoken::later("Reading");
constexpr const char *session = Spoken::later("Session");
constexpr const char *sale = Spoken::later("Sale");
constexpr const char *closing = Spoken::later("Its end");
constexpr const char *receiptsGroup = Spoken::later("Receipts");
constexpr const char *printing = Spoken::later("Printing");
constexpr const char *raw = Spoken::later("Raw bytes");
constexpr char house[] = "velnoctl";

constexpr char anItem[] =
    "PRICE NAME [section=SECTION] [quantity=QUANTITY] [percent=PERCENT] [amount=AMOUNT] [type=TYPE]";
constexpr const char *added = Spoken::later("added to the slip");
constexpr const char *totals = Spoken::later("the totals of the sale, and its number of items");

using enum Needs;

constexpr std::array table{
    Command{reading, "state", "", Spoken::later("the register's state, by number and name"),
            Spoken::later("state 1 (idle)"), "state", Connection, Everywhere, state},
    Command{reading, "z", "", Spoken::later("the number of the current Z report"), Spoken::later("Z 17"), "z",
            Connection, Everywhere, currentZ},
    Command{reading, "last-z", "", Spoken::later("when the last Z report was made"),
            Spoken::later("local time and seconds, or never"), "last-z", Connection, Everywhere, lastZ},
    Command{reading, "datetime", "", Spoken::later("the register's clock"),
            Spoken::later("local time and seconds"), "datetime", Connection, Everywhere, dateTime},
    Command{reading, "sale-limit", "", Spoken::later("the highest amount of one sale"),
            Spoken::later("sale limit 12000.00 TL"), "sale-limit", Connection, Everywhere, saleLimit},
    Command{reading, "paper", "", Spoken::later("whether the printer has paper; 9 when not"),
            Spoken::later("paper present"), "paper", Connection, Everywhere, paper},
    Command{reading, "serial", "", Spoken::later("the serial number that the register gave"),
            Spoken::later("serial number UB1234567890"), "serial", Connection, Everywhere, serialNumber},
    Command{reading, "section", "SECTION", Spoken::later("a section's name and number"),
            Spoken::later("the section's name, and its number as the register defines it"), "section 3",
            Connection, Everywhere, section},
    Command{reading, "acquirers", "", Spoken::later("the banks whose cards the register takes"),
            Spoken::later("their numbers"), "acquirers", Connection, Everywhere, acquirers},

    Command{session, "login", "", Spoken::later("opens the application's session"),
            Spoken::later("logged in"), "login", Connection, Everywhere, login},
    Command{session, "logout", "", Spoken::later("ends the session"), Spoken::later("logged out"), "logout",
            Connection, Everywhere, logout},

    Command{session, "forget", "", Spoken::later("forgets the register's keys: the next command pairs anew"),
            Spoken::later("keys forgotten"), "forget", Target, Everywhere, forget},

    Command{sale, "start-sale", "", Spoken::later("starts a sale"), Spoken::later("sale started"),
            "start-sale", Connection, Everywhere, startSale},
    Command{sale, "start-invoice-sale", "", Spoken::later("starts a sale that end-invoice ends"),
            Spoken::later("sale started"), "start-invoice-sale", Connection, Everywhere, startInvoiceSale},
    Command{sale, "sale-state", "", Spoken::later("how the open sale stands"),
            Spoken::later("what the register shows, the totals, and the receipt's two numbers"), "sale-state",
            Connection, Everywhere, saleState},
    Command{sale, "item", anItem,
            Spoken::later("sells an item: one of section 1 and type 0 unless told otherwise"), totals,
            "item 12.50 \"Tam Ekmek\" section=1 quantity=1.250 percent=-10", Connection, Everywhere, addItem},
    Command{sale, "items", anItem, Spoken::later("sells up to ten items at once, all or none"), totals,
            "items 12.50 Ekmek quantity=2 + 45.00 \"Beyaz Peynir\" section=2", Connection, Everywhere,
            addItems, mostItems},
    Command{sale, "medical", "AMOUNT [IDENTITY]",
            Spoken::later("adds a medical contribution, anybody's by default"), Spoken::later("the amount"),
            "medical 15.00 11111111111", Connection, Everywhere, medical},
    Command{sale, "delete", "LINE", Spoken::later("takes a line out of the sale"), totals, "delete last",
            Connection, Everywhere, deleteItem},

    Command{closing, "pay", "MEANS AMOUNT",
            Spoken::later("pays; sale-state tells whether the register took it"),
            Spoken::later("what was sent"), "pay cash 400.00", Connection, Everywhere, pay},
    Command{closing, "end-sale", "MEANS",
            Spoken::later("ends the sale; state tells whether the register did"),
            Spoken::later("what was sent"), "end-sale cash", Connection, Everywhere, endSale},
    Command{closing, "end-invoice",
            "[type=INVOICE] [kind=KIND] [id=ID] [reference=REFERENCE] [mode=MODE] [flag=FLAG]",
            Spoken::later("ends the sale with an invoice, of anybody unless told otherwise"),
            Spoken::later("sale ended with an invoice"), "end-invoice type=1 kind=1 id=0000000001 mode=2",
            Connection, Everywhere, endInvoice},
    Command{closing, "cancel", "", Spoken::later("cancels the sale"), Spoken::later("sale cancelled"),
            "cancel", Connection, Everywhere, cancel},
    Command{closing, "receipt-data", "[RECEIPT]",
            Spoken::later("a closed receipt, by default the one sale-state told last"),
            Spoken::later("its totals, and its number of items"), "receipt-data 12/1", Connection, Everywhere,
            receiptData},
    Command{closing, "sale-acquirers", "", Spoken::later("the banks that the sale's cards were paid with"),
            Spoken::later("their numbers"), "sale-acquirers", Connection, Everywhere, saleAcquirers},

    Command{receiptsGroup, "receipt", "FILE.json [key=KEY]",
            Spoken::later("sells a whole receipt, once for each key however often it is handed over"),
            Spoken::later("how it stands; 20 and more when it is not closed"), "receipt sale.json key=4711",
            Target, Everywhere, receipt},
    Command{receiptsGroup, "receipts", "[key=KEY]",
            Spoken::later("what is in the ledger, or one order with its history"),
            Spoken::later("a line for each order"), "receipts", Target, Everywhere, receipts},
    Command{receiptsGroup, "receipt-answer", "KEY ANSWER [person=PERSON]",
            Spoken::later("a person's answer to what a receipt asks, which is acted upon"),
            Spoken::later("how it stands then"), "receipt-answer 4711 paid", Target, Everywhere,
            answerReceipt},

    Command{printing, "encoding", "ENCODING",
            Spoken::later("begins a slip, or reads its next texts otherwise"),
            Spoken::later("texts of the slip in UTF-8"), "encoding UTF-8", Target, Everywhere, encoding},
    Command{printing, "text", "TEXT [size=SIZE] [style=STYLE]", Spoken::later("adds a text to the slip"),
            added, "text \"Afiyet olsun\" size=1 style=a", Target, Everywhere, addText},
    Command{printing, "justified", "LEFT RIGHT [style=STYLE]",
            Spoken::later("adds a line with two ends to the slip"), added, "justified Masa 7", Target,
            Everywhere, addJustified},
    Command{printing, "feed", "COUNT", Spoken::later("adds line feeds to the slip"), added, "feed 3", Target,
            Everywhere, feed},
    Command{printing, "print", "[flag=FLAG]", Spoken::later("prints the slip"), Spoken::later("slip printed"),
            "print", Connection, Everywhere, printSlip},
    Command{printing, "x-report", "", Spoken::later("prints the totals of the day so far"),
            Spoken::later("X report printed"), "x-report", Connection, Everywhere, xReport},
    Command{printing, "z-report", "", Spoken::later("ends the day with a Z report"),
            Spoken::later("Z report printed"), "z-report", Connection, Everywhere, zReport},

    Command{raw, "send", "HEX", Spoken::later("sends bytes encrypted; applications 999999 and 14242"),
            Spoken::later("sent 4 bytes"), "send 0000000C", RawConnection, Everywhere, sendRaw},
    Command{raw, "get", "HEX", Spoken::later("decrypts a frame received elsewhere; the same applications"),
            Spoken::later("the plain bytes"), "get 002055423132333435363738393000", RawConnection, Everywhere,
            getRaw},

    Command{house, "fault", "FAULT",
            Spoken::later(
                "has the simulator at --control do something wrong, --serial names one of several registers"),
            Spoken::later("what is on"), "fault refuse=z", Needs::Control, Everywhere, fault},
    Command{house, "run", "FILE",
            Spoken::later("a script, one command a line, # comments; - is standard input"),
            Spoken::later("what its commands print"), "run day.velno", Target, CommandLine | Shell, runInput},
    Command{house, "shell", "", Spoken::later("asks for commands; Tab completes, quit or Ctrl-D ends"),
            Spoken::later("what the commands print"), "shell", Target, CommandLine, shell},
    Command{house, "explain", "CODE [DETAIL]", Spoken::later("what a result code means, its cause and cure"),
            Spoken::later("the text of the code and of the detail"), "explain 4 0x402", Nothing, Everywhere,
            explain},
    Command{house, "help", "[COMMAND]", Spoken::later("an overview, or one command with its arguments"),
            Spoken::later("the text"), "help item", Nothing, Everywhere, help},
    Command{house, "commands", "", Spoken::later("all commands, each in a line"), Spoken::later("the text"),
            "commands", Nothing, Everywhere, commands},
    Command{house, "version", "", Spoken::later("the version, and whom this build trusts"),
            Spoken::later("the text"), "version", Nothing, Everywhere, version},
    Command{house, "quit", "", Spoken::later("ends the shell"), Spoken::later("nothing"), "quit", Nothing,
            Shell, quit},
};

} // namespace

std::span<const Command> commandTable()
{
    return table;
}

} // namespace VelnoCtl
