// SPDX-License-Identifier: Apache-2.0

#include "tests/support/receipt_rows.h"

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

constexpr bool schemaIsSilent = false; // of what no schema can say

const QByteArray bread = R"({"name":"Ekmek","price":"12.50","section":1})"_ba;
const QString amountText =
    u"lira in quotes, \"0.00\" to \"9999999999.99\", or whole kuruş without a point, 0 to 999999999999"_s;
const QString paidText =
    u"lira in quotes, \"0.01\" to \"9999999999.99\", or whole kuruş without a point, 1 to 999999999999"_s;
const QString quantityText = u"\"0.001\" to \"2147483.647\", or whole units without a point"_s;
const QString nameText = u"a text of 1 to 52 bytes in UTF-8, without control characters"_s;
const QString itemNames = u"name, price, quantity, unit, section, percentage, discount"_s;
const QString anybodyText = u"11 digits in quotes; \"11111111111\" stands for anybody"_s;

/** A receipt of these items; `more` fields begin with a comma. */
QByteArray sold(const QByteArray &items, const QByteArray &more = {})
{
    return R"({"items":[)" + items + R"(],"payments":[{"cash":"rest"}])" + more + '}';
}

QByteArray paid(const QByteArray &payments, const QByteArray &more = {})
{
    return R"({"items":[)" + bread + R"(],"payments":[)" + payments + ']' + more + '}';
}

QByteArray item(const QByteArray &fields)
{
    return sold(R"({"name":"Ekmek",)" + fields + '}');
}

QByteArray named(const QByteArray &name)
{
    return sold(R"({"price":1250,"section":1,"name":")" + name + R"("})");
}

QByteArray invoiced(const QByteArray &invoice)
{
    return sold(bread, R"(,"invoice":)" + invoice);
}

QByteArray listOf(const QByteArray &value, int count)
{
    return value + (',' + value).repeated(count - 1);
}

QByteArray slip(const QByteArray &lines, const QByteArray &encoding = "UTF-8"_ba)
{
    return R"({"encoding":")" + encoding + R"(","lines":[)" + lines + "]}";
}

QStringList one(const QString &path, const QString &found, const QString &accepted)
{
    return {u"%1: %2; accepted: %3"_s.arg(path, found, accepted)};
}

} // namespace

QList<JsonRow> goodReceipts()
{
    return {
        {"least", sold(bread), {}},
        {"whole kuruş", item(R"("price":1250,"section":1)"), {}},
        {"the most", item(R"("price":"9999999999.99","section":8)"), {}},
        {"whole units", item(R"("price":1,"section":1,"quantity":2147483)"), {}},
        {"most units", item(R"("price":1,"section":1,"quantity":"2147483.647")"), {}},
        {"least units", item(R"("price":1,"section":1,"quantity":"0.001","unit":"hour")"), {}},
        {"all of it free", item(R"("price":1250,"section":1,"percentage":-100)"), {}},
        {"twice the price", item(R"("price":1250,"section":1,"percentage":100,"discount":0)"), {}},
        {"discount of a whole line", item(R"("price":"0.01","section":1,"quantity":"0.5","discount":1)"), {}},
        {"name of 52 bytes", named("Ş"_ba.repeated(26)), {}},
        {"name of special letters", named(R"(\"\\/ \u00e7 <&> 🍞)"), {}},
        {"500 items", sold(listOf(bread, 500)), {}},
        {"remark", sold(bread + R"(,{"name":"Afiyet olsun","price":"0.00"})"), {}},
        {"remark with fields that do not count",
         sold(bread + R"(,{"name":"x","price":0,"section":8,"quantity":"7","percentage":0,"discount":0})"),
         {}},
        {"medical part alone",
         R"({"medical":{"amount":"5.00","person":"11111111111"},"payments":[{"card":"rest"}]})"_ba,
         {}},
        {"medical part and no items",
         R"({"items":[],"medical":{"amount":500,"person":"10000000146"},"payments":[{"card":"rest"}]})"_ba,
         {}},
        {"invoice on paper",
         invoiced(R"({"type":"paper","person":"11111111111","reference":"ABC123","deliveryNote":true})"),
         {}},
        {"invoice of a company", invoiced(R"({"type":"electronic","company":"0000000001"})"), {}},
        {"invoice of an archive",
         invoiced(R"({"type":"archived","company":"0000000001","reference":"A","deliveryNote":false})"),
         {}},
        {"several payments", paid(R"({"cash":"5.00"},{"card":100},{"cash":"rest"})"), {}},
        {"no rest", paid(R"({"cash":999999999999})"), {}},
        {"100 payments", paid(listOf(R"({"cash":1})", 100)), {}},
        {"total that is paid", paid(R"({"cash":"12.50"})", R"(,"total":1250)"), {}},
        {"total that is overpaid", paid(R"({"card":"10.00"},{"cash":"5.00"})", R"(,"total":"12.50")"), {}},
        {"total and the rest", paid(R"({"card":"12.49"},{"cash":"rest"})", R"(,"total":"12.5")"), {}},
        {"total of nothing", sold(bread, R"(,"total":0)"), {}},
        {"cash again", sold(bread, R"(,"reenterCash":true)"), {}},
        {"with a slip", sold(bread, R"(,"slip":{"encoding":"UTF-8","lines":["Merhaba"]})"), {}},
    };
}

