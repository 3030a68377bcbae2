// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <span>

/**
 * What is said in GMP3, as tables: the tags with their names, the kinds of messages, and the commands with
 * the items that they and their answers carry. Names, readers and look-ups come from here, so whoever wants
 * to know what may travel walks these tables.
 */
namespace Velno::GMP {

// Elements ----------------------------------------------------------------------------------------------

/** What the value of a field is. */
enum class FieldForm {
    Bytes,
    Text,
    Digits, ///< decimal, two to a byte
};

/** A tag: its bytes, none of which is zero, closed by a zero. */
struct TagRow
{
    const char *tag;
    const char *name; ///< for people; both public keys share theirs, as they share their tag
    int value;        ///< of the enumerator in tags.h, which is the index of the row
    FieldForm form = FieldForm::Bytes;
};

/** One kind of message. */
struct MessageRow
{
    int value; ///< MessageTag, the index of the row
    const char *request;
    const char *response;
    const char *name;
};

/** The tables of tags, in the order of tagTables(); the enumerations are in tags.h. */
enum TagTable {
    Groups,
    TransactionFields,
    SpecialDataFields,
    ExternalDataFields,
    DataSecurityFields,
    PairingFields,
    CommandFields,
};

std::span<const std::span<const TagRow>> tagTables();
std::span<const MessageRow> messageTable();

// Commands ----------------------------------------------------------------------------------------------

/** How an item travels: as QDataStream writes it in its version 12, numbers big-endian. */
enum class ItemType {
    Flag,    ///< 1 byte, 0 for no
    Int8,    ///< whole numbers with a sign: 1,
    Int16,   ///< 2,
    Int32,   ///< 4
    Int64,   ///< and 8 bytes
    Bytes,   ///< their number in 4 bytes (FFFFFFFF for none at all), and so many bytes
    Numbers, ///< their number in 4 bytes, and so many Int32
    Lines,   ///< Bytes that hold nothing but a number in 4 bytes and so many Bytes
    Record,  ///< its parts, one behind the other
    Records, ///< their number in 2 bytes, and so many times the parts
};

/** When an item is there. */
enum class Presence {
    Always,
    WhenMoreFollows, ///< unless the sequence ends before it
    WhenNotZero,     ///< unless the number in front of it is 0
    WhenSaleIsOpen,  ///< when the item "state" of the same sequence is 5
};

struct ItemRow
{
    const char *name; ///< lower case, words joined by dashes; unique within its sequence
    ItemType type;
    Presence presence = Presence::Always;
    std::span<const ItemRow> parts = {}; ///< of a Record, and of each of the Records
    qint64 least = 0;                    ///< how many Numbers or Records it may hold
    qint64 most = 0x7FFFFFFF;
};

/** One command: what follows its code in a request, and what its answer holds. */
struct CommandForm
{
    int code; ///< the Int32 that every request begins with; the index of the row
    const char *name;
    std::span<const ItemRow> request = {};
    std::span<const ItemRow> answer = {}; ///< of "change-state" only when it is wanted
};

std::span<const CommandForm> commandForms();

/** Null for a code that no command has. */
const CommandForm *commandForm(qint32 code);

} // namespace Velno::GMP
