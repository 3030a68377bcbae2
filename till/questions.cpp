// SPDX-License-Identifier: Apache-2.0

#include "till/questions.h"

#include "till/money.h"

#include <QStringList>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

/** %1 is the receipt. What follows are the answers, a line each. */
struct Asked
{
    Question question;
    const char *english;
    const char *turkish;
};

constexpr std::array table{
    Asked{Question::ReceiptUnknown,
          "The register does not tell whether %1 was closed. Look at its last receipt on paper, or at an X "
          "report.\n"
          "paid: it was closed.\n"
          "sell-again: it was not; it is sold once more.\n"
          "drop: it was not, and it is not wanted any more.",
          "Yazarkasa, %1 kapandı mı söylemiyor. Kâğıttaki son fişe ya da bir X raporuna bakın.\n"
          "paid: fiş kapanmış.\n"
          "sell-again: kapanmamış; satış yeniden yapılır.\n"
          "drop: kapanmamış ve artık istenmiyor."},
    Asked{Question::MoneyTaken,
          "The register has cancelled %1 when something had been paid, or may have been. Look at the slip of "
          "the card and into the drawer: give back what was taken, and void what the card has paid.\n"
          "sell-again: that is done; the sale is made once more, and all is paid anew.\n"
          "drop: that is done, and the sale is not wanted any more.\n"
          "paid: the receipt was closed all the same; it lies there on paper.",
          "Yazarkasa, ödeme alınmışken ya da alınmış olabilecekken satışı iptal etti: %1. Kart slibine ve "
          "çekmeceye bakın: alınan parayı geri verin, kart işlemini iptal edin.\n"
          "sell-again: yapıldı; satış yeniden yapılır ve ödemenin tamamı yeniden alınır.\n"
          "drop: yapıldı ve satış artık istenmiyor.\n"
          "paid: fiş yine de kapanmış; kâğıdı elde."},
    Asked{Question::PaymentRefused,
          "The register refuses a payment of %1, and a part is paid. The sale is open on the register: take "
          "the rest there, by other means, or cancel it there.\n"
          "paid: the rest was taken, and the receipt is closed.\n"
          "sell-again: the payment may be taken now; it is tried once more.\n"
          "drop: the sale is not wanted any more; it is cancelled, and what was paid is to be given back.",
          "Yazarkasa bir ödemeyi kabul etmiyor, tutarın bir kısmı ödendi: %1. Satış yazarkasada açık: kalanı "
          "orada başka bir yolla alın ya da satışı orada iptal edin.\n"
          "paid: kalan alındı ve fiş kapandı.\n"
          "sell-again: ödeme artık alınabilir; yeniden denenir.\n"
          "drop: satış artık istenmiyor; iptal edilir ve ödenen geri verilir."},
    Asked{
        Question::NotOurs,
        "The register tells of %1 what nobody has entered here: somebody has worked on the register itself. "
        "Compare the receipt with the sale.\n"
        "paid: the receipt is right as it is.\n"
        "sell-again: it does not count; the sale is made once more.\n"
        "drop: it does not count, and the sale is not wanted any more.",
        "Yazarkasadaki satış burada girilenden farklı: %1. Biri yazarkasada elle işlem yapmış. Fişi satışla "
        "karşılaştırın.\n"
        "paid: fiş bu haliyle doğru.\n"
        "sell-again: fiş geçersiz; satış yeniden yapılır.\n"
        "drop: fiş geçersiz ve satış artık istenmiyor."},
    Asked{Question::OtherRegister,
          "The numbers of the register are below those on record: this is another register, or its fiscal "
          "memory is another one. If nobody has replaced it, sell nothing and call the service. Otherwise "
          "look on the old register's paper for %1.\n"
          "paid: it was replaced, and this was done on the old one.\n"
          "sell-again: it was replaced, and this was not done; it is done on the new one.\n"
          "drop: it was replaced, this was not done, and it is not wanted any more.",
          "Yazarkasanın numaraları kayıtlardakinden küçük: bu başka bir yazarkasa ya da mali hafızası "
          "değişmiş. Kimse değiştirmediyse satış yapmayın, servisi arayın. Değiştirildiyse eski yazarkasanın "
          "kâğıtlarına bakın: %1.\n"
          "paid: değiştirildi ve bu iş eskisinde yapılmış.\n"
          "sell-again: değiştirildi ve bu iş yapılmamış; yenisinde yapılır.\n"
          "drop: değiştirildi, bu iş yapılmamış ve artık istenmiyor."},
    Asked{
        Question::CountedTwice,
        "A receipt of this sale was taken for cancelled, and counts. The history has its number; on record is"
        " %1. If the sale was made once more, or anew as another one, take one of the receipts back on the"
        " register.\n"
        "paid: that is seen to.",
        "Bu satışın iptal edilmiş sanılan bir fişi geçerli. Numarası geçmişte; kayıttaki: %1. Satış yeniden "
        "ya da ayrı bir satış olarak yapıldıysa fişlerden birini yazarkasada iade edin.\n"
        "paid: gereği yapıldı."},
    Asked{Question::SlipPrinted,
          "It is not known whether the slip was printed. Look at the printer.\n"
          "paid: it was printed.\n"
          "sell-again: it was not; it is printed once more.\n"
          "drop: it is not wanted any more.",
          "Bilgi fişi basıldı mı bilinmiyor. Yazıcıya bakın.\n"
          "paid: basıldı.\n"
          "sell-again: basılmadı; yeniden basılır.\n"
          "drop: artık istenmiyor."},
};