QList<JsonRow> badItems()
{
    const QString price = u"items[0].price"_s;
    const QString quantity = u"items[0].quantity"_s;
    const QString name = u"items[0].name"_s;
    const QString section = u"items[0].section"_s;
    const QString discount = u"items[0].discount"_s;
    const QString percents = u"-100 to 100"_s;
    return {
        {"price with a point", item(R"("price":12.5,"section":1)"), one(price, u"12.5"_s, amountText)},
        {"price with a point and no kuruş", item(R"("price":12.0,"section":1)"),
         one(price, u"12.0"_s, amountText), schemaIsSilent},
        {"price with an exponent", item(R"("price":1e3,"section":1)"), one(price, u"1e3"_s, amountText),
         schemaIsSilent},
        {"price below nothing", item(R"("price":-1,"section":1)"), one(price, u"-1"_s, amountText)},
        {"price with a minus", item(R"("price":"-1.00","section":1)"),
         one(price, u"\"-1.00\""_s, amountText)},
        {"price with a comma", item(R"("price":"12,50","section":1)"),
         one(price, u"\"12,50\""_s, amountText)},
        {"price with three decimals", item(R"("price":"12.505","section":1)"),
         one(price, u"\"12.505\""_s, amountText)},
        {"price with a word", item(R"("price":"12.50 TL","section":1)"),
         one(price, u"\"12.50 TL\""_s, amountText)},
        {"price of too much", item(R"("price":1000000000000,"section":1)"),
         one(price, u"1000000000000"_s, amountText)},
        {"price in text of too much", item(R"("price":"10000000000.00","section":1)"),
         one(price, u"\"10000000000.00\""_s, amountText), schemaIsSilent},
        {"price beyond all", item(R"("price":99999999999999999999999999,"section":1)"),
         one(price, u"99999999999999999999999999"_s, amountText)},
        {"price that is no price", item(R"("price":true,"section":1)"), one(price, u"true"_s, amountText)},
        {"no price", item(R"("section":1)"), one(price, u"missing"_s, amountText)},
        {"quantity 0", item(R"("price":1,"section":1,"quantity":0)"), one(quantity, u"0"_s, quantityText)},
        {"quantity \"0.000\"", item(R"("price":1,"section":1,"quantity":"0.000")"),
         one(quantity, u"\"0.000\""_s, quantityText)},
        {"quantity 1.5", item(R"("price":1,"section":1,"quantity":1.5)"),
         one(quantity, u"1.5"_s, quantityText)},
        {"quantity 2.0", item(R"("price":1,"section":1,"quantity":2.0)"),
         one(quantity, u"2.0"_s, quantityText), schemaIsSilent},
        {"quantity with four decimals", item(R"("price":1,"section":1,"quantity":"1.0005")"),
         one(quantity, u"\"1.0005\""_s, quantityText)},
        {"quantity of too much", item(R"("price":1,"section":1,"quantity":2147484)"),
         one(quantity, u"2147484"_s, quantityText)},
        {"quantity in text of too much", item(R"("price":1,"section":1,"quantity":"2147483.648")"),
         one(quantity, u"\"2147483.648\""_s, quantityText), schemaIsSilent},
        {"unit unknown", item(R"("price":1,"section":1,"unit":"kg")"),
         one(u"items[0].unit"_s, u"\"kg\""_s,
             u"\"piece\", \"kilogram\", \"gram\", \"litre\", \"metre\", \"squareMetre\", \"cubicMetre\", \"hour\""_s)},
        {"section 0", item(R"("price":1,"section":0)"), one(section, u"0"_s, u"1 to 8"_s)},
        {"section 9", item(R"("price":1,"section":9)"), one(section, u"9"_s, u"1 to 8"_s)},
        {"section beyond an int", item(R"("price":1,"section":4294967297)"),
         one(section, u"4294967297"_s, u"1 to 8"_s)},
        {"section in quotes", item(R"("price":1,"section":"1")"), one(section, u"\"1\""_s, u"1 to 8"_s)},
        {"no section", item(R"("price":1)"), one(section, u"missing"_s, u"1 to 8"_s)},
        {"percentage -101", item(R"("price":1,"section":1,"percentage":-101)"),
         one(u"items[0].percentage"_s, u"-101"_s, percents)},
        {"percentage 101", item(R"("price":1,"section":1,"percentage":101)"),
         one(u"items[0].percentage"_s, u"101"_s, percents)},
        {"discount above the line", item(R"("price":"0.01","quantity":"0.4","section":1,"discount":1)"),
         one(discount, u"0.01"_s, u"0.00 to 0.00, which the line comes to"_s), schemaIsSilent},
        {"both adjustments", item(R"("price":1250,"section":1,"percentage":-10,"discount":"1.00")"),
         one(discount, u"1.00"_s, u"none beside a percentage"_s)},
        {"line of too much", item(R"("price":999999999999,"section":1,"quantity":"1.001")"),
         one(u"items[0]"_s, u"comes to 10009999999.99"_s, u"up to 9999999999.99"_s), schemaIsSilent},
        {"sum of too much", sold(listOf(R"({"name":"x","price":500000000000,"section":1})", 2)),
         one(u"items"_s, u"10000000000.00 together"_s, u"up to 9999999999.99"_s), schemaIsSilent},
        {"name of 53 bytes", named("Ş"_ba.repeated(26) + 'a'),
         one(name, u"\"%1a\" has 53 bytes"_s.arg(QString(26, u'Ş')), nameText), schemaIsSilent},
        {"name of 53 letters", named(QByteArray(53, 'a')),
         one(name, u"\"%1\" has 53 bytes"_s.arg(QString(53, u'a')), nameText)},
        {"empty name", named(""), one(name, u"\"\""_s, nameText)},
        {"name of two lines", named(R"(a\nb)"), one(name, u"\"a\uFFFDb\""_s, nameText)},
        {"name with NUL", named(R"(a\u0000b)"), one(name, u"\"a\uFFFDb\""_s, nameText)},
        {"name with a later control character", named(R"(a\u0085b)"), one(name, u"\"a\uFFFDb\""_s, nameText)},
        {"no name", sold(R"({"price":1,"section":1})"), one(name, u"missing"_s, nameText)},
        {"name that is a list", sold(R"({"name":["a"],"price":1,"section":1})"),
         one(name, u"a list"_s, nameText)},
        {"price misspelt", item(R"("pirce":1,"price":1,"section":1)"),
         one(u"items[0].pirce"_s, u"no field has this name"_s, itemNames)},
        {"name in capitals", item(R"("Price":1,"price":1,"section":1)"),
         one(u"items[0].Price"_s, u"no field has this name"_s, itemNames)},
        {"price twice", item(R"("price":1,"price":2,"section":1)"), one(price, u"stated twice"_s, u"once"_s),
         schemaIsSilent},
        {"remark with a percentage", sold(bread + R"(,{"name":"x","price":0,"percentage":5})"),
         one(u"items[1].percentage"_s, u"5"_s, u"none where the price is 0"_s)},
        {"remark with a discount", sold(bread + R"(,{"name":"x","price":"0.00","discount":"1.00"})"),
         one(u"items[1].discount"_s, u"1.00"_s, u"none where the price is 0"_s)},
        {"remark in section 9", sold(bread + R"(,{"name":"x","price":0,"section":9})"),
         one(u"items[1].section"_s, u"9"_s, u"1 to 8"_s)},
        {"no object", sold(R"("Ekmek")"), one(u"items[0]"_s, u"\"Ekmek\""_s, u"an object"_s)},
        {"everything wrong",
         sold(bread + R"(,{"name":"","price":0.5,"quantity":-1,"section":9,"percentage":1000})"),
         {u"items[1].name: \"\"; accepted: "_s + nameText, u"items[1].price: 0.5; accepted: "_s + amountText,
          u"items[1].quantity: -1; accepted: "_s + quantityText, u"items[1].section: 9; accepted: 1 to 8"_s,
          u"items[1].percentage: 1000; accepted: -100 to 100"_s}},
    };
}

