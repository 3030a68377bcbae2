// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/tags.h"

#include "ExtDevice/gmp3/protocol_table.h"
#include "tests/support/exact_bytes.h"
#include "tests/support/test_support.h"

#include <QHash>
#include <QTest>

using namespace Velno::GMP;
using TestSupport::ExactBytes;
using TestSupport::hex;

namespace {

using Tags = QVector<QByteArray>;
using TagOf = QByteArray (*)(int);
using ValueOf = int (*)(const QByteArray &);

template <typename Enumeration>
QByteArray fieldTagOf(int value)
{
    return fieldTag(Enumeration(value));
}

QByteArray groupTagOf(int value)
{
    return groupTag(GroupTag(value));
}

template <auto Function>
int valueOf(const QByteArray &tag)
{
    return Function(tag);
}

/** The tags of a table as one would write them down: "DF82:04 08 09". */
Tags tagList(const char *prefix, const char *endings)
{
    Tags tags;
    for (const QByteArray &ending : QByteArray(endings).split(' '))
        tags.append(hex(prefix) + QByteArray::fromHex(ending));
    return tags;
}

const Tags &requestTags()
{
    static const Tags tags = tagList("FF", "8801 8802 8803 8804 8805 8806 8807 8808 8A60 8A62 8A63 8A64");
    return tags;
}

const Tags &responseTags()
{
    static const Tags tags = tagList("FF", "8C01 8C02 8C03 8C04 8C05 8C06 8C07 8C08 8E60 8E62 8E63 8E64");
    return tags;
}

} // namespace

Q_DECLARE_METATYPE(TagOf)
Q_DECLARE_METATYPE(ValueOf)

class TestTags : public QObject
{
    Q_OBJECT

private slots:
    void tableIsComplete_data();
    void tableIsComplete();
    void unknownTagsAnswerTheRowCount_data();
    void unknownTagsAnswerTheRowCount();
    void messagesCarryTwoTags();
    void messagesAreRecognised();
    void unknownMessageLeavesTheFlag_data();
    void unknownMessageLeavesTheFlag();
    void publicKeysShareATag();
    void gapsStayGaps();
    void enumeratorsHaveTheirTags();
    void tagsAreNotCopied();
    void everyTagHasItsName();
    void messagesHaveNames();
};

void TestTags::tableIsComplete_data()
{
    QTest::addColumn<TagOf>("tagOf");
    QTest::addColumn<ValueOf>("valueOf");
    QTest::addColumn<Tags>("tags");

    QTest::newRow("groups") << TagOf(groupTagOf) << ValueOf(valueOf<group>)
                            << tagList("DF", "02 40 41 42 6F");
    QTest::newRow("transaction fields")
        << TagOf(fieldTagOf<TransactionFieldTag>) << ValueOf(valueOf<transactionField>)
        << tagList("DF82", "04 08 09 0A 0B 0D 0E 10 11");
    QTest::newRow("special data fields")
        << TagOf(fieldTagOf<SpecialDataFieldTag>) << ValueOf(valueOf<specialDataField>)
        << tagList("DFC0", "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11");
    QTest::newRow("external data fields")
        << TagOf(fieldTagOf<ExternalDataFieldTag>) << ValueOf(valueOf<externalDataField>)
        << tagList("DFC1", "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 11 12 13 14 15 16 17 18 19");
    QTest::newRow("data security fields")
        << TagOf(fieldTagOf<DataSecurityFieldTag>) << ValueOf(valueOf<dataSecurityField>)
        << tagList("DFC2", "01 02 03 04 05 06 07 08 09 0A 0B 10 12 13");
    QTest::newRow("pairing fields") << TagOf(fieldTagOf<PairingFieldTag>) << ValueOf(valueOf<pairingField>)
                                    << tagList("DFEF", "01 02 03 03 04 06 07 09 0A 0B 0C 0D 0E");
}

