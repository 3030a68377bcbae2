// SPDX-License-Identifier: Apache-2.0

#include "till/words.h"

#include "till/velnotill.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Velno::Receipts {

namespace {

constexpr std::array results{
    Word{VelnoTillResult_Done, "done", "The order is on record; its state says what has become of it.",
         "İş kayıtta; sonucunu durumu söyler."},
    Word{VelnoTillResult_BadContent, "bad-content", "What was handed over has faults.",
         "Verilen içerik hatalı."},
    Word{VelnoTillResult_Conflict, "conflict", "The key is on record with another content.",
         "Bu anahtar başka bir içerikle kayıtlı."},
    Word{VelnoTillResult_LedgerFailed, "ledger-failed", "The ledger cannot be opened, read or written.",
         "Kayıt dosyası açılamıyor, okunamıyor ya da yazılamıyor."},
    Word{VelnoTillResult_Unknown, "unknown-key", "No order has this key.", "Bu anahtarla kayıtlı iş yok."},
    Word{VelnoTillResult_NotAsked, "not-asked", "The order does not wait for this answer.",
         "İş bu yanıtı beklemiyor."},
    Word{VelnoTillResult_Interrupted, "interrupted",
         "Interrupted; the order goes on when it is asked for again.",
         "Kesildi; iş yeniden istendiğinde sürer."},
    Word{VelnoTillResult_NullArgument, "null-argument", "A pointer is NULL.", "Bir işaretçi NULL."},
    Word{VelnoTillResult_BadArgument, "bad-argument", "A value is not valid.", "Bir değer geçerli değil."},
    Word{VelnoTillResult_NotOpen, "not-open", "The till is not open.", "Kasa açık değil."},
    Word{VelnoTillResult_AlreadyOpen, "already-open", "This process has a till open already.",
         "Bu süreçte zaten bir kasa açık."},
    Word{VelnoTillResult_InCallback, "in-callback", "A callback cannot call this function.",
         "Geri çağrı içinden bu işlev çağrılamaz."},
    Word{VelnoTillResult_NoMemory, "no-memory", "There is no memory.", "Bellek yetmiyor."},
};

constexpr std::array kinds{
    Word{VelnoTillKind_Receipt, "receipt", "receipt", "fiş"},
    Word{VelnoTillKind_ZReport, "z-report", "Z report", "Z raporu"},
    Word{VelnoTillKind_XReport, "x-report", "X report", "X raporu"},
    Word{VelnoTillKind_Slip, "slip", "slip", "bilgi fişi"},
};

constexpr std::array states{
    Word{VelnoTillState_Accepted, "accepted", "It is on record and has not been begun.",
         "Kayda alındı, henüz başlanmadı."},
    Word{VelnoTillState_Open, "open", "It is open on the register.", "Yazarkasada açık."},
    Word{VelnoTillState_Closed, "closed", "It is done.", "Tamamlandı."},
    Word{VelnoTillState_Cancelled, "cancelled", "It was dropped: nothing has been sold.",
         "Vazgeçildi: hiçbir şey satılmadı."},
    Word{VelnoTillState_Refused, "refused", "The register refuses it: nothing has been sold.",
         "Yazarkasa kabul etmiyor: hiçbir şey satılmadı."},
    Word{VelnoTillState_Waiting, "waiting", "The register is away or busy: it goes on later.",
         "Yazarkasa bağlı değil ya da meşgul: daha sonra sürecek."},
    Word{VelnoTillState_NeedsPerson, "needs-person", "A person has to decide.",
         "Bir kişinin karar vermesi gerekiyor."},
};

constexpr std::array questions{
    Word{VelnoTillQuestion_None, "none", "", ""},
    Word{VelnoTillQuestion_ReceiptUnknown, "receipt-unknown", "", ""},
    Word{VelnoTillQuestion_MoneyTaken, "money-taken", "", ""},
    Word{VelnoTillQuestion_PaymentRefused, "payment-refused", "", ""},
    Word{VelnoTillQuestion_NotOurs, "not-ours", "", ""},
    Word{VelnoTillQuestion_OtherRegister, "other-register", "", ""},
    Word{VelnoTillQuestion_CountedTwice, "counted-twice", "", ""},
    Word{VelnoTillQuestion_SlipPrinted, "slip-printed", "", ""},
};

constexpr std::array answers{
    Word{VelnoTillAnswer_None, "none", "", ""},
    Word{VelnoTillAnswer_Paid, "paid", "", ""},
    Word{VelnoTillAnswer_SellAgain, "sell-again", "", ""},
    Word{VelnoTillAnswer_Drop, "drop", "", ""},
};

constexpr std::array papers{
    Word{VelnoTillPaper_Unknown, "unknown", "", ""},
    Word{VelnoTillPaper_Printed, "printed", "", ""},
    Word{VelnoTillPaper_Unsure, "unsure", "", ""},
};

constexpr std::array stages{
    Word{VelnoTillStage_Accepted, "accepted", "put on record", "kayda alındı"},
    Word{VelnoTillStage_Connecting, "connecting", "the register is being connected",
         "yazarkasaya bağlanılıyor"},
    Word{VelnoTillStage_Pairing, "pairing", "the register is being paired", "yazarkasa eşleniyor"},
    Word{VelnoTillStage_Starting, "starting", "the sale is being started", "satış başlatılıyor"},
    Word{VelnoTillStage_Entering, "entering", "lines are being entered", "satırlar giriliyor"},
    Word{VelnoTillStage_CashPayment, "cash-payment", "cash payment under way", "nakit ödeme alınıyor"},
    Word{VelnoTillStage_CardPayment, "card-payment", "card payment under way", "kartla ödeme alınıyor"},
    Word{VelnoTillStage_Closing, "closing", "the receipt is being closed", "fiş kapatılıyor"},
    Word{VelnoTillStage_Looking, "looking", "an answer was lost: the register is being asked",
         "yanıt gelmedi: yazarkasaya soruluyor"},
    Word{VelnoTillStage_Busy, "busy", "the register is busy, or out of paper",
         "yazarkasa meşgul ya da kâğıdı bitti"},
    Word{VelnoTillStage_EnteringAgain, "entering-again",
         "the register has cancelled the sale: it is being entered again",
         "yazarkasa satışı iptal etti: yeniden giriliyor"},
    Word{VelnoTillStage_Printing, "printing", "printing", "yazdırılıyor"},
    Word{VelnoTillStage_Reporting, "reporting", "the report is being made", "rapor alınıyor"},
    Word{VelnoTillStage_Settled, "settled", "this is how it stands", "işin son durumu"},
};

constexpr Word noWord{-1, "unknown", "There is no such number.", "Böyle bir numara yok."};

} // namespace

Language languageOf(const char *name)
{
    return name && std::strcmp(name, "tr") == 0 ? Language::Turkish : Language::English;
}

std::span<const Word> resultWords()
{
    return results;
}

std::span<const Word> kindWords()
{
    return kinds;
}

std::span<const Word> stateWords()
{
    return states;
}

std::span<const Word> questionWords()
{
    return questions;
}

std::span<const Word> answerWords()
{
    return answers;
}

std::span<const Word> paperWords()
{
    return papers;
}

std::span<const Word> stageWords()
{
    return stages;
}

const Word &wordOf(std::span<const Word> words, int number)
{
    const auto found = std::ranges::find(words, number, &Word::number);
    return found == words.end() ? noWord : *found;
}

} // namespace Velno::Receipts
