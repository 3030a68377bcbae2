// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/texts.h"

#include <algorithm>
#include <array>

namespace Velno::Ext {

namespace {

constexpr int ofState(VelnoEcrState state)
{
    return VelnoCause_OfState + int(state);
}

constexpr std::array causes{
    Words{VelnoCause_None,
          "none",
          {"Nothing went wrong.\n"
           "Cause: the last call succeeded, or there was none yet.\n"
           "Cure: none is needed.",
           "Bir sorun çıkmadı.\n"
           "Neden: son çağrı başarılı oldu ya da henüz çağrı yapılmadı.\n"
           "Çözüm: gerekmiyor."}},

    // Listening for a register -----------------------------------------------------------------------------
    Words{VelnoCause_AddressInvalid,
          "address-invalid",
          {"The address to listen on is no IP address.\n"
           "Cause: it is a name, or mistyped.\n"
           "Cure: name an IP address of this computer, or \"0.0.0.0\" for all of them.",
           "Dinlenecek adres bir IP adresi değil.\n"
           "Neden: bir ad verildi ya da adres yanlış yazıldı.\n"
           "Çözüm: bu bilgisayarın bir IP adresini ya da hepsi için \"0.0.0.0\" verin."}},
    Words{VelnoCause_PortInUse,
          "port-in-use",
          {"The port is in use on this computer.\n"
           "Cause: another program listens there, or another copy of this one.\n"
           "Cure: end that program, or choose another port, here and on the register.",
           "Bağlantı noktası (port) bu bilgisayarda kullanımda.\n"
           "Neden: başka bir program ya da bu programın başka bir kopyası orada dinliyor.\n"
           "Çözüm: o programı kapatın ya da burada ve yazarkasada başka bir bağlantı noktası seçin."}},
    Words{
        VelnoCause_NobodyConnected,
        "nobody-connected",
        {"No register connected in time.\n"
         "Cause: it is off, set to another address or port, or a firewall is between.\n"
         "Cure: check the register's power, the address and port that are set on it, the cable, and this "
         "computer's firewall; then try again.",
         "Süre içinde hiçbir yazarkasa bağlanmadı.\n"
         "Neden: yazarkasa kapalı, başka bir adrese ya da bağlantı noktasına ayarlı veya arada bir güvenlik "
         "duvarı var.\n"
         "Çözüm: yazarkasanın açık olduğunu, ayarlı adresini ve bağlantı noktasını, kabloyu ve bu "
         "bilgisayarın güvenlik duvarını denetleyin; sonra yeniden deneyin."}},
    Words{VelnoCause_CannotListen,
          "cannot-listen",
          {"This computer could not listen for the register.\n"
           "Cause: the address is not one of this computer's, or the port needs privileges, as those below "
           "1024 do.\n"
           "Cure: name an address of this computer and a port from 1024 on.",
           "Bu bilgisayar yazarkasayı dinleyemedi.\n"
           "Neden: adres bu bilgisayarın değil ya da bağlantı noktası, 1024'ün altındakiler gibi, yetki "
           "gerektiriyor.\n"
           "Çözüm: bu bilgisayarın bir adresini ve 1024 ya da üstünde bir bağlantı noktası verin."}},

    // Sending ----------------------------------------------------------------------------------------------
    Words{VelnoCause_ClosedBeforeSending,
          "closed-before-sending",
          {"The connection was closed before anything could be sent.\n"
           "Cause: the register was switched off, or it ended the connection, as one that has lost its keys "
           "does.\n"
           "Cure: connect again; if it happens at once each time, let the register pair afresh.",
           "Bağlantı, bir şey gönderilemeden kapandı.\n"
           "Neden: yazarkasa kapandı ya da, anahtarlarını yitiren bir yazarkasanın yaptığı gibi, bağlantıyı "
           "kendisi kesti.\n"
           "Çözüm: yeniden bağlanın; her seferinde hemen oluyorsa yazarkasayı yeniden eşleyin."}},
    Words{VelnoCause_WriteRefused,
          "write-refused",
          {"The system took nothing to send.\n"
           "Cause: the connection broke while this was sent.\n"
           "Cure: check the network, and connect again.",
           "Sistem gönderilecek veriyi almadı.\n"
           "Neden: bağlantı gönderme sırasında koptu.\n"
           "Çözüm: ağı denetleyin ve yeniden bağlanın."}},
    Words{VelnoCause_NotSentInTime,
          "not-sent-in-time",
          {"What was to be sent did not leave in time.\n"
           "Cause: the register takes no bytes, or the network is down or congested.\n"
           "Cure: check cable and network, restart the register if it hangs, and connect again.",
           "Gönderilecek veri süre içinde yola çıkmadı.\n"
           "Neden: yazarkasa veri almıyor ya da ağ kesik veya tıkalı.\n"
           "Çözüm: kabloyu ve ağı denetleyin, yazarkasa takılıysa yeniden başlatın ve yeniden bağlanın."}},

    // Waiting for an answer --------------------------------------------------------------------------------
    Words{VelnoCause_EmptyFrame,
          "empty-frame",
          {"A frame of no length came.\n"
           "Cause: something else than a register answers.\n"
           "Cure: check which device connects to this address and port.",
           "Uzunluğu sıfır olan bir çerçeve geldi.\n"
           "Neden: yanıt veren bir yazarkasa değil.\n"
           "Çözüm: bu adrese ve bağlantı noktasına hangi cihazın bağlandığını denetleyin."}},
    Words{VelnoCause_ClosedWhileWaiting,
          "closed-while-waiting",
          {"The connection was closed while an answer was awaited.\n"
           "Cause: the register ended it, because it refused the pairing or holds other keys, or it was "
           "switched off; the command may have been carried out.\n"
           "Cure: see what the register shows, compare its serial number with the one named here, connect "
           "again, and ask what has been done; if every command ends so, let the register pair afresh.",
           "Yanıt beklenirken bağlantı kapandı.\n"
           "Neden: yazarkasa eşlemeyi reddettiği ya da anahtarları farklı olduğu için bağlantıyı kesti veya "
           "yazarkasa kapandı; komut yapılmış olabilir.\n"
           "Çözüm: yazarkasanın ekranına bakın, sicil numarasını burada verilenle karşılaştırın, yeniden "
           "bağlanın ve neyin yapıldığını sorun; her komut böyle bitiyorsa yazarkasayı yeniden eşleyin."}},
    Words{VelnoCause_SilentRegister,
          "silent-register",
          {"The register was silent for too long.\n"
           "Cause: its answer, or the rest of one that had begun, did not come within the time-out.\n"
           "Cure: check the network, connect again, and ask the register what has been done; a pairing is "
           "started anew on the register.",
           "Yazarkasa çok uzun süre sessiz kaldı.\n"
           "Neden: yanıtı ya da başlamış bir yanıtın geri kalanı süre içinde gelmedi.\n"
           "Çözüm: ağı denetleyin, yeniden bağlanın ve yazarkasaya neyin yapıldığını sorun; eşleme ise "
           "yazarkasada yeniden başlatılır."}},

    // What came is no frame of this register ---------------------------------------------------------------
    Words{VelnoCause_FrameLength,
          "frame-length",
          {"The frame's length is wrong.\n"
           "Cause: it announces more than is allowed, or not what came: something else than a register "
           "answers, or bytes were lost.\n"
           "Cure: check which device connects to this address and port, then try again.",
           "Çerçevenin uzunluğu yanlış.\n"
           "Neden: izin verilenden fazlasını ya da gelenden başkasını bildiriyor: yanıt veren bir yazarkasa "
           "değil veya baytlar yitirildi.\n"
           "Çözüm: bu adrese ve bağlantı noktasına hangi cihazın bağlandığını denetleyin, sonra yeniden "
           "deneyin."}},
    Words{VelnoCause_FrameCrc,
          "frame-crc",
          {"The frame's checksum is wrong.\n"
           "Cause: it was damaged on its way.\n"
           "Cure: check cable and network, then try again.",
           "Çerçevenin sağlama toplamı (CRC) yanlış.\n"
           "Neden: çerçeve yolda bozuldu.\n"
           "Çözüm: kabloyu ve ağı denetleyin, sonra yeniden deneyin."}},
    Words{VelnoCause_FrameSerial,
          "frame-serial",
          {"The register answers under another serial number.\n"
           "Cause: another register than the one named connects to this port.\n"
           "Cure: compare the serial number with the register's label.",
           "Yazarkasa başka bir sicil numarasıyla yanıt veriyor.\n"
           "Neden: bu bağlantı noktasına adı verilenden başka bir yazarkasa bağlanıyor.\n"
           "Çözüm: sicil numarasını yazarkasanın etiketiyle karşılaştırın."}},
    Words{VelnoCause_FrameMessage,
          "frame-message",
          {"The frame holds no message.\n"
           "Cause: the register does not speak this version of the protocol.\n"
           "Cure: compare the version of the register's software with what this one supports.",
           "Çerçevede ileti yok.\n"
           "Neden: yazarkasa iletişim kuralının bu sürümünü konuşmuyor.\n"
           "Çözüm: yazarkasa yazılımının sürümünü bunun desteklediğiyle karşılaştırın."}},

    // Pairing ----------------------------------------------------------------------------------------------
    Words{
        VelnoCause_PairingRefused,
        "pairing-refused",
        {"The register refused the pairing.\n"
         "Cause: it answered with another result code than \"00\": 01 it has no key, 02 its keys differ, 03 "
         "it expects another application.\n"
         "Cure: see what the register shows, and use the application file that it was told to expect.",
         "Yazarkasa eşlemeyi reddetti.\n"
         "Neden: \"00\" dışında bir sonuç kodu verdi: 01 anahtarı yok, 02 anahtarları farklı, 03 başka bir "
         "uygulama bekliyor.\n"
         "Çözüm: yazarkasanın ekranına bakın ve yazarkasaya tanıtılan uygulama dosyasını kullanın."}},
    Words{
        VelnoCause_CertificateNotTrusted,
        "certificate-not-trusted",
        {"The register's certificate is not trusted.\n"
         "Cause: it is missing, expired or too weak, made for another purpose, or of an authority that this "
         "build does not trust.\n"
         "Cure: set this computer's clock; see which authority this build trusts (--version tells).",
         "Yazarkasanın sertifikasına güvenilmiyor.\n"
         "Neden: sertifika eksik, süresi dolmuş, çok zayıf, başka bir amaç için verilmiş ya da bu sürümün "
         "güvenmediği bir makamın.\n"
         "Çözüm: bu bilgisayarın saatini ayarlayın; bu sürümün hangi makama güvendiğine bakın (--version "
         "gösterir)."}},
    Words{
        VelnoCause_SignatureInvalid,
        "signature-invalid",
        {"The register's signature is wrong, or its key exchange is not safe.\n"
         "Cause: somebody may be taking the register's part; or the register brings a Diffie-Hellman group "
         "that this build does not know.\n"
         "Cure: do not use this register until it is known why; a group of its own must be checked and "
         "compiled in by whoever builds this software (build setting VELNO_DH_GROUPS).",
         "Yazarkasanın imzası yanlış ya da anahtar değişimi güvenli değil.\n"
         "Neden: birisi yazarkasanın yerine geçiyor olabilir ya da yazarkasa bu sürümün tanımadığı bir "
         "Diffie-Hellman grubu kullanıyor.\n"
         "Çözüm: nedeni bilinene dek bu yazarkasayı kullanmayın; yazarkasanın kendi grubu, yazılımı derleyen "
         "tarafından denetlenip eklenmelidir (derleme ayarı VELNO_DH_GROUPS)."}},

    // The way to the register ------------------------------------------------------------------------------
    Words{
        VelnoCause_RelayNotAnswering,
        "relay-not-answering",
        {"The relay does not accept connections.\n"
         "Cause: it is down, or a firewall is between; it refused, or was silent for 2 s.\n"
         "Cure: ask whoever runs the relay, and check this computer's way to it.",
         "Aktarma sunucusu bağlantı kabul etmiyor.\n"
         "Neden: sunucu kapalı ya da arada bir güvenlik duvarı var; bağlantıyı reddetti veya 2 saniye yanıt "
         "vermedi.\n"
         "Çözüm: sunucuyu işletene sorun ve bu bilgisayardan sunucuya giden yolu denetleyin."}},
    Words{VelnoCause_RelayUnreachable,
          "relay-unreachable",
          {"There is no way from this computer to the relay.\n"
           "Cause: it has no network or no route to the relay's address, or this process may open no further "
           "connection.\n"
           "Cure: check this computer's network; the relay's address is a setting of the build.",
           "Bu bilgisayardan aktarma sunucusuna yol yok.\n"
           "Neden: bilgisayarın ağı ya da sunucunun adresine giden bir yolu yok veya bu işlem yeni bağlantı "
           "açamıyor.\n"
           "Çözüm: bu bilgisayarın ağını denetleyin; sunucunun adresi bir derleme ayarıdır."}},
    Words{VelnoCause_RelayUnknownRegister,
          "relay-unknown-register",
          {"The relay does not know the register.\n"
           "Cause: it closed the connection when the serial number was named: the register does not wait "
           "there, or is in use by somebody else.\n"
           "Cure: compare the serial number with the register's label, and see that the register is on and "
           "set to this relay.",
           "Aktarma sunucusu yazarkasayı tanımıyor.\n"
           "Neden: sicil numarası söylenince bağlantıyı kapattı: yazarkasa orada beklemiyor ya da başkası "
           "tarafından kullanılıyor.\n"
           "Çözüm: sicil numarasını yazarkasanın etiketiyle karşılaştırın; yazarkasanın açık ve bu sunucuya "
           "ayarlı olduğuna bakın."}},
    Words{VelnoCause_RelaySilent,
          "relay-silent",
          {"The relay did not answer in time.\n"
           "Cause: it accepted the connection but was silent for 5 s after the serial number.\n"
           "Cure: try again; if it stays so, ask whoever runs the relay.",
           "Aktarma sunucusu süre içinde yanıt vermedi.\n"
           "Neden: bağlantıyı kabul etti ama sicil numarasından sonra 5 saniye sessiz kaldı.\n"
           "Çözüm: yeniden deneyin; sürerse sunucuyu işletene sorun."}},
    Words{VelnoCause_RelayWrongAnswer,
          "relay-wrong-answer",
          {"The relay's answer is not the serial number that it was told.\n"
           "Cause: something else than a relay listens there.\n"
           "Cure: check the relay's address, which is a setting of the build.",
           "Aktarma sunucusunun yanıtı kendisine söylenen sicil numarası değil.\n"
           "Neden: orada dinleyen bir aktarma sunucusu değil.\n"
           "Çözüm: bir derleme ayarı olan sunucu adresini denetleyin."}},
    Words{VelnoCause_HandOverFailed,
          "hand-over-failed",
          {"The connection was gone before it could be used.\n"
           "Cause: the other side left right after it had connected.\n"
           "Cure: connect again; the register is then paired afresh.",
           "Bağlantı kullanılamadan yok oldu.\n"
           "Neden: karşı taraf bağlanır bağlanmaz ayrıldı.\n"
           "Çözüm: yeniden bağlanın; yazarkasa o zaman yeniden eşlenir."}},

    // The call itself --------------------------------------------------------------------------------------
    Words{VelnoCause_Interrupted,
          "interrupted",
          {"The call was interrupted.\n"
           "Cause: velnoext_interrupt() ended its wait; the command may have been carried out.\n"
           "Cure: connect again, and ask the register what has been done.",
           "Çağrı yarıda kesildi.\n"
           "Neden: velnoext_interrupt() beklemeyi bitirdi; komut yapılmış olabilir.\n"
           "Çözüm: yeniden bağlanın ve yazarkasaya neyin yapıldığını sorun."}},
    Words{VelnoCause_AnswerLimitPassed,
          "answer-limit-passed",
          {"The answer took longer than the application allows.\n"
           "Cause: the limit of velnoext_set_answer_limit() passed; the command may have been carried out.\n"
           "Cure: see whether the register waits for its cashier, connect again, and ask what has been done; "
           "raise the limit if it is too low.",
           "Yanıt, uygulamanın izin verdiğinden uzun sürdü.\n"
           "Neden: velnoext_set_answer_limit() ile konan süre doldu; komut yapılmış olabilir.\n"
           "Çözüm: yazarkasa kasiyeri bekliyor mu bakın, yeniden bağlanın ve neyin yapıldığını sorun; süre "
           "çok kısaysa uzatın."}},
    Words{
        VelnoCause_NotInitialised,
        "not-initialised",
        {"The library is not initialised.\n"
         "Cause: velnoext_initialize() has not succeeded yet, all connections were closed, or the process's "
         "Qt application object has ended.\n"
         "Cure: call velnoext_initialize() first.",
         "Kitaplık başlatılmadı.\n"
         "Neden: velnoext_initialize() henüz başarılı olmadı, bütün bağlantılar kapatıldı ya da işlemin Qt "
         "uygulama nesnesi sona erdi.\n"
         "Çözüm: önce velnoext_initialize() çağırın."}},
    Words{VelnoCause_NoActiveDevice,
          "no-active-device",
          {"No register is active.\n"
           "Cause: the active one was closed, and no other was chosen.\n"
           "Cure: call velnoext_set_active_device() or velnoext_initialize().",
           "Etkin bir yazarkasa yok.\n"
           "Neden: etkin olan kapatıldı ve başka biri seçilmedi.\n"
           "Çözüm: velnoext_set_active_device() ya da velnoext_initialize() çağırın."}},
    Words{VelnoCause_NotConnected,
          "not-connected",
          {"The register is not connected.\n"
           "Cause: it was never connected, or its connection was closed.\n"
           "Cure: call velnoext_initialize() with its serial number.",
           "Yazarkasa bağlı değil.\n"
           "Neden: hiç bağlanmadı ya da bağlantısı kapatıldı.\n"
           "Çözüm: sicil numarasıyla velnoext_initialize() çağırın."}},
    Words{VelnoCause_KeysAbsent,
          "keys-absent",
          {"There are no keys for the register.\n"
           "Cause: it was never paired in this process, or its keys were forgotten.\n"
           "Cure: call velnoext_initialize(), which pairs.",
           "Yazarkasa için anahtar yok.\n"
           "Neden: bu işlemde hiç eşlenmedi ya da anahtarları unutuldu.\n"
           "Çözüm: velnoext_initialize() çağırın; eşleme onunla yapılır."}},
    Words{VelnoCause_RawNotAllowed,
          "raw-not-allowed",
          {"This application may not use the raw pass-through.\n"
           "Cause: it is for the applications 999999 and 14242 alone.\n"
           "Cure: use the functions that have a name for what they do.",
           "Bu uygulama ham veri aktarımını kullanamaz.\n"
           "Neden: ham veri aktarımı yalnızca 999999 ve 14242 numaralı uygulamalar içindir.\n"
           "Çözüm: yaptığı işin adını taşıyan işlevleri kullanın."}},
    Words{VelnoCause_NoThread,
          "no-thread",
          {"The library could not start its thread.\n"
           "Cause: the system gives this process no further thread or no memory for one.\n"
           "Cure: raise the limits of this process, or end what uses them up.",
           "Kitaplık iş parçacığını başlatamadı.\n"
           "Neden: sistem bu işleme yeni bir iş parçacığı ya da onun için bellek vermiyor.\n"
           "Çözüm: işlemin sınırlarını yükseltin ya da onları tüketeni sonlandırın."}},
    Words{VelnoCause_NoEncoding,
          "no-encoding",
          {"The slip has no encoding yet.\n"
           "Cause: text was added before velnoext_printer_set_encoding(), or behind velnoext_print_slip(), "
           "which begins a new slip.\n"
           "Cure: set the encoding of each slip first.",
           "Bilgi fişinin karakter kodlaması henüz belirlenmedi.\n"
           "Neden: yazı, velnoext_printer_set_encoding() çağrılmadan ya da yeni bir bilgi fişi başlatan "
           "velnoext_print_slip() sonrasında eklendi.\n"
           "Çözüm: her bilgi fişinin önce karakter kodlamasını belirleyin."}},
    Words{VelnoCause_NullArgument,
          "null-argument",
          {"A pointer that the function needs is NULL.\n"
           "Cause: the application passed NULL; velnoext_error_detail() names the argument.\n"
           "Cure: pass a pointer to memory that holds the value or receives it.",
           "İşlevin gerek duyduğu bir işaretçi NULL.\n"
           "Neden: uygulama NULL verdi; hangi bağımsız değişken olduğunu velnoext_error_detail() söyler.\n"
           "Çözüm: değeri tutan ya da alacak olan belleğin işaretçisini verin."}},
    Words{VelnoCause_BadArgument,
          "bad-argument",
          {"A value is outside what the function takes.\n"
           "Cause: the application passed it; velnoext_error_detail() names the argument.\n"
           "Cure: correct the value and call again.",
           "Bir değer işlevin kabul ettiği sınırların dışında.\n"
           "Neden: değeri uygulama verdi; hangi bağımsız değişken olduğunu velnoext_error_detail() söyler.\n"
           "Çözüm: değeri düzeltin ve yeniden çağırın."}},
    Words{VelnoCause_RoomTooSmall,
          "room-too-small",
          {"The room for the result is too small.\n"
           "Cause: there is more to write than the application said that it has room for.\n"
           "Cure: make the room larger, tell its size, and call again.",
           "Sonuç için ayrılan yer yetersiz.\n"
           "Neden: yazılacak olan, uygulamanın bildirdiği yerden fazla.\n"
           "Çözüm: yeri büyütün, boyutunu bildirin ve yeniden çağırın."}},
    Words{VelnoCause_NegativeLength,
          "negative-length",
          {"A length is negative.\n"
           "Cause: the application passed it, perhaps as the result of a calculation that failed.\n"
           "Cure: pass the number of bytes.",
           "Bir uzunluk eksi.\n"
           "Neden: uygulama öyle verdi; belki başarısız bir hesabın sonucudur.\n"
           "Çözüm: bayt sayısını verin."}},
    Words{VelnoCause_ProgramUnreadable,
          "program-unreadable",
          {"The program's own executable file cannot be read.\n"
           "Cause: it was moved, deleted or replaced while it runs, or may not be read by this user.\n"
           "Cure: put the file back, make it readable, and start the program again.",
           "Programın kendi çalıştırılabilir dosyası okunamıyor.\n"
           "Neden: dosya program çalışırken taşındı, silindi ya da değiştirildi veya bu kullanıcının okuma "
           "izni "
           "yok.\n"
           "Çözüm: dosyayı yerine koyun, okunabilir yapın ve programı yeniden başlatın."}},
    Words{VelnoCause_NotEncrypted,
          "not-encrypted",
          {"Nothing could be encrypted.\n"
           "Cause: the bytes to send were none, or more than a frame can hold.\n"
           "Cure: send 1 to 65,471 bytes; print a long slip as several.",
           "Hiçbir şey şifrelenemedi.\n"
           "Neden: gönderilecek bayt yok ya da bir çerçevenin alabileceğinden fazla.\n"
           "Çözüm: 1 ile 65.471 arası bayt gönderin; uzun bir bilgi fişini bölerek yazdırın."}},

    // The answer -------------------------------------------------------------------------------------------
    Words{VelnoCause_AnswerTooShort,
          "answer-too-short",
          {"The answer is shorter than the command promises.\n"
           "Cause: the register's software speaks another version.\n"
           "Cure: compare the versions of the register's software and of this library; ask the register what "
           "has been done.",
           "Yanıt, komutun vaat ettiğinden kısa.\n"
           "Neden: yazarkasanın yazılımı başka bir sürümü konuşuyor.\n"
           "Çözüm: yazarkasa yazılımı ile bu kitaplığın sürümlerini karşılaştırın; yazarkasaya neyin "
           "yapıldığını sorun."}},
    Words{VelnoCause_SectionNameTooLong,
          "section-name-too-long",
          {"The section's name is longer than there is room for.\n"
           "Cause: the register answered with more than 52 bytes.\n"
           "Cure: shorten the section's name on the register.",
           "Kısmın adı ayrılan yerden uzun.\n"
           "Neden: yazarkasa 52 bayttan uzun bir ad verdi.\n"
           "Çözüm: kısmın adını yazarkasada kısaltın."}},
    Words{VelnoCause_MacWrong,
          "mac-wrong",
          {"The answer's authentication code is wrong.\n"
           "Cause: the register holds other keys, or the answer was changed on its way.\n"
           "Cure: let the register pair afresh; if it comes back, distrust the network between.",
           "Yanıtın doğrulama kodu (MAC) yanlış.\n"
           "Neden: yazarkasanın anahtarları farklı ya da yanıt yolda değiştirildi.\n"
           "Çözüm: yazarkasayı yeniden eşleyin; yinelenirse aradaki ağa güvenmeyin."}},
    Words{VelnoCause_DecryptedToNothing,
          "decrypted-to-nothing",
          {"The answer's authentication code is right, but it decrypts to nothing.\n"
           "Cause: the two sides share one of their keys and not the other.\n"
           "Cure: let the register pair afresh.",
           "Yanıtın doğrulama kodu doğru, ama şifresi çözülünce bir şey çıkmıyor.\n"
           "Neden: iki tarafın anahtarlarından biri aynı, öteki farklı.\n"
           "Çözüm: yazarkasayı yeniden eşleyin."}},
    Words{VelnoCause_ElementsWrong,
          "elements-wrong",
          {"The answer lacks an element, or holds one that is unknown.\n"
           "Cause: it is no encrypted answer with its authentication code and nothing else.\n"
           "Cure: compare the versions of the register's software and of this library.",
           "Yanıtta bir öğe eksik ya da bilinmeyen bir öğe var.\n"
           "Neden: yanıt, yalnızca şifreli veri ve doğrulama kodundan oluşmuyor.\n"
           "Çözüm: yazarkasa yazılımı ile bu kitaplığın sürümlerini karşılaştırın."}},
    Words{VelnoCause_RequestReflected,
          "request-reflected",
          {"The answer equals the request.\n"
           "Cause: no register answered: somebody or something between sends back what it gets.\n"
           "Cure: distrust the network between until it is known what does this.",
           "Yanıt, gönderilen istekle aynı.\n"
           "Neden: yanıtı yazarkasa vermedi: arada biri ya da bir şey geleni geri gönderiyor.\n"
           "Çözüm: bunu neyin yaptığı bilinene dek aradaki ağa güvenmeyin."}},
    Words{VelnoCause_AnswerTooLong,
          "answer-too-long",
          {"The answer announces more bytes than any answer has.\n"
           "Cause: something else than a register answers, or bytes were lost.\n"
           "Cure: check which device connects to this address and port, and connect again.",
           "Yanıt, hiçbir yanıtta olmayacak kadar çok bayt bildiriyor.\n"
           "Neden: yanıt veren bir yazarkasa değil ya da baytlar yitirildi.\n"
           "Çözüm: bu adrese ve bağlantı noktasına hangi cihazın bağlandığını denetleyin ve yeniden "
           "bağlanın."}},
    Words{
        VelnoCause_EndlessBytes,
        "endless-bytes",
        {"The register never stops sending what nobody asked for.\n"
         "Cause: something else than a register is connected, or the register is out of order.\n"
         "Cure: check which device connects to this address and port; restart the register.",
         "Yazarkasa, sorulmadan veri göndermeyi hiç kesmiyor.\n"
         "Neden: bağlı olan bir yazarkasa değil ya da yazarkasa arızalı.\n"
         "Çözüm: bu adrese ve bağlantı noktasına hangi cihazın bağlandığını denetleyin; yazarkasayı yeniden "
         "başlatın."}},

    // The register's no ------------------------------------------------------------------------------------
    Words{
        VelnoCause_SaidNo,
        "said-no",
        {"The register said no and gave no reason.\n"
         "Cause: its rules do not allow the command now; only its screen may tell more.\n"
         "Cure: see what the register's screen says. Registers say no to a report or a slip while a sale is "
         "open or without paper, to a logout while a sale is open, to a receipt that is not closed, to an "
         "invoice for a sale that was not started with one.",
         "Yazarkasa hayır dedi ve neden belirtmedi.\n"
         "Neden: kuralları komuta şu anda izin vermiyor; ancak ekranı daha çoğunu söyleyebilir.\n"
         "Çözüm: yazarkasanın ekranına bakın. Yazarkasalar açık satış varken ya da kağıt yokken rapora ve "
         "bilgi fişine, açık satış varken oturum kapatmaya, kapanmamış bir fişe, faturalı başlatılmamış bir "
         "satışın faturasına hayır der."}},
    Words{VelnoCause_PrinterEmpty,
          "printer-empty",
          {"The printer has no paper.\n"
           "Cause: the roll is used up or its lid is open.\n"
           "Cure: put in a new roll, close the lid, and ask again.",
           "Yazıcıda kağıt yok.\n"
           "Neden: rulo bitti ya da kapağı açık.\n"
           "Çözüm: yeni rulo takın, kapağı kapatın ve yeniden sorun."}},
    Words{VelnoCause_DisplayEmpty,
          "display-empty",
          {"The register does not say what its display shows.\n"
           "Cause: it tells that a sale is open, and nothing behind it.\n"
           "Cure: see what the register's screen says, and read the state again.",
           "Yazarkasa ekranında ne olduğunu bildirmiyor.\n"
           "Neden: bir satışın açık olduğunu söylüyor, ardından bir şey söylemiyor.\n"
           "Çözüm: yazarkasanın ekranına bakın ve durumu yeniden okuyun."}},
    Words{VelnoCause_OtherNumber,
          "other-number",
          {"The register gave a reason by a number that has no cause of its own.\n"
           "Cause: its error, state or display number is negative or above 9999.\n"
           "Cure: see what the register's screen says.",
           "Yazarkasa, kendi nedeni bulunmayan bir sayı bildirdi.\n"
           "Neden: hata, durum ya da ekran numarası eksi veya 9999'dan büyük.\n"
           "Çözüm: yazarkasanın ekranına bakın."}},

    // 10000 + the register's own error, by the bits of the simulated register -------------------------------
    Words{VelnoCause_WrongKey,
          "register-wrong-key",
          {"The register was given a key that means nothing where it was pressed (its error 1).\n"
           "Cause: its display shows something else than the keys are for, or still the error of earlier "
           "keys.\n"
           "Cure: read the sale with velnoext_sale_state(), which takes an earlier error off the display, or "
           "finish or cancel what is open; then call again.",
           "Yazarkasaya, basıldığı yerde anlamı olmayan bir tuş gönderildi (hatası 1).\n"
           "Neden: ekranda tuşların ait olduğundan başka bir şey ya da hâlâ önceki tuşların hatası var.\n"
           "Çözüm: önceki hatayı ekrandan silen velnoext_sale_state() ile satışı okuyun ya da açık olanı "
           "bitirin veya iptal edin; sonra yeniden çağırın."}},
    Words{
        VelnoCause_WrongValue,
        "register-wrong-value",
        {"The register does not take a value (its error 2).\n"
         "Cause: a price, quantity, section, percentage, amount or type is outside its own limits; or a card "
         "payment exceeds what is left to pay.\n"
         "Cure: correct the value and call again.",
         "Yazarkasa bir değeri kabul etmiyor (hatası 2).\n"
         "Neden: fiyat, miktar, kısım, yüzde, tutar ya da tür kendi sınırlarının dışında veya kart ödemesi "
         "kalan tutardan fazla.\n"
         "Çözüm: değeri düzeltin ve yeniden çağırın."}},
    Words{
        VelnoCause_OverLimit,
        "register-over-limit",
        {"The sale would exceed a limit of the register (its error 4).\n"
         "Cause: its total would pass the sale limit, or it would hold more lines or payments than a receipt "
         "can.\n"
         "Cure: sell the rest on another receipt; velnoext_sale_limit() tells the highest total.",
         "Satış, yazarkasanın bir sınırını aşacak (hatası 4).\n"
         "Neden: toplam, satış sınırını ya da satır veya ödeme sayısı, bir fişin alabileceğini aşacak.\n"
         "Çözüm: kalanı başka bir fişte satın; en yüksek toplamı velnoext_sale_limit() söyler."}},
    Words{VelnoCause_PaymentBegun,
          "register-payment-begun",
          {"Something has been paid already (the register's error 8).\n"
           "Cause: after the first payment the items of a sale stay as they are.\n"
           "Cure: end the sale, or cancel it and begin again.",
           "Ödeme başlamış durumda (yazarkasanın hatası 8).\n"
           "Neden: ilk ödemeden sonra satışın kalemleri değiştirilemez.\n"
           "Çözüm: satışı bitirin ya da iptal edip yeniden başlayın."}},
    Words{VelnoCause_PaperOut,
          "register-paper-out",
          {"The register's printer has no paper (its error 16).\n"
           "Cause: the roll is used up or its lid is open.\n"
           "Cure: put in a new roll, close the lid, and call again.",
           "Yazarkasanın yazıcısında kağıt yok (hatası 16).\n"
           "Neden: rulo bitti ya da kapağı açık.\n"
           "Çözüm: yeni rulo takın, kapağı kapatın ve yeniden çağırın."}},
    Words{VelnoCause_NothingThere,
          "register-nothing-there",
          {"There is nothing to do this with (the register's error 32).\n"
           "Cause: no such item is on the receipt, nothing is on it at all, or no sale is open.\n"
           "Cure: read the sale's state, and correct the index or add items first.",
           "Bunun yapılacağı bir şey yok (yazarkasanın hatası 32).\n"
           "Neden: fişte böyle bir kalem yok, fiş boş ya da açık bir satış yok.\n"
           "Çözüm: satışın durumunu okuyun; sırayı düzeltin ya da önce kalem ekleyin."}},
    Words{VelnoCause_NoJournal,
          "register-no-journal",
          {"The register cannot write its journal (its error 64).\n"
           "Cause: its memory is full or damaged, or may not be written.\n"
           "Cure: have the register serviced; for a simulated one, check the journal's file and its disk.",
           "Yazarkasa elektronik günlüğünü (EKÜ) yazamıyor (hatası 64).\n"
           "Neden: belleği dolu ya da bozuk veya yazılamıyor.\n"
           "Çözüm: yazarkasayı servise gösterin; benzetim ise günlük dosyasını ve diskini denetleyin."}},

    // 20000 + the register's state, as the simulated register counts
    // -----------------------------------------
    Words{ofState(VelnoEcrState_Starting),
          "state-starting",
          {"The register is starting (state 0).\n"
           "Cause: it was switched on a moment ago.\n"
           "Cure: wait until it is ready, and call again.",
           "Yazarkasa açılıyor (durum 0).\n"
           "Neden: az önce çalıştırıldı.\n"
           "Çözüm: hazır olmasını bekleyin ve yeniden çağırın."}},
    Words{ofState(VelnoEcrState_Idle),
          "state-idle",
          {"No sale is open: the register is idle (state 1).\n"
           "Cause: a sale was not started, is over, or was cancelled; without paper none can be started.\n"
           "Cure: check the paper, and start a sale first.",
           "Açık satış yok: yazarkasa boşta (durum 1).\n"
           "Neden: satış başlatılmadı, bitti ya da iptal edildi; kağıt yokken başlatılamaz.\n"
           "Çözüm: kağıdı denetleyin ve önce bir satış başlatın."}},
    Words{ofState(VelnoEcrState_Locked),
          "state-locked",
          {"The register is locked (state 2).\n"
           "Cause: it waits for a cashier.\n"
           "Cure: have a cashier unlock it.",
           "Yazarkasa kilitli (durum 2).\n"
           "Neden: bir kasiyer bekliyor.\n"
           "Çözüm: bir kasiyer kilidi açsın."}},
    Words{ofState(VelnoEcrState_Menu),
          "state-menu",
          {"The register is in its menu (state 3).\n"
           "Cause: somebody uses it at the register itself.\n"
           "Cure: have the cashier leave the menu.",
           "Yazarkasa menüsünde (durum 3).\n"
           "Neden: birisi yazarkasayı kendi tuşlarıyla kullanıyor.\n"
           "Çözüm: kasiyer menüden çıksın."}},
    Words{ofState(VelnoEcrState_Paying),
          "state-paying",
          {"A payment is being made (state 4).\n"
           "Cause: the register waits for a card, a PIN or a bank.\n"
           "Cure: let the payment come to its end, and call again.",
           "Ödeme yapılıyor (durum 4).\n"
           "Neden: yazarkasa kartı, şifreyi ya da bankayı bekliyor.\n"
           "Çözüm: ödemenin bitmesini bekleyin ve yeniden çağırın."}},
    Words{ofState(VelnoEcrState_SaleOpen),
          "state-sale-open",
          {"A sale is open (state 5).\n"
           "Cause: it was not ended or cancelled before.\n"
           "Cure: end or cancel the open sale first.",
           "Açık bir satış var (durum 5).\n"
           "Neden: önceki satış bitirilmedi ya da iptal edilmedi.\n"
           "Çözüm: önce açık satışı bitirin ya da iptal edin."}},
    Words{ofState(VelnoEcrState_Reporting),
          "state-reporting",
          {"The register prints a report (state 6).\n"
           "Cause: an X or Z report is being made.\n"
           "Cure: wait until it is printed, and call again.",
           "Yazarkasa rapor yazdırıyor (durum 6).\n"
           "Neden: X ya da Z raporu alınıyor.\n"
           "Çözüm: raporun bitmesini bekleyin ve yeniden çağırın."}},
    Words{ofState(VelnoEcrState_IdleOtherScreen),
          "state-idle-other-screen",
          {"No sale is open: the register is idle and shows another screen (state 7).\n"
           "Cause: a sale was not started, is over, or was cancelled; without paper none can be started.\n"
           "Cure: check the paper, and start a sale first.",
           "Açık satış yok: yazarkasa boşta ve başka bir ekran gösteriyor (durum 7).\n"
           "Neden: satış başlatılmadı, bitti ya da iptal edildi; kağıt yokken başlatılamaz.\n"
           "Çözüm: kağıdı denetleyin ve önce bir satış başlatın."}},
    Words{ofState(VelnoEcrState_OutOfService),
          "state-out-of-service",
          {"The register is out of service (state 8).\n"
           "Cause: it is out of order, or blocked by its service.\n"
           "Cure: call the register's service.",
           "Yazarkasa hizmet dışı (durum 8).\n"
           "Neden: arızalı ya da servisi tarafından kapatılmış.\n"
           "Çözüm: yazarkasanın servisini arayın."}},

    // 30000 + what the display says, as the simulated register counts
    // ----------------------------------------
    Words{VelnoCause_DisplayBusy,
          "display-busy",
          {"The sale takes no input: an amount is typed, or a question is asked (display 2).\n"
           "Cause: somebody uses the register's own keys, or earlier keys were left half-way.\n"
           "Cure: have the cashier press C or answer the question, and call again.",
           "Satış giriş kabul etmiyor: bir tutar yazılıyor ya da bir soru soruluyor (ekran 2).\n"
           "Neden: birisi yazarkasanın kendi tuşlarını kullanıyor ya da önceki tuşlar yarıda kaldı.\n"
           "Çözüm: kasiyer C tuşuna bassın ya da soruyu yanıtlasın; sonra yeniden çağırın."}},
};
static_assert(std::ranges::is_sorted(causes, {}, &Words::number), "a cause is found by halving");

/** Numbers with something in common, of which not each has a row. */
struct Family
{
    int first;
    int last;
    Words words;
};

constexpr std::array families{
    Family{1000,
           1999,
           {-1,
            "listening-failed",
            {"Listening for the register failed.\n"
             "Cause: a fault of the transport that has no words of its own.\n"
             "Cure: check address and port, then try again.",
             "Yazarkasa dinlenemedi.\n"
             "Neden: aktarımın kendi metni olmayan bir hatası.\n"
             "Çözüm: adresi ve bağlantı noktasını denetleyin, sonra yeniden deneyin."}}},
    Family{2000,
           2999,
           {-1,
            "sending-failed",
            {"Sending to the register failed.\n"
             "Cause: a fault of the transport that has no words of its own.\n"
             "Cure: check the network, and connect again.",
             "Yazarkasaya gönderilemedi.\n"
             "Neden: aktarımın kendi metni olmayan bir hatası.\n"
             "Çözüm: ağı denetleyin ve yeniden bağlanın."}}},
    Family{3000,
           3999,
           {-1,
            "receiving-failed",
            {"Receiving from the register failed.\n"
             "Cause: a fault of the transport that has no words of its own.\n"
             "Cure: check the network, and connect again.",
             "Yazarkasadan veri alınamadı.\n"
             "Neden: aktarımın kendi metni olmayan bir hatası.\n"
             "Çözüm: ağı denetleyin ve yeniden bağlanın."}}},
    Family{4000,
           5999,
           {-1,
            "pairing-failed",
            {"The pairing failed.\n"
             "Cause: a fault that this version of the library does not name.\n"
             "Cure: start the pairing again, and see what the register shows.",
             "Eşleme başarısız oldu.\n"
             "Neden: kitaplığın bu sürümünün adını bilmediği bir hata.\n"
             "Çözüm: eşlemeyi yeniden başlatın ve yazarkasanın ekranına bakın."}}},
    Family{
        VelnoCause_OfError,
        VelnoCause_OfState - 1,
        {-1,
         "register-error",
         {"The register told an error of its own: this number less 10000.\n"
          "Cause: each make of register has its own numbers; its manual or its screen tells what it means.\n"
          "Cure: see what the register's screen says, settle it there, and call again.",
          "Yazarkasa kendi hatasını bildirdi: bu sayının 10000 eksiği.\n"
          "Neden: her marka yazarkasanın kendi numaraları vardır; anlamını el kitabı ya da ekranı söyler.\n"
          "Çözüm: yazarkasanın ekranına bakın, sorunu orada giderin ve yeniden çağırın."}}},
    Family{VelnoCause_OfState,
           VelnoCause_OfDisplay - 1,
           {-1,
            "register-state",
            {"The register is in a state that does not allow this: this number less 20000.\n"
             "Cause: each make of register has states of its own; its manual or its screen tells what it "
             "means.\n"
             "Cure: have the cashier bring the register back to its idle screen, and call again.",
             "Yazarkasanın durumu buna izin vermiyor: durum, bu sayının 20000 eksiğidir.\n"
             "Neden: her marka yazarkasanın kendi durumları vardır; anlamını el kitabı ya da ekranı söyler.\n"
             "Çözüm: kasiyer yazarkasayı boşta ekranına döndürsün; sonra yeniden çağırın."}}},
    Family{VelnoCause_OfDisplay,
           VelnoCause_OfDisplay + 9999,
           {-1,
            "register-display",
            {"The sale takes no input: the register's display shows this number less 30000.\n"
             "Cause: the display waits for something else than the next step of the sale.\n"
             "Cure: see what the register's screen says, settle it there, and call again.",
             "Satış giriş kabul etmiyor: yazarkasanın ekranı, bu sayının 30000 eksiğini gösteriyor.\n"
             "Neden: ekran satışın sonraki adımından başka bir şey bekliyor.\n"
             "Çözüm: yazarkasanın ekranına bakın, sorunu orada giderin ve yeniden çağırın."}}},
};

constexpr Words unknownCause{-1,
                             "unknown",
                             {"This is no cause of this version of the library.\n"
                              "Cause: the number comes from elsewhere, or from a newer library.\n"
                              "Cure: look at where the number was read.",
                              "Bu, kitaplığın bu sürümünde bir neden değil.\n"
                              "Neden: sayı başka bir yerden ya da daha yeni bir kitaplıktan geliyor.\n"
                              "Çözüm: sayının nereden okunduğuna bakın."}};

constexpr int knownErrors = 1 | 2 | 4 | 8 | 16 | 32 | 64;

/** The row of an error that is several bits of the simulated register at once: that of the first of them that
 *  is a failure by itself. Null for any other number. */
const Words *rowOfSeveralErrors(int cause)
{
    const int standing = VelnoCause_PaymentBegun - VelnoCause_OfError;
    const int error = cause - VelnoCause_OfError;
    if (error <= 0 || (error & ~knownErrors) != 0)
        return nullptr;
    const int failures = error & ~standing;
    const int first = failures == 0 ? standing : failures & -failures;
    return &*std::ranges::find(causes, VelnoCause_OfError + first, &Words::number);
}

} // namespace

std::span<const Words> causeTexts()
{
    return causes;
}

const Words &otherCause(int cause)
{
    if (cause >= VelnoCause_OfError && cause < VelnoCause_OfState) {
        if (const Words *const row = rowOfSeveralErrors(cause))
            return *row;
    }
    const auto holdsIt = [cause](const Family &family) {
        return cause >= family.first && cause <= family.last;
    };
    const auto family = std::ranges::find_if(families, holdsIt);
    return family != families.end() ? family->words : unknownCause;
}

} // namespace Velno::Ext