QList<JsonRow> badReceipts()
{
    const QString last = u"payments[0]"_s;
    const QString oneOfThem = u"one of them"_s;
    const QString priced = u"one item with a price, or a medical part"_s;
    const QString personText = u"11 digits in quotes, \"11111111111\" for anybody; or a company"_s;
    return {
        {"no object", "[]"_ba, one(u"the whole"_s, u"a list"_s, u"an object"_s)},
        {"empty",
         "{}"_ba,
         {u"items: missing; accepted: a list of 0 to 500"_s,
          u"payments: missing; accepted: a list of 1 to 100"_s}},
        {"unknown field", sold(bread, R"(,"receipts":1)"),
         one(u"receipts"_s, u"no field has this name"_s,
             u"items, medical, invoice, payments, total, reenterCash, slip"_s)},
        {"unknown field of strange letters", sold(bread, R"(,"a\nb. c":1)"),
         one(u"\"a\uFFFDb. c\""_s, u"no field has this name"_s,
             u"items, medical, invoice, payments, total, reenterCash, slip"_s)},
        {"no items", sold(""), one(u"items"_s, u"nothing that has a price"_s, priced)},
        {"remarks alone", sold(R"({"name":"x","price":0})"),
         one(u"items"_s, u"nothing that has a price"_s, priced)},
        {"501 items", sold(listOf(bread, 501)), one(u"items"_s, u"a list of 501"_s, u"a list of 0 to 500"_s)},
        {"items that are no list", R"({"items":{},"payments":[{"cash":"rest"}]})"_ba,
         one(u"items"_s, u"an object"_s, u"a list of 0 to 500"_s)},
        {"medical part of nothing", sold(bread, R"(,"medical":{"amount":0,"person":"11111111111"})"),
         one(u"medical.amount"_s, u"0"_s, paidText)},
        {"medical part of nobody", sold(bread, R"(,"medical":{"amount":1})"),
         one(u"medical.person"_s, u"missing"_s, anybodyText)},
        {"person with a wrong digit", sold(bread, R"(,"medical":{"amount":1,"person":"10000000147"})"),
         one(u"medical.person"_s, u"not a valid number"_s, anybodyText), schemaIsSilent},
        {"person without quotes", sold(bread, R"(,"medical":{"amount":1,"person":11111111111})"),
         one(u"medical.person"_s, u"not a valid number"_s, anybodyText)},
        {"medical part that is no object", sold(bread, R"(,"medical":500)"),
         one(u"medical"_s, u"500"_s, u"an object"_s)},
        {"invoice without a type", invoiced(R"({"person":"11111111111"})"),
         one(u"invoice.type"_s, u"missing"_s, u"\"paper\", \"electronic\", \"archived\""_s)},
        {"invoice of another type", invoiced(R"({"type":0,"person":"11111111111"})"),
         one(u"invoice.type"_s, u"0"_s, u"\"paper\", \"electronic\", \"archived\""_s)},
        {"invoice for nobody", invoiced(R"({"type":"electronic"})"),
         one(u"invoice.person"_s, u"missing"_s, personText)},
        {"invoice for two",
         invoiced(R"({"type":"electronic","person":"11111111111","company":"0000000001"})"),
         one(u"invoice"_s, u"a person and a company"_s, oneOfThem)},
        {"tax number with a wrong digit", invoiced(R"({"type":"electronic","company":"0000000002"})"),
         one(u"invoice.company"_s, u"not a valid number"_s, u"the 10 digits of a tax number, in quotes"_s),
         schemaIsSilent},
        {"identity number as a tax number", invoiced(R"({"type":"electronic","company":"11111111111"})"),
         one(u"invoice.company"_s, u"not a valid number"_s, u"the 10 digits of a tax number, in quotes"_s)},
        {"paper without a reference", invoiced(R"({"type":"paper","person":"11111111111"})"),
         one(u"invoice.reference"_s, u"missing"_s,
             u"a text of 1 to 16 bytes in UTF-8, without control characters"_s)},
        {"paper with a short reference",
         invoiced(R"({"type":"paper","person":"11111111111","reference":"ABC12"})"),
         one(u"invoice.reference"_s, u"\"ABC12\""_s, u"6 to 16 letters without accents, digits and signs"_s)},
        {"reference of 17",
         invoiced(R"({"type":"archived","person":"11111111111","reference":"12345678901234567"})"),
         one(u"invoice.reference"_s, u"\"12345678901234567\" has 17 bytes"_s,
             u"a text of 1 to 16 bytes in UTF-8, without control characters"_s)},
        {"reference with an accent",
         invoiced(R"({"type":"archived","person":"11111111111","reference":"ŞABC123"})"),
         one(u"invoice.reference"_s, u"\"ŞABC123\""_s,
             u"1 to 16 letters without accents, digits and signs"_s)},
        {"delivery note 1", invoiced(R"({"type":"archived","person":"11111111111","deliveryNote":1})"),
         one(u"invoice.deliveryNote"_s, u"1"_s, u"true or false"_s)},
        {"invoice that is paid",
         paid(R"({"cash":"12.50"})", R"(,"invoice":{"type":"archived","person":"11111111111"})"),
         one(last, u"an amount"_s, u"\"rest\", with which an invoice ends the sale"_s), schemaIsSilent},
        {"no payments", paid(""), one(u"payments"_s, u"a list of 0"_s, u"a list of 1 to 100"_s)},
        {"101 payments", paid(listOf(R"({"cash":1})", 101)),
         one(u"payments"_s, u"a list of 101"_s, u"a list of 1 to 100"_s)},
        {"rest that is not last", paid(R"({"cash":"rest"},{"card":"rest"})"),
         one(last, u"\"rest\""_s, u"an amount: only the last payment may be the rest"_s), schemaIsSilent},
        {"payment of nothing", paid(R"({"cash":"0.00"})"),
         one(u"payments[0].cash"_s, u"\"0.00\""_s, paidText + u", or \"rest\""_s)},
        {"payment of a word", paid(R"({"card":"Rest"})"),
         one(u"payments[0].card"_s, u"\"Rest\""_s, paidText + u", or \"rest\""_s)},
        {"payment by null", paid(R"({"card":null})"),
         one(u"payments[0].card"_s, u"null"_s, paidText + u", or \"rest\""_s)},
        {"payment of two kinds", paid(R"({"card":1,"cash":1})"), one(last, u"cash and card"_s, oneOfThem)},
        {"payment of no kind", paid("{}"), one(last, u"neither cash nor card"_s, oneOfThem)},
        {"payment by cheque", paid(R"({"cash":1,"cheque":1})"),
         one(u"payments[0].cheque"_s, u"no field has this name"_s, u"cash, card"_s)},
        {"payment that is no object", paid(R"("cash")"), one(last, u"\"cash\""_s, u"an object"_s)},
        {"less than the total", paid(R"({"cash":"5.00"},{"card":"7.49"})", R"(,"total":"12.50")"),
         one(u"payments"_s, u"12.49 together"_s, u"the total of 12.50, or \"rest\" in the last one"_s),
         schemaIsSilent},
        {"a payment behind the total", paid(R"({"cash":"12.50"},{"card":"rest"})", R"(,"total":"12.50")"),
         one(u"payments[1]"_s, u"12.50 are paid before it"_s,
             u"nothing behind the payment that reaches the total of 12.50"_s),
         schemaIsSilent},
        {"total with a point", sold(bread, R"(,"total":12.5)"), one(u"total"_s, u"12.5"_s, amountText)},
        {"cash again, in quotes", sold(bread, R"(,"reenterCash":"true")"),
         one(u"reenterCash"_s, u"\"true\""_s, u"true or false"_s)},
        {"bad slip",
         sold(bread, R"(,"slip":{"lines":[{"feed":21}]})"),
         {u"slip.encoding: missing; accepted: \"UTF-8\", \"windows-1254\", \"ISO-8859-9\""_s,
          u"slip.lines[0].feed: 21; accepted: 1 to 20"_s}},
    };
}

