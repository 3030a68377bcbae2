// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/protocol_table.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <optional>
#include <variant>
#include <vector>

namespace Velno::GMP {

/**
 * The items of a request or an answer as they were read, by their names in the protocol table. What has been
 * read is of the table's types, so whoever asks for a name that cannot be there, or for another type, is
 * wrong himself: the program ends.
 */
class Items
{
public:
    bool has(const char *name) const; ///< of an item that is not always there
    bool flag(const char *name) const;
    qint32 int32(const char *name) const; ///< of any whole number up to this size
    qint64 int64(const char *name) const;
    const QByteArray &bytes(const char *name) const;
    const QList<qint32> &numbers(const char *name) const;
    const QList<QByteArray> &lines(const char *name) const;
    const std::vector<Items> &records(const char *name) const; ///< one for a Record

private:
    friend std::optional<Items> takeItems(std::span<const ItemRow> rows, QByteArrayView *run);

    using Value = std::variant<qint64, QByteArray, QList<qint32>, QList<QByteArray>, std::vector<Items>>;
    struct Item
    {
        const ItemRow *row;
        Value value;
    };

    static std::optional<Value> take(const ItemRow &row, QByteArrayView *run);
    static std::optional<Value> takeRecords(const ItemRow &row, qint64 count, QByteArrayView *run);
    bool expects(const ItemRow &row, QByteArrayView rest) const;
    const Item *find(const char *name) const;
    template <typename Type>
    const Type &value(const char *name, ItemType least, ItemType most) const;

    std::vector<Item> m_items;
};

/** Takes a sequence off the front of a run, and room for no more than is there. @return nothing when it is
 * cut short, or a number of items is none that it may have */
std::optional<Items> takeItems(std::span<const ItemRow> rows, QByteArrayView *run);

/** Takes the code off the front of a request. */
std::optional<qint32> takeCode(QByteArrayView *request);

} // namespace Velno::GMP
