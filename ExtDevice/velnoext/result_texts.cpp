// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/texts.h"

#include <algorithm>
#include <array>

namespace Velno::Ext {

namespace {

constexpr std::array results{
    Words{Success,
          "success",
          {"The command was carried out.\n"
           "Cause: nothing went wrong.\n"
           "Cure: none is needed.",
           "Komut yerine getirildi.\n"
           "Neden: bir sorun çıkmadı.\n"
           "Çözüm: gerekmiyor."}},
    Words{
        NotReady,
        "not-ready",
        {"The library is not ready for this command.\n"
         "Cause: it is not initialised, no register is active, the register named is not connected or not "
         "paired, this application number may not use the raw pass-through, or the system gives the process "
         "no further thread; velnoext_cause() tells which.\n"
         "Cure: call velnoext_initialize() with the register's serial number first and look at its result; "
         "the raw pass-through is for the applications 999999 and 14242 alone.",
         "Kitaplık bu komuta hazır değil.\n"
         "Neden: kitaplık başlatılmadı, etkin bir yazarkasa yok, adı verilen yazarkasa bağlı ya da eşlenmiş "
         "değil, bu uygulama numarası ham veri aktarımını kullanamaz veya sistem işleme yeni bir iş "
         "parçacığı vermiyor; hangisi olduğunu velnoext_cause() söyler.\n"
         "Çözüm: önce yazarkasanın sicil numarasıyla velnoext_initialize() çağırın ve sonucuna bakın; ham "
         "veri aktarımı yalnızca 999999 ve 14242 numaralı uygulamalar içindir."}},
    Words{
        ConnectionFailed,
        "connection-failed",
        {"There is no connection to the register, or it failed.\n"
         "Cause: listening, the way through the relay, sending, or the wait for an answer failed; "
         "velnoext_cause() tells which, and why.\n"
         "Cure: do what velnoext_cause_text() says to it, then call velnoext_initialize() again. If that "
         "succeeds and every command still ends so, the register has lost its keys: "
         "velnoext_forget_device() makes the next contact pair afresh. Whether a command whose answer was "
         "lost has been carried out must be asked of the register.",
         "Yazarkasayla bağlantı yok ya da bağlantı koptu.\n"
         "Neden: dinleme, aktarma sunucusu üzerinden bağlanma, gönderme veya yanıtı bekleme başarısız oldu; "
         "hangisi olduğunu ve nedenini velnoext_cause() söyler.\n"
         "Çözüm: velnoext_cause_text() metninin söylediğini yapın, sonra velnoext_initialize() işlevini "
         "yeniden çağırın. Bağlantı kurulduğu halde her komut böyle bitiyorsa yazarkasa anahtarlarını "
         "yitirmiştir: velnoext_forget_device() bir sonraki bağlantıda yeniden eşler. Yanıtı yitirilen bir "
         "komutun yapılıp yapılmadığı yazarkasaya sorulmalıdır."}},
    Words{NullArgument,
          "null-argument",
          {"A pointer that the function needs is NULL.\n"
           "Cause: the application passed NULL; velnoext_error_detail() names the argument.\n"
           "Cure: pass a pointer to memory that holds the value or receives it.",
           "İşlevin gerek duyduğu bir işaretçi NULL.\n"
           "Neden: uygulama NULL verdi; hangi bağımsız değişken olduğunu velnoext_error_detail() söyler.\n"
           "Çözüm: değeri tutan ya da alacak olan belleğin işaretçisini verin."}},
    Words{
        BadValue,
        "bad-value",
        {"A value that was passed is not valid.\n"
         "Cause: it is outside what the function takes; velnoext_error_detail() names it. With detail 0 "
         "the address is no IP address of this computer, a length is negative, or the room for the result "
         "is too small; velnoext_cause() tells which.\n"
         "Cure: correct the value, or make the room larger, and call again; the register has changed "
         "nothing.",
         "Verilen bir değer geçerli değil.\n"
         "Neden: değer işlevin kabul ettiği sınırların dışında; hangisi olduğunu velnoext_error_detail() "
         "söyler. Ayrıntı 0 ise adres geçerli bir IP adresi değil, bir uzunluk eksi ya da sonuç için ayrılan "
         "yer yetersizdir; hangisi olduğunu velnoext_cause() söyler.\n"
         "Çözüm: değeri düzeltin ya da yeri büyütün ve yeniden çağırın; yazarkasada hiçbir şey değişmedi."}},
    Words{ReplyUnreadable,
          "reply-unreadable",
          {"The register's answer cannot be read.\n"
           "Cause: it is authentic but does not hold what the command promises: the register's software "
           "speaks another version; velnoext_cause() tells what is wrong with it.\n"
           "Cure: compare the versions of the register's software and of this library; the command may have "
           "been carried out all the same.",
           "Yazarkasanın yanıtı okunamıyor.\n"
           "Neden: yanıt gerçek, ama komutun vaat ettiğini içermiyor: yazarkasanın yazılımı başka bir sürümü "
           "konuşuyor; neyin yanlış olduğunu velnoext_cause() söyler.\n"
           "Çözüm: yazarkasa yazılımı ile bu kitaplığın sürümlerini karşılaştırın; komut yine de yapılmış "
           "olabilir."}},
    Words{WrongState,
          "wrong-state",
          {"The register is in a state that does not allow the command.\n"
           "Cause: a sale is to be started while one is open, continued while none is, or the register shows "
           "another screen, as it does when its paper is used up; velnoext_cause() tells which.\n"
           "Cure: read the state with velnoext_ecr_state(), finish or cancel what is open, put in paper, or "
           "let the cashier leave the screen; then call again.",
           "Yazarkasanın durumu bu komuta izin vermiyor.\n"
           "Neden: açık bir satış varken yeni satış başlatılmak ya da açık satış yokken satış sürdürülmek "
           "isteniyor veya yazarkasa, kağıdı bittiğinde olduğu gibi, başka bir ekran gösteriyor; "
           "hangisi olduğunu velnoext_cause() söyler.\n"
           "Çözüm: durumu velnoext_ecr_state() ile okuyun, açık olanı bitirin ya da iptal edin, kağıt takın "
           "veya kasiyer ekrandan çıksın; sonra yeniden çağırın."}},
    Words{StepNotTaken,
          "step-not-taken",
          {"The register did not take the change of state.\n"
           "Cause: it told an error of its own, or its display waits for something else than the next step "
           "of the sale; velnoext_cause() tells which.\n"
           "Cure: do what velnoext_cause_text() says to it, or settle what the register's screen shows; then "
           "call again.",
           "Yazarkasa istenen adımı atmadı.\n"
           "Neden: yazarkasa kendi hatasını bildirdi ya da ekranı satışın sonraki adımından başka bir şey "
           "bekliyor; hangisi olduğunu velnoext_cause() söyler.\n"
           "Çözüm: velnoext_cause_text() metninin söylediğini yapın ya da yazarkasanın ekranında görüneni "
           "sonuçlandırın; sonra yeniden çağırın."}},
    Words{Refused,
          "refused",
          {"The register refused the command.\n"
           "Cause: it said no, or told an error of its own: velnoext_cause() tells as much as it gave away. "
           "When text is added to a slip: its encoding has not been set.\n"
           "Cure: do what velnoext_cause_text() says to it, see what the register's screen says, or set the "
           "encoding of the slip first; then call again.",
           "Yazarkasa komutu reddetti.\n"
           "Neden: yazarkasa hayır dedi ya da kendi hatasını bildirdi: bildirdiği kadarını velnoext_cause() "
           "söyler. Bilgi fişine yazı eklerken: karakter kodlaması belirlenmedi.\n"
           "Çözüm: velnoext_cause_text() metninin söylediğini yapın, yazarkasanın ekranına bakın ya da önce "
           "bilgi fişinin karakter kodlamasını belirleyin; sonra yeniden çağırın."}},
    Words{NoPaper,
          "no-paper",
          {"The printer has no paper.\n"
           "Cause: the roll is used up or its lid is open.\n"
           "Cure: put in a new roll, close the lid, and ask again.",
           "Yazıcıda kağıt yok.\n"
           "Neden: rulo bitti ya da kapağı açık.\n"
           "Çözüm: yeni rulo takın, kapağı kapatın ve yeniden sorun."}},
    Words{PairingFailed,
          "pairing-failed",
          {"The register and this computer could not be paired.\n"
           "Cause: a step of the pairing failed; velnoext_cause() tells which. It is the code that the "
           "pairing window shows for the same fault.\n"
           "Cure: do what velnoext_cause_text() says to it, then call velnoext_initialize() again.",
           "Yazarkasa ile bu bilgisayar eşlenemedi.\n"
           "Neden: eşlemenin bir adımı başarısız oldu; hangisi olduğunu velnoext_cause() söyler. Bu, eşleme "
           "penceresinin aynı hata için gösterdiği koddur.\n"
           "Çözüm: velnoext_cause_text() metninin söylediğini yapın, sonra velnoext_initialize() işlevini "
           "yeniden çağırın."}},
    Words{
        NotAuthentic,
        "not-authentic",
        {"The answer is not authentic, or nothing could be encrypted.\n"
         "Cause: both sides hold different keys, the answer was changed on its way, or the bytes to encrypt "
         "were none or too many; velnoext_cause() tells which.\n"
         "Cure: call velnoext_forget_device(), so that velnoext_initialize() pairs afresh; if it comes "
         "back, distrust the network between.",
         "Yanıt gerçek değil ya da hiçbir şey şifrelenemedi.\n"
         "Neden: iki tarafın anahtarları farklı, yanıt yolda değiştirildi ya da şifrelenecek bayt yok veya "
         "çok fazla; hangisi olduğunu velnoext_cause() söyler.\n"
         "Çözüm: velnoext_forget_device() çağırın; velnoext_initialize() böylece yeniden eşler. Yinelenirse "
         "aradaki ağa güvenmeyin."}},
    Words{
        MalformedReply,
        "malformed-reply",
        {"The frame of the answer is malformed or comes from another register.\n"
         "Cause: it was damaged on its way, or another register than the one named, or no register at all, "
         "answers at this port; velnoext_cause() tells what is wrong with it.\n"
         "Cure: compare the serial number with the register's label, then connect again.",
         "Yanıtın çerçevesi bozuk ya da başka bir yazarkasadan geliyor.\n"
         "Neden: çerçeve yolda bozuldu ya da bu bağlantı noktasında adı verilenden başka bir yazarkasa veya "
         "yazarkasa olmayan bir şey yanıt veriyor; neyin yanlış olduğunu velnoext_cause() söyler.\n"
         "Çözüm: sicil numarasını yazarkasanın etiketiyle karşılaştırın, sonra yeniden bağlanın."}},
    Words{
        NoApplicationHash,
        "no-application-hash",
        {"The program's own executable file cannot be read.\n"
         "Cause: it was moved, deleted or replaced while it runs, or may not be read by this user; its hash "
         "is part of the pairing.\n"
         "Cure: put the file back, make it readable, and start the program again.",
         "Programın kendi çalıştırılabilir dosyası okunamıyor.\n"
         "Neden: dosya program çalışırken taşındı, silindi ya da değiştirildi veya bu kullanıcının okuma "
         "izni "
         "yok; dosyanın özeti eşlemenin parçasıdır.\n"
         "Çözüm: dosyayı yerine koyun, okunabilir yapın ve programı yeniden başlatın."}},
};
static_assert(std::ranges::is_sorted(results, {}, &Words::number), "a code is found by halving");

constexpr Words unknownResult{-1,
                              "unknown",
                              {"This is no result code of this version of the library.\n"
                               "Cause: the number comes from elsewhere, or from a newer library.\n"
                               "Cure: look at where the number was read; codes are 0 to 13.",
                               "Bu, kitaplığın bu sürümünde bir sonuç kodu değil.\n"
                               "Neden: sayı başka bir yerden ya da daha yeni bir kitaplıktan geliyor.\n"
                               "Çözüm: sayının nereden okunduğuna bakın; kodlar 0 ile 13 arasındadır."}};

} // namespace

std::span<const Words> resultTexts()
{
    return results;
}

const Words &otherResult()
{
    return unknownResult;
}

} // namespace Velno::Ext