QList<JsonRow> goodSlips()
{
    const QByteArray letters = R"("ĞÜŞİÖÇ ğüşıöç")"_ba;
    return {
        {"text", slip(R"("Afiyet olsun")"), {}},
        {"all kinds",
         slip(
             R"("a",{"left":"Masa","right":"7","styleB":true},{"text":"x","size":5,"styleA":true},{"feed":20})"),
         {}},
        {"text without a style", slip(R"({"text":"x","size":0,"styleA":false})"), {}},
        {"Turkish letters", slip(letters, "windows-1254"), {}},
        {"Turkish letters of the standard", slip(letters, "ISO-8859-9"), {}},
        {"euro", slip(R"("9 €")", "windows-1254"), {}},
        {"any letters", slip(R"("☕ 漢 🍞")"), {}},
        {"2000 lines", slip(listOf(R"("a")", 2000)), {}},
        {"60,000 bytes", slip('"' + QByteArray(59'984, 'a') + '"'), {}},
    };
}

QList<JsonRow> badSlips()
{
    const QString encodings = u"\"UTF-8\", \"windows-1254\", \"ISO-8859-9\""_s;
    const QString first = u"lines[0]"_s;
    const QString plain = u"a text that is not empty, without control characters"_s;
    const QString text = u"a text of 1 to 60000 bytes in UTF-8, without control characters"_s;
    return {
        {"no object", R"("Merhaba")"_ba, one(u"the whole"_s, u"\"Merhaba\""_s, u"an object"_s)},
        {"nothing",
         "{}"_ba,
         {u"encoding: missing; accepted: "_s + encodings,
          u"lines: missing; accepted: a list of 1 to 2000"_s}},
        {"another encoding", slip(R"("a")", "UTF-16"), one(u"encoding"_s, u"\"UTF-16\""_s, encodings)},
        {"encoding in small letters", slip(R"("a")", "utf-8"), one(u"encoding"_s, u"\"utf-8\""_s, encodings)},
        {"letters that it cannot write", slip(R"("漢")", "windows-1254"),
         one(first, u"\"漢\""_s, u"characters that windows-1254 can write"_s), schemaIsSilent},
        {"euro in the older one", slip(R"({"left":"a","right":"9 €"})", "ISO-8859-9"),
         one(first, u"\"9 €\""_s, u"characters that ISO-8859-9 can write"_s), schemaIsSilent},
        {"no lines", slip(""), one(u"lines"_s, u"a list of 0"_s, u"a list of 1 to 2000"_s)},
        {"2001 lines", slip(listOf(R"("a")", 2001)),
         one(u"lines"_s, u"a list of 2001"_s, u"a list of 1 to 2000"_s)},
        {"more than 60,000 bytes", slip('"' + QByteArray(59'985, 'a') + '"'),
         one(u"lines"_s, u"60001 bytes, counting 16 for each line"_s, u"60000 bytes"_s), schemaIsSilent},
        {"empty line", slip(R"("")"), one(first, u"\"\""_s, plain)},
        {"two lines in one", slip(R"("a\nb")"), one(first, u"\"a\uFFFDb\""_s, plain)},
        {"a number", slip("7"), one(first, u"7"_s, u"an object"_s)},
        {"empty object", slip("{}"), one(u"lines[0].text"_s, u"missing"_s, text)},
        {"empty text", slip(R"({"text":""})"), one(u"lines[0].text"_s, u"\"\""_s, text)},
        {"size 6", slip(R"({"text":"a","size":6})"), one(u"lines[0].size"_s, u"6"_s, u"0 to 5"_s)},
        {"style 1", slip(R"({"text":"a","styleA":1})"),
         one(u"lines[0].styleA"_s, u"1"_s, u"true or false"_s)},
        {"no right end", slip(R"({"left":"a"})"), one(u"lines[0].right"_s, u"missing"_s, text)},
        {"empty left end", slip(R"({"left":"","right":"b"})"), one(u"lines[0].left"_s, u"\"\""_s, text)},
        {"size of two ends", slip(R"({"left":"a","right":"b","size":1})"),
         one(u"lines[0].size"_s, u"no field has this name"_s, u"left, right, styleA, styleB"_s)},
        {"no feeds", slip(R"({"feed":0})"), one(u"lines[0].feed"_s, u"0"_s, u"1 to 20"_s)},
        {"feeds and a text", slip(R"({"feed":1,"text":"a"})"),
         one(u"lines[0].text"_s, u"no field has this name"_s, u"feed"_s)},
    };
}

} // namespace TestSupport
