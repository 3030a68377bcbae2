#include "ExtDevice/gmp3/tags.h"

#include <array>

namespace Velno::GMP {

namespace {

struct TagRow
{
    int value;
    const char *tag;
};

struct MessageRow
{
    int value;
    const char *request;
    const char *response;
};

constexpr std::array<MessageRow, 12> messageTags = {{
    {Message8801, "\xFF\x88\x01", "\xFF\x8C\x01"},
    {Message8802, "\xFF\x88\x02", "\xFF\x8C\x02"},
    {Message8803, "\xFF\x88\x03", "\xFF\x8C\x03"},
    {Message8804, "\xFF\x88\x04", "\xFF\x8C\x04"},
    {Message8805, "\xFF\x88\x05", "\xFF\x8C\x05"},
    {Message8806, "\xFF\x88\x06", "\xFF\x8C\x06"},
    {Message8807, "\xFF\x88\x07", "\xFF\x8C\x07"},
    {Message8808, "\xFF\x88\x08", "\xFF\x8C\x08"},
    {PairingStart, "\xFF\x8A\x60", "\xFF\x8E\x60"},
    {PairingKeyExchange, "\xFF\x8A\x62", "\xFF\x8E\x62"},
    {PairingConfirm, "\xFF\x8A\x63", "\xFF\x8E\x63"},
    {Message8A64, "\xFF\x8A\x64", "\xFF\x8E\x64"},
}};

constexpr std::array<TagRow, 5> groupTags = {{
    {Group02, "\xDF\x02"},
    {Group40, "\xDF\x40"},
    {Group41, "\xDF\x41"},
    {Group42, "\xDF\x42"},
    {Group6F, "\xDF\x6F"},
}};

constexpr std::array<TagRow, 9> transactionFieldTags = {{
    {Field8204, "\xDF\x82\x04"},
    {SequenceNumber, "\xDF\x82\x08"},
    {TransactionDate, "\xDF\x82\x09"},
    {TransactionTime, "\xDF\x82\x0A"},
    {Field820B, "\xDF\x82\x0B"},
    {Field820D, "\xDF\x82\x0D"},
    {Field820E, "\xDF\x82\x0E"},
    {Field8210, "\xDF\x82\x10"},
    {Field8211, "\xDF\x82\x11"},
}};

constexpr std::array<TagRow, 17> specialDataFieldTags = {{
    {FieldC001, "\xDF\xC0\x01"},
    {FieldC002, "\xDF\xC0\x02"},
    {FieldC003, "\xDF\xC0\x03"},
    {FieldC004, "\xDF\xC0\x04"},
    {FieldC005, "\xDF\xC0\x05"},
    {FieldC006, "\xDF\xC0\x06"},
    {FieldC007, "\xDF\xC0\x07"},
    {FieldC008, "\xDF\xC0\x08"},
    {FieldC009, "\xDF\xC0\x09"},
    {FieldC00A, "\xDF\xC0\x0A"},
    {FieldC00B, "\xDF\xC0\x0B"},
    {FieldC00C, "\xDF\xC0\x0C"},
    {FieldC00D, "\xDF\xC0\x0D"},
    {FieldC00E, "\xDF\xC0\x0E"},
    {FieldC00F, "\xDF\xC0\x0F"},
    {FieldC010, "\xDF\xC0\x10"},
    {FieldC011, "\xDF\xC0\x11"},
}};

constexpr std::array<TagRow, 23> externalDataFieldTags = {{
    {FieldC101, "\xDF\xC1\x01"},       {FieldC102, "\xDF\xC1\x02"},       {FieldC103, "\xDF\xC1\x03"},
    {FieldC104, "\xDF\xC1\x04"},       {FieldC105, "\xDF\xC1\x05"},       {FieldC106, "\xDF\xC1\x06"},
    {ExtDeviceVendor, "\xDF\xC1\x07"}, {ExtDeviceModel, "\xDF\xC1\x08"},  {ExtDeviceIdentity, "\xDF\xC1\x09"},
    {EcrBrand, "\xDF\xC1\x0A"},        {EcrModel, "\xDF\xC1\x0B"},        {EcrIdentity, "\xDF\xC1\x0C"},
    {RequesterRandom, "\xDF\xC1\x0D"}, {ResponderRandom, "\xDF\xC1\x0E"}, {FieldC111, "\xDF\xC1\x11"},
    {FieldC112, "\xDF\xC1\x12"},       {FieldC113, "\xDF\xC1\x13"},       {FieldC114, "\xDF\xC1\x14"},
    {FieldC115, "\xDF\xC1\x15"},       {FieldC116, "\xDF\xC1\x16"},       {FieldC117, "\xDF\xC1\x17"},
    {FieldC118, "\xDF\xC1\x18"},       {FieldC119, "\xDF\xC1\x19"},
}};

constexpr std::array<TagRow, 14> dataSecurityFieldTags = {{
    {FieldC201, "\xDF\xC2\x01"},
    {FieldC202, "\xDF\xC2\x02"},
    {FieldC203, "\xDF\xC2\x03"},
    {FieldC204, "\xDF\xC2\x04"},
    {FieldC205, "\xDF\xC2\x05"},
    {FieldC206, "\xDF\xC2\x06"},
    {FieldC207, "\xDF\xC2\x07"},
    {FieldC208, "\xDF\xC2\x08"},
    {FieldC209, "\xDF\xC2\x09"},
    {FieldC20A, "\xDF\xC2\x0A"},
    {FieldC20B, "\xDF\xC2\x0B"},
    {FieldC210, "\xDF\xC2\x10"},
    {FieldC212, "\xDF\xC2\x12"},
    {FieldC213, "\xDF\xC2\x13"},
}};

constexpr std::array<TagRow, 13> pairingFieldTags = {{
    {Certificate, "\xDF\xEF\x01"},
    {PairingNumber, "\xDF\xEF\x02"},
    {ResponderPublicKey, "\xDF\xEF\x03"},
    {RequesterPublicKey, "\xDF\xEF\x03"},
    {FieldEF04, "\xDF\xEF\x04"},
    {ResultCode, "\xDF\xEF\x06"},
    {FieldEF07, "\xDF\xEF\x07"},
    {PairingIndex, "\xDF\xEF\x09"},
    {Signature, "\xDF\xEF\x0A"},
    {ProtocolVersion, "\xDF\xEF\x0B"},
    {DhPrime, "\xDF\xEF\x0C"},
    {DhGenerator, "\xDF\xEF\x0D"},
    {KeyCheckValue, "\xDF\xEF\x0E"},
}};

template <typename Table>
constexpr bool valueIsIndex(const Table &table)
{
    for (size_t i = 0; i < table.size(); ++i) {
        if (table[i].value != int(i))
            return false;
    }
    return true;
}

static_assert(valueIsIndex(messageTags) && valueIsIndex(groupTags) && valueIsIndex(transactionFieldTags) &&
              valueIsIndex(specialDataFieldTags) && valueIsIndex(externalDataFieldTags) &&
              valueIsIndex(dataSecurityFieldTags) && valueIsIndex(pairingFieldTags));

QByteArray constantBytes(const char *tag)
{
    return QByteArray::fromRawData(tag, qsizetype(qstrlen(tag)));
}

template <typename Table>
const typename Table::value_type *rowOf(const Table &table, int value)
{
    return value >= 0 && size_t(value) < table.size() ? &table[size_t(value)] : nullptr;
}

template <typename Table>
QByteArray tagOf(const Table &table, int value)
{
    const TagRow *row = rowOf(table, value);
    return row ? constantBytes(row->tag) : QByteArray();
}

bool isTag(const QByteArray &bytes, const char *tag)
{
    return QByteArrayView(bytes) == QByteArrayView(tag);
}

template <typename Enumeration, typename Table>
Enumeration valueOf(const Table &table, const QByteArray &tag)
{
    for (const TagRow &row : table) {
        if (isTag(tag, row.tag))
            return Enumeration(row.value);
    }
    return Enumeration(table.size());
}

} // namespace

QByteArray requestMessageTag(MessageTag message)
{
    const MessageRow *row = rowOf(messageTags, message);
    return row ? constantBytes(row->request) : QByteArray();
}

QByteArray responseMessageTag(MessageTag message)
{
    const MessageRow *row = rowOf(messageTags, message);
    return row ? constantBytes(row->response) : QByteArray();
}

MessageTag message(const QByteArray &tag, bool *isResponse)
{
    for (const MessageRow &row : messageTags) {
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
    return tagOf(groupTags, group);
}

QByteArray fieldTag(TransactionFieldTag field)
{
    return tagOf(transactionFieldTags, field);
}

QByteArray fieldTag(SpecialDataFieldTag field)
{
    return tagOf(specialDataFieldTags, field);
}

QByteArray fieldTag(ExternalDataFieldTag field)
{
    return tagOf(externalDataFieldTags, field);
}

QByteArray fieldTag(DataSecurityFieldTag field)
{
    return tagOf(dataSecurityFieldTags, field);
}

QByteArray fieldTag(PairingFieldTag field)
{
    return tagOf(pairingFieldTags, field);
}

GroupTag group(const QByteArray &tag)
{
    return valueOf<GroupTag>(groupTags, tag);
}

TransactionFieldTag transactionField(const QByteArray &tag)
{
    return valueOf<TransactionFieldTag>(transactionFieldTags, tag);
}

SpecialDataFieldTag specialDataField(const QByteArray &tag)
{
    return valueOf<SpecialDataFieldTag>(specialDataFieldTags, tag);
}

ExternalDataFieldTag externalDataField(const QByteArray &tag)
{
    return valueOf<ExternalDataFieldTag>(externalDataFieldTags, tag);
}

DataSecurityFieldTag dataSecurityField(const QByteArray &tag)
{
    return valueOf<DataSecurityFieldTag>(dataSecurityFieldTags, tag);
}

PairingFieldTag pairingField(const QByteArray &tag)
{
    return valueOf<PairingFieldTag>(pairingFieldTags, tag);
}

} // namespace Velno::GMP
