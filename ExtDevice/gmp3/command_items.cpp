// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/command_items.h"

#include "ExtDevice/gmp3/item_stream.h"

#include <algorithm>
#include <utility>

namespace Velno::GMP {

namespace {

constexpr qint32 saleOpen = 5;

std::optional<QList<qint32>> takeNumbersOf(const ItemRow &row, QByteArrayView *run)
{
    auto numbers = takeNumbers(run);
    const bool isAllowed = numbers && numbers->size() >= row.least && numbers->size() <= row.most;
    return isAllowed ? std::move(numbers) : std::nullopt;
}

std::optional<QList<QByteArray>> takeLines(QByteArrayView *run)
{
    const auto packed = takeBytes(run);
    if (!packed)
        return {};
    QByteArrayView inside(*packed);
    const auto count = takeCount(sizeof(quint32), &inside);
    if (!count)
        return {};
    QList<QByteArray> lines;
    for (qint64 i = 0; i < *count; ++i) {
        const auto line = takeBytes(&inside);
        if (!line)
            return {};
        lines << *line;
    }
    return inside.isEmpty() ? std::optional(std::move(lines)) : std::nullopt;
}

} // namespace

bool Items::has(const char *name) const
{
    return find(name) != nullptr;
}

bool Items::flag(const char *name) const
{
    return value<qint64>(name, ItemType::Flag, ItemType::Flag) != 0;
}

qint32 Items::int32(const char *name) const
{
    return qint32(value<qint64>(name, ItemType::Int8, ItemType::Int32));
}

qint64 Items::int64(const char *name) const
{
    return value<qint64>(name, ItemType::Int8, ItemType::Int64);
}

const QByteArray &Items::bytes(const char *name) const
{
    return value<QByteArray>(name, ItemType::Bytes, ItemType::Bytes);
}

const QList<qint32> &Items::numbers(const char *name) const
{
    return value<QList<qint32>>(name, ItemType::Numbers, ItemType::Numbers);
}

const QList<QByteArray> &Items::lines(const char *name) const
{
    return value<QList<QByteArray>>(name, ItemType::Lines, ItemType::Lines);
}

const std::vector<Items> &Items::records(const char *name) const
{
    return value<std::vector<Items>>(name, ItemType::Record, ItemType::Records);
}

const Items::Item *Items::find(const char *name) const
{
    const auto item =
        std::ranges::find_if(m_items, [name](const Item &i) { return qstrcmp(i.row->name, name) == 0; });
    return item == m_items.end() ? nullptr : &*item;
}

template <typename Type>
const Type &Items::value(const char *name, ItemType least, ItemType most) const
{
    const Item *const item = find(name);
    if (!item || item->row->type < least || item->row->type > most)
        qFatal("no item \"%s\" of this type", name);
    return std::get<Type>(item->value);
}

/** Whether an item that would come next is there. */
bool Items::expects(const ItemRow &row, QByteArrayView rest) const
{
    switch (row.presence) {
    case Presence::WhenMoreFollows:
        return !rest.isEmpty();
    case Presence::WhenNotZero:
        return std::get<qint64>(m_items.back().value) != 0;
    case Presence::WhenSaleIsOpen:
        return int32("state") == saleOpen;
    case Presence::Always:
        break;
    }
    return true;
}

std::optional<Items::Value> Items::take(const ItemRow &row, QByteArrayView *run)
{
    switch (row.type) {
    case ItemType::Flag:
    case ItemType::Int8:
        return takeNumber<qint8>(run);
    case ItemType::Int16:
        return takeNumber<qint16>(run);
    case ItemType::Int32:
        return takeNumber<qint32>(run);
    case ItemType::Int64:
        return takeNumber<qint64>(run);
    case ItemType::Bytes:
        return takeBytes(run);
    case ItemType::Numbers:
        return takeNumbersOf(row, run);
    case ItemType::Lines:
        return takeLines(run);
    case ItemType::Record:
        return takeRecords(row, 1, run);
    case ItemType::Records:
        return takeRecords(row, takeNumber<qint16>(run).value_or(-1), run);
    }
    return {};
}

std::optional<Items::Value> Items::takeRecords(const ItemRow &row, qint64 count, QByteArrayView *run)
{
    if (count < row.least || count > row.most)
        return {};
    std::vector<Items> records;
    for (qint64 i = 0; i < count; ++i) {
        auto record = takeItems(row.parts, run);
        if (!record)
            return {};
        records.push_back(std::move(*record));
    }
    return records;
}

std::optional<Items> takeItems(std::span<const ItemRow> rows, QByteArrayView *run)
{
    Items items;
    items.m_items.reserve(rows.size());
    for (const ItemRow &row : rows) {
        if (!items.expects(row, *run))
            continue;
        auto value = Items::take(row, run);
        if (!value)
            return {};
        items.m_items.push_back({&row, std::move(*value)});
    }
    return items;
}

std::optional<qint32> takeCode(QByteArrayView *request)
{
    return takeNumber<qint32>(request);
}

} // namespace Velno::GMP