QString inWords(Language language, const char *english, const char *turkish)
{
    return QString::fromUtf8(language == Language::Turkish ? turkish : english);
}

/** What the order is, with its number on the register when it has one. */
QString subject(const Order &order, Language language)
{
    if (order.reference.second != 0) {
        return inWords(language, "receipt %2 of Z %1", "Z %1, fiş %2")
            .arg(order.reference.first)
            .arg(order.reference.second);
    }
    const Word &kind = wordOf(kindWords(), int(order.kind));
    return inWords(language, "the %1", "%1").arg(QString::fromUtf8(kind.in(language)));
}

QString amount(qint64 kurus)
{
    return liraText(kurus) + u" TL"_s;
}

QString capitalised(const QString &text)
{
    return text.left(1).toUpper() + text.mid(1);
}

QString closedText(const Order &order, Language language)
{
    if (order.kind != Kind::Receipt) {
        return inWords(language, "%1: done.", "%1: tamamlandı.")
            .arg(capitalised(QString::fromUtf8(wordOf(kindWords(), int(order.kind)).in(language))));
    }
    const auto total = [&order](VelnoTotal which) { return amount(order.totals.values[which]); };
    return inWords(language, "%1 is closed: total %2, cash %3, card %4, change %5.",
                   "%1 kapandı: toplam %2, nakit %3, kart %4, para üstü %5.")
        .arg(capitalised(subject(order, language)), total(VelnoTotal_ToPay), total(VelnoTotal_Cash),
             total(VelnoTotal_Card), total(VelnoTotal_Change));
}

QString stateText(const Order &order, Language language)
{
    if (order.state == State::Closed)
        return closedText(order, language);
    const QString text = QString::fromUtf8(wordOf(stateWords(), int(order.state)).in(language));
    if (order.code == 0)
        return text;
    return text + u" (%1, %2: %3)"_s.arg(QLatin1StringView(velnoext_cause_name(order.cause)))
                      .arg(order.code)
                      .arg(order.cause);
}

QStringList hints(const Order &order, Language language)
{
    QStringList lines;
    if (order.paper == Paper::Unsure) {
        lines << inWords(language,
                         "It may not have been printed: look at the paper. Do not sell it again, it counts.",
                         "Basılmamış olabilir: kâğıda bakın. Yeniden satmayın, fiş geçerli.");
    }
    if (order.slipUnsure) {
        lines << inWords(language, "The slip may not have been printed.", "Bilgi fişi basılmamış olabilir.");
    }
    if (order.giveBack > 0) {
        lines << inWords(language,
                         "%1 in cash was taken on a sale that the register cancelled, and is on no receipt: "
                         "give it back.",
                         "Yazarkasanın iptal ettiği satışta %1 nakit alındı ve hiçbir fişte yok: geri verin.")
                     .arg(amount(order.giveBack));
    }
    return lines;
}

} // namespace

QString questionText(const Order &order, Language language)
{
    const auto row = std::ranges::find(table, order.question, &Asked::question);
    if (row == table.end())
        return {};
    const QString text = inWords(language, row->english, row->turkish);
    return text.contains("%1"_L1) ? text.arg(subject(order, language)) : text;
}

QString message(const Order &order, Language language)
{
    QStringList lines{stateText(order, language)};
    lines << hints(order, language);
    if (order.question != Question::None)
        lines << questionText(order, language);
    return lines.join(u'\n');
}

} // namespace Velno::Receipts