void TestTags::tableIsComplete()
{
    QFETCH(const TagOf, tagOf);
    QFETCH(const ValueOf, valueOf);
    QFETCH(const Tags, tags);
    for (int i = 0; i < tags.size(); ++i) {
        QCOMPARE(tagOf(i), tags[i]);
        QCOMPARE(valueOf(tags[i]), int(tags.indexOf(tags[i])));
        const ExactBytes exact(tags[i]);
        QCOMPARE(valueOf(exact.view()), int(tags.indexOf(tags[i])));
    }
    QVERIFY(tagOf(int(tags.size())).isEmpty());
}

void TestTags::unknownTagsAnswerTheRowCount_data()
{
    tableIsComplete_data();
}

void TestTags::unknownTagsAnswerTheRowCount()
{
    QFETCH(const ValueOf, valueOf);
    QFETCH(const Tags, tags);
    const int rows = int(tags.size());
    QCOMPARE(valueOf(QByteArray()), rows);
    QCOMPARE(valueOf(hex("DFFF7F")), rows);
    QCOMPARE(valueOf(hex("FF8A60")), rows);
    for (const QByteArray &tag : tags) {
        QCOMPARE(valueOf(tag.chopped(1)), rows);
        QCOMPARE(valueOf(tag + '\0'), rows);
        QCOMPARE(valueOf(tag + '\x01'), rows);
        QByteArray damaged = tag;
        damaged[0] = char(damaged[0] ^ 0x20);
        QCOMPARE(valueOf(damaged), rows);
    }
}

void TestTags::messagesCarryTwoTags()
{
    QCOMPARE(requestTags().size(), 12);
    for (int i = 0; i < 12; ++i) {
        QCOMPARE(requestMessageTag(MessageTag(i)), requestTags()[i]);
        QCOMPARE(responseMessageTag(MessageTag(i)), responseTags()[i]);
    }
    for (const int none : {12, 13, 15}) {
        QVERIFY(requestMessageTag(MessageTag(none)).isEmpty());
        QVERIFY(responseMessageTag(MessageTag(none)).isEmpty());
    }
    QCOMPARE(requestMessageTag(PairingKeyExchange), hex("FF8A62"));
    QCOMPARE(responseMessageTag(PairingKeyExchange), hex("FF8E62"));
    QCOMPARE(int(None), 12);
}

void TestTags::messagesAreRecognised()
{
    for (int i = 0; i < 12; ++i) {
        bool isResponse = true;
        QCOMPARE(message(requestTags()[i], &isResponse), MessageTag(i));
        QVERIFY(!isResponse);
        QCOMPARE(message(responseTags()[i], &isResponse), MessageTag(i));
        QVERIFY(isResponse);
    }
    bool isResponse = false;
    QCOMPARE(message(hex("FF8E60"), &isResponse), PairingStart);
    QVERIFY(isResponse);
    QCOMPARE(message(hex("FF8A63"), &isResponse), PairingConfirm);
    QVERIFY(!isResponse);
}

void TestTags::unknownMessageLeavesTheFlag_data()
{
    QTest::addColumn<QByteArray>("tag");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("a field") << hex("DF8208");
    QTest::newRow("the request that is left out") << hex("FF8A61");
    QTest::newRow("the response that is left out") << hex("FF8E61");
    QTest::newRow("too short") << hex("FF8A");
    QTest::newRow("too long") << hex("FF8A6000");
}

void TestTags::unknownMessageLeavesTheFlag()
{
    QFETCH(const QByteArray, tag);
    for (const bool before : {false, true}) {
        bool isResponse = before;
        QCOMPARE(message(tag, &isResponse), None);
        QCOMPARE(isResponse, before);
    }
}

void TestTags::publicKeysShareATag()
{
    QCOMPARE(fieldTag(RequesterPublicKey), hex("DFEF03"));
    QCOMPARE(fieldTag(ResponderPublicKey), hex("DFEF03"));
    QCOMPARE(pairingField(hex("DFEF03")), ResponderPublicKey);
    QCOMPARE(pairingField(hex("DFEF04")), FieldEF04);
}

