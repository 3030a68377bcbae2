// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/texts.h"

#include <algorithm>
#include <array>

namespace Velno::Ext {

namespace {

constexpr Words detail(int number, const char *english, const char *turkish)
{
    return {number, nullptr, {english, turkish}};
}

constexpr std::array details{
    detail(0, "No argument is named.", "Hiçbir bağımsız değişken belirtilmedi."),
    detail(0x300,
           "NULL: the serial number (velnoext_initialize, velnoext_set_active_device, "
           "velnoext_forget_device), the buffer (velnoext_active_device, velnoext_ecr_serialno), the data "
           "(velnoext_send_data) or the frame (velnoext_get_data).",
           "NULL: sicil numarası (velnoext_initialize, velnoext_set_active_device, velnoext_forget_device), "
           "arabellek (velnoext_active_device, velnoext_ecr_serialno), veri (velnoext_send_data) ya da "
           "çerçeve (velnoext_get_data)."),
    detail(0x301, "NULL: the address (velnoext_initialize) or the output (velnoext_get_data).",
           "NULL: adres (velnoext_initialize) ya da çıktı (velnoext_get_data)."),
    detail(0x302, "NULL: the state (velnoext_ecr_state) or the output's length (velnoext_get_data).",
           "NULL: durum (velnoext_ecr_state) ya da çıktının uzunluğu (velnoext_get_data)."),
    detail(0x303, "NULL: the first value of the list (velnoext_sale_state).",
           "NULL: listenin ilk değeri (velnoext_sale_state)."),
    detail(0x304,
           "NULL: the totals (velnoext_sale_state, velnoext_receipt_data, velnoext_add_sale_item, "
           "velnoext_add_multiple_sale_items, velnoext_delete_last_sale_item, velnoext_delete_sale_item).",
           "NULL: toplamlar (velnoext_sale_state, velnoext_receipt_data, velnoext_add_sale_item, "
           "velnoext_add_multiple_sale_items, velnoext_delete_last_sale_item, velnoext_delete_sale_item)."),
    detail(0x305, "NULL: the receipt reference (velnoext_sale_state, velnoext_receipt_data).",
           "NULL: fişin kimliği (velnoext_sale_state, velnoext_receipt_data)."),
    detail(0x306, "NULL: the item (velnoext_add_sale_item, velnoext_section_data).",
           "NULL: kalem (velnoext_add_sale_item, velnoext_section_data)."),
    detail(0x307, "NULL: the list of items (velnoext_add_multiple_sale_items).",
           "NULL: kalemlerin listesi (velnoext_add_multiple_sale_items)."),
    detail(0x308, "NULL: the invoice (velnoext_end_sale_with_invoice).",
           "NULL: fatura (velnoext_end_sale_with_invoice)."),
    detail(0x309, "NULL: the list (velnoext_active_acquirers, velnoext_acquirers_of_sale).",
           "NULL: liste (velnoext_active_acquirers, velnoext_acquirers_of_sale)."),
    detail(0x30A, "NULL: the list's count (velnoext_active_acquirers, velnoext_acquirers_of_sale).",
           "NULL: listenin sayısı (velnoext_active_acquirers, velnoext_acquirers_of_sale)."),
    detail(0x30B, "NULL: the Z number (velnoext_current_z).", "NULL: Z numarası (velnoext_current_z)."),
    detail(0x30C, "NULL: the date and time (velnoext_last_z_datetime, velnoext_ecr_datetime).",
           "NULL: tarih ve saat (velnoext_last_z_datetime, velnoext_ecr_datetime)."),
    detail(0x30D, "NULL: the name of the encoding (velnoext_printer_set_encoding).",
           "NULL: karakter kodlamasının adı (velnoext_printer_set_encoding)."),
    detail(0x30E,
           "NULL or empty: the text (velnoext_printer_add_text), the left or the right text "
           "(velnoext_printer_add_justified_text).",
           "NULL ya da boş: yazı (velnoext_printer_add_text), soldaki ya da sağdaki yazı "
           "(velnoext_printer_add_justified_text)."),
    detail(0x30F, "NULL: the text style (velnoext_printer_add_text, velnoext_printer_add_justified_text).",
           "NULL: yazı biçimi (velnoext_printer_add_text, velnoext_printer_add_justified_text)."),
    detail(0x310, "NULL: the limit (velnoext_sale_limit).", "NULL: sınır (velnoext_sale_limit)."),
    detail(0x311, "NULL: the language (velnoext_set_language).", "NULL: dil (velnoext_set_language)."),
    detail(0x400,
           "Bad value: the serial number does not have exactly 12 characters (velnoext_initialize, "
           "velnoext_set_active_device, velnoext_forget_device).",
           "Geçersiz değer: sicil numarası tam 12 karakter değil (velnoext_initialize, "
           "velnoext_set_active_device, velnoext_forget_device)."),
    detail(0x402, "Bad value: the port is 0; 1 to 65535 is accepted (velnoext_initialize).",
           "Geçersiz değer: bağlantı noktası (port) 0; 1 ile 65535 arası kabul edilir "
           "(velnoext_initialize)."),
    detail(0x403,
           "Bad value: the 11-digit identity number fails its check digits; 11111111111 stands for anybody "
           "(velnoext_add_medical_contribution, velnoext_end_sale_with_invoice).",
           "Geçersiz değer: 11 haneli kimlik numarasının denetim haneleri tutmuyor; 11111111111 herhangi bir "
           "kişi demektir (velnoext_add_medical_contribution, velnoext_end_sale_with_invoice)."),
    detail(0x404, "Bad value: the 10-digit number fails its check digit (velnoext_end_sale_with_invoice).",
           "Geçersiz değer: 10 haneli numaranın denetim hanesi tutmuyor (velnoext_end_sale_with_invoice)."),
    detail(0x405, "Bad value: the price of an item is 0 (velnoext_add_multiple_sale_items).",
           "Geçersiz değer: bir kalemin fiyatı 0 (velnoext_add_multiple_sale_items)."),
    detail(0x406,
           "Bad value: the section is not 1 to 8 (velnoext_add_sale_item, velnoext_add_multiple_sale_items, "
           "velnoext_section_data).",
           "Geçersiz değer: kısım 1 ile 8 arasında değil (velnoext_add_sale_item, "
           "velnoext_add_multiple_sale_items, velnoext_section_data)."),
    detail(0x407,
           "Bad value: the percentage of an item is below -100 (velnoext_add_sale_item, "
           "velnoext_add_multiple_sale_items).",
           "Geçersiz değer: bir kalemin yüzdesi -100'den küçük (velnoext_add_sale_item, "
           "velnoext_add_multiple_sale_items)."),
    detail(0x408,
           "Bad value: the amount adjustment of an item is negative or exceeds its line total "
           "(velnoext_add_sale_item, velnoext_add_multiple_sale_items).",
           "Geçersiz değer: bir kalemin tutar indirimi eksi ya da satır toplamından büyük "
           "(velnoext_add_sale_item, velnoext_add_multiple_sale_items)."),
    detail(0x409,
           "Bad value: the type of an item is not 0 to 7 (velnoext_add_sale_item, "
           "velnoext_add_multiple_sale_items).",
           "Geçersiz değer: bir kalemin türü 0 ile 7 arasında değil (velnoext_add_sale_item, "
           "velnoext_add_multiple_sale_items)."),
    detail(0x40A, "Bad value: the number of items is not 1 to 10 (velnoext_add_multiple_sale_items).",
           "Geçersiz değer: kalem sayısı 1 ile 10 arasında değil (velnoext_add_multiple_sale_items)."),
    detail(0x40B, "Bad value: the type of invoice is not 0 to 2 (velnoext_end_sale_with_invoice).",
           "Geçersiz değer: faturanın türü 0 ile 2 arasında değil (velnoext_end_sale_with_invoice)."),
    detail(0x40C, "Bad value: the kind of identity number is not 0 or 1 (velnoext_end_sale_with_invoice).",
           "Geçersiz değer: kimlik numarasının türü 0 ya da 1 değil (velnoext_end_sale_with_invoice)."),
    detail(0x40D, "Bad value: the mode is not 1 or 2 (velnoext_end_sale_with_invoice).",
           "Geçersiz değer: ödeme biçimi 1 ya da 2 değil (velnoext_end_sale_with_invoice)."),
    detail(0x40E,
           "Bad value: the reference of an invoice of type 0 does not have 6 to 16 characters "
           "(velnoext_end_sale_with_invoice).",
           "Geçersiz değer: türü 0 olan faturanın numarası 6 ile 16 karakter arasında değil "
           "(velnoext_end_sale_with_invoice)."),
    detail(0x40F, "Bad value: the first number of the receipt reference is 0 (velnoext_receipt_data).",
           "Geçersiz değer: fiş kimliğinin ilk sayısı 0 (velnoext_receipt_data)."),
    detail(0x410, "Bad value: the second number of the receipt reference is 0 (velnoext_receipt_data).",
           "Geçersiz değer: fiş kimliğinin ikinci sayısı 0 (velnoext_receipt_data)."),
    detail(0x411, "Bad value: no encoding of this name is known (velnoext_printer_set_encoding).",
           "Geçersiz değer: bu adda bir karakter kodlaması bilinmiyor (velnoext_printer_set_encoding)."),
    detail(0x412, "Bad value: the amount of the payment is 0 or negative (velnoext_add_payment).",
           "Geçersiz değer: ödeme tutarı 0 ya da eksi (velnoext_add_payment)."),
    detail(0x413, "Bad value: more than 20 line feeds (velnoext_printer_add_line_feed).",
           "Geçersiz değer: 20'den çok satır atlama (velnoext_printer_add_line_feed)."),
    detail(0x414, "Bad value: the limit is 0 ms (velnoext_set_answer_limit).",
           "Geçersiz değer: süre sınırı 0 ms (velnoext_set_answer_limit)."),
    detail(0x415,
           "Bad value: no language of this name is known; \"en\" and \"tr\" are (velnoext_set_language).",
           "Geçersiz değer: bu adda bir dil bilinmiyor; \"en\" ve \"tr\" bilinir (velnoext_set_language)."),
};
static_assert(std::ranges::is_sorted(details, {}, &Words::number), "a detail is found by halving");

constexpr Words otherPointer = detail(-1, "NULL: a pointer that this version of the library does not name.",
                                      "NULL: kitaplığın bu sürümünün adını bilmediği bir işaretçi.");
constexpr Words otherValue =
    detail(-1, "Bad value: an argument that this version of the library does not name.",
           "Geçersiz değer: kitaplığın bu sürümünün adını bilmediği bir bağımsız değişken.");
constexpr Words noDetail =
    detail(-1,
           "This is no detail of the library: details are 0, 0x300 and more for a NULL pointer, 0x400 and "
           "more for a bad value.",
           "Bu, kitaplığın bir ayrıntısı değil: ayrıntılar 0, NULL işaretçi için 0x300 ve sonrası, geçersiz "
           "değer için 0x400 ve sonrasıdır.");

constexpr int firstNullDetail = 0x300;
constexpr int firstValueDetail = 0x400;
constexpr int firstOtherNumber = 0x500;

} // namespace

std::span<const Words> detailTexts()
{
    return details;
}

const Words &otherDetail(int detail)
{
    if (detail < firstNullDetail || detail >= firstOtherNumber)
        return noDetail;
    return detail < firstValueDetail ? otherPointer : otherValue;
}

} // namespace Velno::Ext
