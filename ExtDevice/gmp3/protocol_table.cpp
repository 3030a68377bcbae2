// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/protocol_table.h"

#include "ExtDevice/gmp3/tags.h"

#include <algorithm>

namespace Velno::GMP {

namespace {

constexpr MessageRow messages[] = {
    {Message8801, "\xFF\x88\x01", "\xFF\x8C\x01", "Message8801"},
    {Message8802, "\xFF\x88\x02", "\xFF\x8C\x02", "Message8802"},
    {Message8803, "\xFF\x88\x03", "\xFF\x8C\x03", "Message8803"},
    {Message8804, "\xFF\x88\x04", "\xFF\x8C\x04", "Message8804"},
    {Message8805, "\xFF\x88\x05", "\xFF\x8C\x05", "Message8805"},
    {Message8806, "\xFF\x88\x06", "\xFF\x8C\x06", "Message8806"},
    {Message8807, "\xFF\x88\x07", "\xFF\x8C\x07", "Message8807"},
    {Message8808, "\xFF\x88\x08", "\xFF\x8C\x08", "Message8808"},
    {PairingStart, "\xFF\x8A\x60", "\xFF\x8E\x60", "PairingStart"},
    {PairingKeyExchange, "\xFF\x8A\x62", "\xFF\x8E\x62", "PairingKeyExchange"},
    {PairingConfirm, "\xFF\x8A\x63", "\xFF\x8E\x63", "PairingConfirm"},
    {Message8A64, "\xFF\x8A\x64", "\xFF\x8E\x64", "Message8A64"},
};

constexpr TagRow groupTags[] = {
    {"\xDF\x02", "Group DF02", Group02}, {"\xDF\x40", "Group DF40", Group40},
    {"\xDF\x41", "Group DF41", Group41}, {"\xDF\x42", "Group DF42", Group42},
    {"\xDF\x6F", "Group DF6F", Group6F},
};

constexpr TagRow transactionFieldTags[] = {
    {"\xDF\x82\x04", "Field DF8204", Field8204},
    {"\xDF\x82\x08", "Sequence number", SequenceNumber, FieldForm::Digits},
    {"\xDF\x82\x09", "Date", TransactionDate, FieldForm::Digits},
    {"\xDF\x82\x0A", "Time", TransactionTime, FieldForm::Digits},
    {"\xDF\x82\x0B", "Field DF820B", Field820B},
    {"\xDF\x82\x0D", "Field DF820D", Field820D},
    {"\xDF\x82\x0E", "Field DF820E", Field820E},
    {"\xDF\x82\x10", "Field DF8210", Field8210},
    {"\xDF\x82\x11", "Field DF8211", Field8211},
};

constexpr TagRow specialDataFieldTags[] = {
    {"\xDF\xC0\x01", "Field DFC001", FieldC001}, {"\xDF\xC0\x02", "Field DFC002", FieldC002},
    {"\xDF\xC0\x03", "Field DFC003", FieldC003}, {"\xDF\xC0\x04", "Field DFC004", FieldC004},
    {"\xDF\xC0\x05", "Field DFC005", FieldC005}, {"\xDF\xC0\x06", "Field DFC006", FieldC006},
    {"\xDF\xC0\x07", "Field DFC007", FieldC007}, {"\xDF\xC0\x08", "Field DFC008", FieldC008},
    {"\xDF\xC0\x09", "Field DFC009", FieldC009}, {"\xDF\xC0\x0A", "Field DFC00A", FieldC00A},
    {"\xDF\xC0\x0B", "Field DFC00B", FieldC00B}, {"\xDF\xC0\x0C", "Field DFC00C", FieldC00C},
    {"\xDF\xC0\x0D", "Field DFC00D", FieldC00D}, {"\xDF\xC0\x0E", "Field DFC00E", FieldC00E},
    {"\xDF\xC0\x0F", "Field DFC00F", FieldC00F}, {"\xDF\xC0\x10", "Field DFC010", FieldC010},
    {"\xDF\xC0\x11", "Field DFC011", FieldC011},
};

constexpr TagRow externalDataFieldTags[] = {
    {"\xDF\xC1\x01", "Field DFC101", FieldC101},
    {"\xDF\xC1\x02", "Field DFC102", FieldC102},
    {"\xDF\xC1\x03", "Field DFC103", FieldC103},
    {"\xDF\xC1\x04", "Field DFC104", FieldC104},
    {"\xDF\xC1\x05", "Field DFC105", FieldC105},
    {"\xDF\xC1\x06", "Field DFC106", FieldC106},
    {"\xDF\xC1\x07", "Application's vendor", ExtDeviceVendor, FieldForm::Text},
    {"\xDF\xC1\x08", "Application's model", ExtDeviceModel, FieldForm::Text},
    {"\xDF\xC1\x09", "Application's identity", ExtDeviceIdentity, FieldForm::Text},
    {"\xDF\xC1\x0A", "Register's brand", EcrBrand, FieldForm::Text},
    {"\xDF\xC1\x0B", "Register's model", EcrModel, FieldForm::Text},
    {"\xDF\xC1\x0C", "Register's serial number", EcrIdentity, FieldForm::Text},
    {"\xDF\xC1\x0D", "Application's random", RequesterRandom},
    {"\xDF\xC1\x0E", "Register's random", ResponderRandom},
    {"\xDF\xC1\x11", "Field DFC111", FieldC111},
    {"\xDF\xC1\x12", "Field DFC112", FieldC112},
    {"\xDF\xC1\x13", "Field DFC113", FieldC113},
    {"\xDF\xC1\x14", "Field DFC114", FieldC114},
    {"\xDF\xC1\x15", "Field DFC115", FieldC115},
    {"\xDF\xC1\x16", "Field DFC116", FieldC116},
    {"\xDF\xC1\x17", "Field DFC117", FieldC117},
    {"\xDF\xC1\x18", "Field DFC118", FieldC118},
    {"\xDF\xC1\x19", "Field DFC119", FieldC119},
};

constexpr TagRow dataSecurityFieldTags[] = {
    {"\xDF\xC2\x01", "Field DFC201", FieldC201}, {"\xDF\xC2\x02", "Field DFC202", FieldC202},
    {"\xDF\xC2\x03", "Field DFC203", FieldC203}, {"\xDF\xC2\x04", "Field DFC204", FieldC204},
    {"\xDF\xC2\x05", "Field DFC205", FieldC205}, {"\xDF\xC2\x06", "Field DFC206", FieldC206},
    {"\xDF\xC2\x07", "Field DFC207", FieldC207}, {"\xDF\xC2\x08", "Field DFC208", FieldC208},
    {"\xDF\xC2\x09", "Field DFC209", FieldC209}, {"\xDF\xC2\x0A", "Field DFC20A", FieldC20A},
    {"\xDF\xC2\x0B", "Field DFC20B", FieldC20B}, {"\xDF\xC2\x10", "Field DFC210", FieldC210},
    {"\xDF\xC2\x12", "Field DFC212", FieldC212}, {"\xDF\xC2\x13", "Field DFC213", FieldC213},
};

constexpr TagRow pairingFieldTags[] = {
    {"\xDF\xEF\x01", "Register's certificate", Certificate, FieldForm::Text},
    {"\xDF\xEF\x02", "Pairing number", PairingNumber, FieldForm::Digits},
    {"\xDF\xEF\x03", "Diffie-Hellman public key", ResponderPublicKey},
    {"\xDF\xEF\x03", "Diffie-Hellman public key", RequesterPublicKey},
    {"\xDF\xEF\x04", "Field DFEF04", FieldEF04},
    {"\xDF\xEF\x06", "Result code", ResultCode, FieldForm::Text},
    {"\xDF\xEF\x07", "Field DFEF07", FieldEF07},
    {"\xDF\xEF\x09", "Pairing index", PairingIndex},
    {"\xDF\xEF\x0A", "Signature of the public key", Signature},
    {"\xDF\xEF\x0B", "Protocol version", ProtocolVersion, FieldForm::Text},
    {"\xDF\xEF\x0C", "Diffie-Hellman prime", DhPrime},
    {"\xDF\xEF\x0D", "Diffie-Hellman generator", DhGenerator},
    {"\xDF\xEF\x0E", "Key check value", KeyCheckValue},
};

// What is encrypted, and what tells that somebody cannot.
constexpr TagRow commandFieldTags[] = {
    {"\xDF\xE0\x02", "Encrypted command", CommandCipher},
    {"\xDF\xE0\x03", "MAC of the encrypted command", CommandMac},
    {"\xDF\xE0\x04", "Encrypted application hash", AppHashCipher},
    {"\xDF\xE0\x05", "Keys absent", KeysAbsent, FieldForm::Text},
};

constexpr std::span<const TagRow> tags[] = {
    groupTags,
    transactionFieldTags,
    specialDataFieldTags,
    externalDataFieldTags,
    dataSecurityFieldTags,
    pairingFieldTags,
    commandFieldTags,
};

// Sequences that more than one command has.

constexpr ItemRow totals[] = {
    {"total", ItemType::Int64}, {"tax", ItemType::Int64},    {"cash", ItemType::Int64},
    {"card", ItemType::Int64},  {"change", ItemType::Int64}, {"items", ItemType::Int32},
};

constexpr ItemRow saleItem[] = {
    {"price", ItemType::Int64},  {"quantity", ItemType::Int32}, {"percentage", ItemType::Int32},
    {"amount", ItemType::Int64}, {"section", ItemType::Int8},   {"name", ItemType::Bytes},
    {"type", ItemType::Int32},
};

constexpr ItemRow receiptRef[] = {{"z", ItemType::Int32}, {"receipt", ItemType::Int32}};

constexpr ItemRow yesOrNo[] = {{"accepted", ItemType::Flag}};

constexpr ItemRow standing[] = {
    {"state", ItemType::Int32},
    {"display", ItemType::Numbers},
    {"error", ItemType::Int32, Presence::WhenSaleIsOpen},
};

constexpr ItemRow saleStep[] = {
    {"accepted", ItemType::Flag},
    {"state", ItemType::Int32},
    {"display", ItemType::Numbers},
    {"error", ItemType::Int32},
};

constexpr ItemRow saleStepWithTotals[] = {
    {"accepted", ItemType::Flag},
    {"state", ItemType::Int32},
    {"display", ItemType::Numbers},
    {"error", ItemType::Int32},
    {"totals", ItemType::Record, Presence::Always, totals},
};

constexpr ItemRow acquirers[] = {{"acquirers", ItemType::Numbers}};

constexpr ItemRow secondsSince1970[] = {{"time", ItemType::Int32}};

// Sequences of one command.

constexpr ItemRow keys[] = {
    {"state", ItemType::Int32},
    {"step", ItemType::Int32},
    {"extra", ItemType::Int32},
    {"keys", ItemType::Numbers, Presence::Always, {}, 0, 64}, // more than any sequence that means something
    {"answer-wanted", ItemType::Flag},
};

constexpr ItemRow itemIndex[] = {{"index", ItemType::Int32, Presence::WhenMoreFollows}};

constexpr ItemRow saleState[] = {
    {"accepted", ItemType::Flag},
    {"state", ItemType::Int32},
    {"display", ItemType::Numbers},
    {"error", ItemType::Int32},
    {"totals", ItemType::Record, Presence::Always, totals},
    {"receipt", ItemType::Record, Presence::Always, receiptRef},
};

constexpr ItemRow receiptData[] = {
    {"accepted", ItemType::Flag},
    {"totals", ItemType::Record, Presence::Always, totals},
};

constexpr ItemRow contribution[] = {
    {"amount", ItemType::Int64},
    {"identity", ItemType::Int64, Presence::WhenNotZero},
};

constexpr ItemRow section[] = {{"section", ItemType::Int8}};
constexpr ItemRow sectionData[] = {{"name", ItemType::Bytes}, {"tax-rate", ItemType::Int32}};
constexpr ItemRow report[] = {{"z-report", ItemType::Flag}};
constexpr ItemRow currentZ[] = {{"accepted", ItemType::Flag}, {"z", ItemType::Int32}};
constexpr ItemRow slip[] = {{"with-head", ItemType::Flag}, {"lines", ItemType::Lines}};

constexpr ItemRow invoice[] = {
    {"type", ItemType::Int32},      {"id-kind", ItemType::Int32}, {"reference", ItemType::Bytes},
    {"id-number", ItemType::Bytes}, {"mode", ItemType::Int32},    {"delivers", ItemType::Flag},
};

constexpr ItemRow limit[] = {{"limit", ItemType::Int64}};
constexpr ItemRow saleItems[] = {{"items", ItemType::Records, Presence::Always, saleItem, 1, 10}};

constexpr CommandForm commands[] = {
    {0, "state", {}, standing},
    {1, "login", {}, yesOrNo},
    {2, "logout", {}, yesOrNo},
    {3, "change-state", keys, standing},
    {4, "item", saleItem, saleStepWithTotals},
    {5, "delete", itemIndex, saleStepWithTotals},
    {6, "sale-state", {}, saleState},
    {7, "receipt", receiptRef, receiptData},
    {8, "paper", {}, yesOrNo},
    {9, "medical", contribution, saleStep},
    {10, "section", section, sectionData},
    {11, "report", report, yesOrNo},
    {12, "z", {}, currentZ},
    {13, "print", slip, yesOrNo},
    {14, "end-invoice", invoice, yesOrNo},
    {15, "sale-limit", {}, limit},
    {16, "items", saleItems, saleStepWithTotals},
    {17, "last-z", {}, secondsSince1970},
    {18, "datetime", {}, secondsSince1970},
    {19, "acquirers", {}, acquirers},
    {20, "sale-acquirers", {}, acquirers},
};

/** Whether each row has the index of its number, which look-ups rely on. */
template <typename Rows, typename Row>
constexpr bool areInOrder(const Rows &rows, int Row::*number)
{
    for (size_t i = 0; i < std::size(rows); ++i) {
        if (rows[i].*number != int(i))
            return false;
    }
    return true;
}

static_assert(areInOrder(messages, &MessageRow::value) && std::size(messages) == None);
static_assert(std::ranges::all_of(tags, [](const auto &rows) { return areInOrder(rows, &TagRow::value); }));
static_assert(areInOrder(commands, &CommandForm::code));

} // namespace

std::span<const std::span<const TagRow>> tagTables()
{
    return tags;
}

std::span<const MessageRow> messageTable()
{
    return messages;
}

std::span<const CommandForm> commandForms()
{
    return commands;
}

const CommandForm *commandForm(qint32 code)
{
    return code >= 0 && size_t(code) < std::size(commands) ? &commands[code] : nullptr;
}

} // namespace Velno::GMP