void TestTags::gapsStayGaps()
{
    QCOMPARE(int(pairingField(hex("DFEF05"))), 13);
    QCOMPARE(int(pairingField(hex("DFEF08"))), 13);
    QCOMPARE(int(externalDataField(hex("DFC10F"))), 23);
    QCOMPARE(int(externalDataField(hex("DFC110"))), 23);
}

void TestTags::enumeratorsHaveTheirTags()
{
    QCOMPARE(groupTag(Group6F), hex("DF6F"));
    QCOMPARE(fieldTag(SequenceNumber), hex("DF8208"));
    QCOMPARE(fieldTag(TransactionDate), hex("DF8209"));
    QCOMPARE(fieldTag(TransactionTime), hex("DF820A"));
    QCOMPARE(fieldTag(Field8211), hex("DF8211"));
    QCOMPARE(fieldTag(FieldC00A), hex("DFC00A"));
    QCOMPARE(fieldTag(FieldC011), hex("DFC011"));
    QCOMPARE(fieldTag(ExtDeviceVendor), hex("DFC107"));
    QCOMPARE(fieldTag(ExtDeviceIdentity), hex("DFC109"));
    QCOMPARE(fieldTag(EcrBrand), hex("DFC10A"));
    QCOMPARE(fieldTag(EcrIdentity), hex("DFC10C"));
    QCOMPARE(fieldTag(RequesterRandom), hex("DFC10D"));
    QCOMPARE(fieldTag(ResponderRandom), hex("DFC10E"));
    QCOMPARE(fieldTag(FieldC111), hex("DFC111"));
    QCOMPARE(fieldTag(FieldC213), hex("DFC213"));
    QCOMPARE(fieldTag(Certificate), hex("DFEF01"));
    QCOMPARE(fieldTag(ResultCode), hex("DFEF06"));
    QCOMPARE(fieldTag(PairingIndex), hex("DFEF09"));
    QCOMPARE(fieldTag(Signature), hex("DFEF0A"));
    QCOMPARE(fieldTag(KeyCheckValue), hex("DFEF0E"));
    QCOMPARE(fieldTag(CommandCipher), hex("DFE002"));
    QCOMPARE(fieldTag(CommandMac), hex("DFE003"));
    QCOMPARE(fieldTag(AppHashCipher), hex("DFE004"));
    QCOMPARE(fieldTag(KeysAbsent), hex("DFE005"));
}

void TestTags::tagsAreNotCopied()
{
    const QByteArray first = fieldTag(Certificate);
    const QByteArray second = fieldTag(Certificate);
    QCOMPARE(static_cast<const void *>(first.constData()), static_cast<const void *>(second.constData()));
}

/** A name of its own, in all tables, except that what shares a tag shares its name. */
void TestTags::everyTagHasItsName()
{
    QHash<QByteArray, QByteArray> tagOf;
    int rows = 0;
    for (const auto &table : tagTables()) {
        for (const TagRow &row : table) {
            ++rows;
            const QByteArray name = row.name;
            QVERIFY2(!name.isEmpty() && name == name.trimmed(), row.name);
            QCOMPARE(tagOf.value(name, row.tag), QByteArray(row.tag));
            tagOf.insert(name, row.tag);
        }
    }
    QCOMPARE(rows, 5 + 9 + 17 + 23 + 14 + 13 + 4);
    QCOMPARE(tagOf.size(), rows - 1); // both public keys are one
    QCOMPARE(tagOf.value("Register's certificate"), fieldTag(Certificate));
    QCOMPARE(tagOf.value("Field DFC213"), fieldTag(FieldC213));
    QCOMPARE(tagOf.value("Group DF6F"), groupTag(Group6F));
}

void TestTags::messagesHaveNames()
{
    QCOMPARE(messageTable().size(), size_t(None));
    QCOMPARE(QByteArray(messageTable()[PairingStart].name), "PairingStart");
    QCOMPARE(QByteArray(messageTable()[PairingConfirm].name), "PairingConfirm");
    QCOMPARE(QByteArray(messageTable()[Message8A64].name), "Message8A64");
}

QTEST_APPLESS_MAIN(TestTags)
#include "tst_tags.moc"
