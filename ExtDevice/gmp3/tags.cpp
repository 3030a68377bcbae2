// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/tags.h"

#include "ExtDevice/gmp3/protocol_table.h"

#include <algorithm>

namespace Velno::GMP {

namespace {

QByteArray constantBytes(const char *tag)
{
    return QByteArray::fromRawData(tag, qsizetype(qstrlen(tag)));
}

template <typename Row>
const Row *rowOf(std::span<const Row> rows, int value)
{
    return value >= 0 && size_t(value) < rows.size() ? &rows[size_t(value)] : nullptr;
}

QByteArray tagOf(TagTable table, int value)
{
    const TagRow *row = rowOf(tagTables()[table], value);
    return row ? constantBytes(row->tag) : QByteArray();
}

bool isTag(const QByteArray &bytes, const char *tag)
{
    return QByteArrayView(bytes) == QByteArrayView(tag);
}

/** The enumerator of the first row with this tag; without one the number of rows. */
template <typename Enumeration>
Enumeration valueOf(TagTable table, const QByteArray &tag)
{
    const std::span<const TagRow> rows = tagTables()[table];
    const auto row = std::ranges::find_if(rows, [&tag](const TagRow &r) { return isTag(tag, r.tag); });
    return Enumeration(row - rows.begin());
}

} // namespace

QByteArray requestMessageTag(MessageTag message)
{
    const MessageRow *row = rowOf(messageTable(), message);
    return row ? constantBytes(row->request) : QByteArray();
}

QByteArray responseMessageTag(MessageTag message)
{
    const MessageRow *row = rowOf(messageTable(), message);
    return row ? constantBytes(row->response) : QByteArray();
}

MessageTag message(const QByteArray &tag, bool *isResponse)
{
    for (const MessageRow &row : messageTable()) {
        const bool response = isTag(tag, row.response);
        if (response || isTag(tag, row.request)) {
            *isResponse = response;
            return MessageTag(row.value);
        }
    }
    return None;
}

QByteArray groupTag(GroupTag group)
{
    return tagOf(Groups, group);
}

QByteArray fieldTag(TransactionFieldTag field)
{
    return tagOf(TransactionFields, field);
}

QByteArray fieldTag(SpecialDataFieldTag field)
{
    return tagOf(SpecialDataFields, field);
}

QByteArray fieldTag(ExternalDataFieldTag field)
{
    return tagOf(ExternalDataFields, field);
}

QByteArray fieldTag(DataSecurityFieldTag field)
{
    return tagOf(DataSecurityFields, field);
}

QByteArray fieldTag(PairingFieldTag field)
{
    return tagOf(PairingFields, field);
}

QByteArray fieldTag(CommandFieldTag field)
{
    return tagOf(CommandFields, field);
}

GroupTag group(const QByteArray &tag)
{
    return valueOf<GroupTag>(Groups, tag);
}

TransactionFieldTag transactionField(const QByteArray &tag)
{
    return valueOf<TransactionFieldTag>(TransactionFields, tag);
}

SpecialDataFieldTag specialDataField(const QByteArray &tag)
{
    return valueOf<SpecialDataFieldTag>(SpecialDataFields, tag);
}

ExternalDataFieldTag externalDataField(const QByteArray &tag)
{
    return valueOf<ExternalDataFieldTag>(ExternalDataFields, tag);
}

DataSecurityFieldTag dataSecurityField(const QByteArray &tag)
{
    return valueOf<DataSecurityFieldTag>(DataSecurityFields, tag);
}

PairingFieldTag pairingField(const QByteArray &tag)
{
    return valueOf<PairingFieldTag>(PairingFields, tag);
}

} // namespace Velno::GMP
