#include "simulator/register/command_items.h"

#include <QIODevice>

namespace Simulator {

namespace {

constexpr quint32 mostKeys = 64; // more than any sequence that means something
constexpr qint16 mostItems = 10;

template <typename Value>
Value read(QDataStream &stream)
{
    Value value{};
    stream >> value;
    return value;
}

} // namespace

// Not by Qt's own reader: it would make room for as many as are announced.
QList<qint32> readKeys(QDataStream &stream)
{
    const auto count = read<quint32>(stream);
    if (count > mostKeys)
        stream.setStatus(QDataStream::ReadCorruptData);
    QList<qint32> keys;
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i)
        keys << read<qint32>(stream);
    return keys;
}

ItemRequest readItem(QDataStream &stream)
{
    ItemRequest item;
    qint8 section = 0;
    stream >> item.price >> item.quantity >> item.percentage >> item.amount >> section >> item.name >>
        item.type;
    item.section = section;
    return item;
}

QList<ItemRequest> readItems(QDataStream &stream)
{
    const auto count = read<qint16>(stream);
    if (count < 1 || count > mostItems)
        stream.setStatus(QDataStream::ReadCorruptData);
    QList<ItemRequest> items;
    for (qint16 i = 0; i < count && stream.status() == QDataStream::Ok; ++i)
        items << readItem(stream);
    return items;
}

QDataStream &operator<<(QDataStream &stream, const SaleTotals &totals)
{
    return stream << totals.total << totals.tax << totals.cash << totals.card << totals.change
                  << totals.items;
}

} // namespace Simulator
