#include "ExtDevice/velnoext/result_texts.h"

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"

#include <algorithm>
#include <array>

namespace Velno::Ext {

namespace {

constexpr std::array results{
    ResultText{Success, "success",
               "The command was carried out.\n"
               "Cause: nothing went wrong.\n"
               "Cure: none is needed."},
    ResultText{NotReady, "not-ready",
               "The library is not ready for this command.\n"
               "Cause: it is not initialised, no register is active, the register named is not connected or "
               "not paired, this application number may not use the raw pass-through, or the system gives "
               "the process no further thread.\n"
               "Cure: call velnoext_initialize() with the register's serial number first and look at its "
               "result; the raw pass-through is for the applications 999999 and 14242 alone."},
    ResultText{ConnectionFailed, "connection-failed",
               "There is no connection to the register, or it failed.\n"
               "Cause: nobody connected in time, the address is not one of this computer's, the port is in "
               "use or not permitted, the relay is down or does not know the register, or the connection was "
               "lost or silent while a command ran: a register that holds other keys, because it has lost "
               "them or was paired again elsewhere, ends it at every command.\n"
               "Cure: check that the register is switched on and set to this computer's address and port (or "
               "to the relay), that no other program holds the port, and the firewall; then call "
               "velnoext_initialize() again. If that succeeds and every command still ends so, end the "
               "process: the next one pairs afresh. Whether a command whose answer was lost has been carried "
               "out must be asked of the register."},
    ResultText{NullArgument, "null-argument",
               "A pointer that the function needs is NULL.\n"
               "Cause: the application passed NULL; velnoext_error_detail() names the argument.\n"
               "Cure: pass a pointer to memory that holds the value or receives it."},
    ResultText{
        BadValue, "bad-value",
        "A value that was passed is not valid.\n"
        "Cause: it is outside what the function takes; velnoext_error_detail() names it. With detail 0 "
        "the address is no IP address, a length is negative, or the room for the result is too small.\n"
        "Cure: correct the value, or make the room larger, and call again; the register has changed "
        "nothing."},
    ResultText{ReplyUnreadable, "reply-unreadable",
               "The register's answer cannot be read.\n"
               "Cause: it is authentic but holds less than the command promises: the register's software "
               "speaks another version.\n"
               "Cure: compare the versions of the register's software and of this library; the command may "
               "have been carried out all the same."},
    ResultText{
        WrongState, "wrong-state",
        "The register is in a state that does not allow the command.\n"
        "Cause: a sale is to be started while one is open, continued while none is, or the register "
        "shows another screen, as it does when its paper is used up.\n"
        "Cure: read the state with velnoext_ecr_state(), finish or cancel what is open, put in paper, or "
        "let the cashier leave the screen; then call again."},
    ResultText{StepNotTaken, "step-not-taken",
               "The register did not take the change of state.\n"
               "Cause: it is busy with another step of the sale or reports an error of its own.\n"
               "Cure: see what the register's screen says, settle it there, and call again."},
    ResultText{
        Refused, "refused",
        "The register refused the command.\n"
        "Cause: its rules do not allow it now, for example without a login, without paper or while a "
        "sale is open; when text is added to a slip: its encoding has not been set.\n"
        "Cure: see what the register's screen says, log in with velnoext_login(), put in paper, end the "
        "sale, or set the encoding of the slip first; then call again."},
    ResultText{NoPaper, "no-paper",
               "The printer has no paper.\n"
               "Cause: the roll is used up or its lid is open.\n"
               "Cure: put in a new roll, close the lid, and ask again."},
    ResultText{PairingFailed, "pairing-failed",
               "The register and this computer could not be paired.\n"
               "Cause: the register's certificate is of an authority that is not trusted or has expired, the "
               "register expects another application file, it has another serial number than the one named, "
               "or it left or did not come back during the exchange of keys, which needs IPv4.\n"
               "Cure: compare the serial number with the register's label, check the computer's clock, the "
               "trust anchors of this build and the application that the register was told to expect; then "
               "start again."},
    ResultText{NotAuthentic, "not-authentic",
               "The answer is not authentic, or nothing could be encrypted.\n"
               "Cause: both sides hold different keys, the answer was changed on its way, or the bytes to "
               "encrypt were none or too many.\n"
               "Cure: close the register with application number 999999 or 14242, or end the process, so "
               "that velnoext_initialize() pairs afresh; if it comes back, distrust the network between."},
    ResultText{MalformedReply, "malformed-reply",
               "The frame of the answer is malformed or comes from another register.\n"
               "Cause: it was damaged on its way, or another register than the one named answers at this "
               "port.\n"
               "Cure: compare the serial number with the register's label, then connect again."},
    ResultText{NoApplicationHash, "no-application-hash",
               "The program's own executable file cannot be read.\n"
               "Cause: it was moved, deleted or replaced while it runs, or may not be read by this user; its "
               "hash is part of the pairing.\n"
               "Cure: put the file back, make it readable, and start the program again."},
};

constexpr bool codesAreIndexes()
{
    for (size_t i = 0; i < results.size(); ++i) {
        if (results[i].code != int(i))
            return false;
    }
    return true;
}
static_assert(codesAreIndexes(), "a code's text is found by its index");

constexpr std::array details{
    DetailText{0, "No argument is named."},
    DetailText{0x300, "NULL: the serial number (velnoext_initialize, velnoext_set_active_device, "
                      "velnoext_forget_device), the buffer "
                      "(velnoext_active_device, velnoext_ecr_serialno), the data (velnoext_send_data) or the "
                      "frame (velnoext_get_data)."},
    DetailText{0x301, "NULL: the address (velnoext_initialize) or the output (velnoext_get_data)."},
    DetailText{0x302, "NULL: the state (velnoext_ecr_state) or the output's length (velnoext_get_data)."},
    DetailText{0x303, "NULL: the first value of the list (velnoext_sale_state)."},
    DetailText{0x304, "NULL: the totals (velnoext_sale_state, velnoext_receipt_data, velnoext_add_sale_item, "
                      "velnoext_add_multiple_sale_items, velnoext_delete_last_sale_item, "
                      "velnoext_delete_sale_item)."},
    DetailText{0x305, "NULL: the receipt reference (velnoext_sale_state, velnoext_receipt_data)."},
    DetailText{0x306, "NULL: the item (velnoext_add_sale_item, velnoext_section_data)."},
    DetailText{0x307, "NULL: the list of items (velnoext_add_multiple_sale_items)."},
    DetailText{0x308, "NULL: the invoice (velnoext_end_sale_with_invoice)."},
    DetailText{0x309, "NULL: the list (velnoext_active_acquirers, velnoext_acquirers_of_sale)."},
    DetailText{0x30A, "NULL: the list's count (velnoext_active_acquirers, velnoext_acquirers_of_sale)."},
    DetailText{0x30B, "NULL: the Z number (velnoext_current_z)."},
    DetailText{0x30C, "NULL: the date and time (velnoext_last_z_datetime, velnoext_ecr_datetime)."},
    DetailText{0x30D, "NULL: the name of the encoding (velnoext_printer_set_encoding)."},
    DetailText{0x30E, "NULL or empty: the text (velnoext_printer_add_text), the left or the right text "
                      "(velnoext_printer_add_justified_text)."},
    DetailText{0x30F, "NULL: the text style (velnoext_printer_add_text, "
                      "velnoext_printer_add_justified_text)."},
    DetailText{0x310, "NULL: the limit (velnoext_sale_limit)."},
    DetailText{0x400,
               "Bad value: the serial number does not have exactly 12 characters (velnoext_initialize, "
               "velnoext_set_active_device, velnoext_forget_device)."},
    DetailText{0x402, "Bad value: the port is 0; 1 to 65535 is accepted (velnoext_initialize)."},
    DetailText{0x403,
               "Bad value: the 11-digit identity number fails its check digits; 11111111111 stands for "
               "anybody (velnoext_add_medical_contribution, velnoext_end_sale_with_invoice)."},
    DetailText{0x404, "Bad value: the 10-digit number fails its check digit "
                      "(velnoext_end_sale_with_invoice)."},
    DetailText{0x405, "Bad value: the price of an item is 0 (velnoext_add_multiple_sale_items)."},
    DetailText{0x406, "Bad value: the section is not 1 to 8 (velnoext_add_sale_item, "
                      "velnoext_add_multiple_sale_items, velnoext_section_data)."},
    DetailText{0x407, "Bad value: the percentage of an item is below -100 (velnoext_add_sale_item, "
                      "velnoext_add_multiple_sale_items)."},
    DetailText{0x408, "Bad value: the amount adjustment of an item is negative or exceeds its line total "
                      "(velnoext_add_sale_item, velnoext_add_multiple_sale_items)."},
    DetailText{0x409, "Bad value: the type of an item is not 0 to 7 (velnoext_add_sale_item, "
                      "velnoext_add_multiple_sale_items)."},
    DetailText{0x40A, "Bad value: the number of items is not 1 to 10 (velnoext_add_multiple_sale_items)."},
    DetailText{0x40B, "Bad value: the type of invoice is not 0 to 2 (velnoext_end_sale_with_invoice)."},
    DetailText{0x40C, "Bad value: the kind of identity number is not 0 or 1 "
                      "(velnoext_end_sale_with_invoice)."},
    DetailText{0x40D, "Bad value: the mode is not 1 or 2 (velnoext_end_sale_with_invoice)."},
    DetailText{0x40E, "Bad value: the reference of an invoice of type 0 does not have 6 to 16 characters "
                      "(velnoext_end_sale_with_invoice)."},
    DetailText{0x40F, "Bad value: the first number of the receipt reference is 0 (velnoext_receipt_data)."},
    DetailText{0x410, "Bad value: the second number of the receipt reference is 0 (velnoext_receipt_data)."},
    DetailText{0x411, "Bad value: no encoding of this name is known (velnoext_printer_set_encoding)."},
    DetailText{0x412, "Bad value: the amount of the payment is 0 or negative (velnoext_add_payment)."},
    DetailText{0x413, "Bad value: more than 20 line feeds (velnoext_printer_add_line_feed)."},
    DetailText{0x414, "Bad value: the limit is 0 ms (velnoext_set_answer_limit)."},
};
static_assert(std::ranges::is_sorted(details, {}, &DetailText::detail), "a detail is found by halving");

constexpr ResultText unknownResult{-1, "unknown",
                                   "This is no result code of this version of the library.\n"
                                   "Cause: the number comes from elsewhere, or from a newer library.\n"
                                   "Cure: look at where the number was read; codes are 0 to 13."};

constexpr int firstNullDetail = 0x300;
constexpr int firstValueDetail = 0x400;
constexpr int firstOtherNumber = 0x500;

const ResultText &resultTextOf(int code)
{
    return code >= 0 && code < int(results.size()) ? results[size_t(code)] : unknownResult;
}

/** What can be said of a detail that has no text of its own. */
const char *unknownDetail(int detail)
{
    if (detail < firstNullDetail || detail >= firstOtherNumber)
        return "This is no detail of the library: details are 0, 0x300 and more for a NULL pointer, 0x400 "
               "and "
               "more for a bad value.";
    return detail < firstValueDetail
               ? "NULL: a pointer that this version of the library does not name."
               : "Bad value: an argument that this version of the library does not name.";
}

} // namespace

std::span<const ResultText> resultTexts()
{
    return results;
}

std::span<const DetailText> detailTexts()
{
    return details;
}

} // namespace Velno::Ext

using namespace Velno::Ext;

const char *velnoext_result_name(int code)
{
    return resultTextOf(code).name;
}

const char *velnoext_result_text(int code)
{
    return resultTextOf(code).text;
}

const char *velnoext_detail_text(int detail)
{
    const auto *const found = std::ranges::lower_bound(details, detail, {}, &DetailText::detail);
    return found != details.end() && found->detail == detail ? found->text : unknownDetail(detail);
}
