<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="tr" sourcelanguage="en">
<context>
    <name>QCommandLineParser</name>
    <message>
        <source>Usage: %1</source>
        <translation>Kullanım: %1</translation>
    </message>
    <message>
        <source>[options]</source>
        <translation>[seçenekler]</translation>
    </message>
    <message>
        <source>Options:</source>
        <translation>Seçenekler:</translation>
    </message>
    <message>
        <source>Unknown option &apos;%1&apos;.</source>
        <translation>Bilinmeyen seçenek: &quot;%1&quot;.</translation>
    </message>
    <message>
        <source>Unknown options: %1.</source>
        <translation>Bilinmeyen seçenekler: %1.</translation>
    </message>
    <message>
        <source>Missing value after &apos;%1&apos;.</source>
        <translation>Değeri eksik: &quot;%1&quot;.</translation>
    </message>
    <message>
        <source>Unexpected value after &apos;%1&apos;.</source>
        <translation>Değer almaz: &quot;%1&quot;.</translation>
    </message>
</context>
<context>
    <name>QIODevice</name>
    <message>
        <source>Permission denied</source>
        <translation>izin yok</translation>
    </message>
    <message>
        <source>Too many open files</source>
        <translation>çok fazla dosya açık</translation>
    </message>
    <message>
        <source>No such file or directory</source>
        <translation>böyle bir dosya ya da klasör yok</translation>
    </message>
    <message>
        <source>No space left on device</source>
        <translation>diskte yer yok</translation>
    </message>
</context>
<context>
    <name>QNativeSocketEngine</name>
    <message>
        <source>Permission denied</source>
        <translation>izin yok</translation>
    </message>
    <message>
        <source>The address is not available</source>
        <translation>bu bilgisayarda böyle bir adres yok</translation>
    </message>
    <message>
        <source>The address is protected</source>
        <translation>bu bağlantı noktası yetki ister</translation>
    </message>
    <message>
        <source>The bound address is already in use</source>
        <translation>bu bağlantı noktası zaten kullanımda</translation>
    </message>
</context>
<context>
    <name>Spoken</name>
    <message>
        <source>%1 --help shows all options.</source>
        <translation>Bütün seçenekler: %1 --help</translation>
    </message>
    <message>
        <source>PORT, ADDR:PORT or [IPV6]:PORT with a port of 0 to 65535, or the path of a Unix socket: with a /, up to %1 bytes</source>
        <translation>PORT, ADDR:PORT ya da [IPV6]:PORT (bağlantı noktası 0 ile 65535 arası) ya da bir Unix soketinin yolu: içinde / olan, en çok %1 bayt</translation>
    </message>
    <message>
        <source>cannot listen on %1: %2</source>
        <translation>dinlenemiyor: %1: %2</translation>
    </message>
    <message>
        <source>%1: %2 to %3</source>
        <translation>%1: en az %2, en çok %3</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no fault; accepted are %2</source>
        <translation>&quot;%1&quot; diye bir arıza yok; kabul edilenler: %2</translation>
    </message>
    <message>
        <source>%1 takes no value</source>
        <translation>%1: değer almaz</translation>
    </message>
    <message>
        <source>%1 needs a value: %2</source>
        <translation>%1: bir değer gerekli: %2</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no value of %2; accepted is %3</source>
        <translation>&quot;%1&quot;: geçersiz değer (%2); kabul edilen: %3</translation>
    </message>
    <message>
        <source>says nothing to an application, joins it to nobody</source>
        <translation>uygulamaya hiçbir şey söylemez, kimseye bağlamaz</translation>
    </message>
    <message>
        <source>echoes a name with its last byte changed</source>
        <translation>adı son baytı değişmiş olarak yankılar</translation>
    </message>
    <message>
        <source>echoes 11 bytes of the 12</source>
        <translation>12 baytın 11&apos;ini yankılar</translation>
    </message>
    <message>
        <source>cuts both connections as soon as they are joined</source>
        <translation>birleşir birleşmez iki bağlantıyı da keser</translation>
    </message>
    <message>
        <source>cuts both connections after so many bytes between them</source>
        <translation>aradan bu kadar bayt geçince iki bağlantıyı da keser</translation>
    </message>
    <message>
        <source>This text.</source>
        <translation>Bu yazı.</translation>
    </message>
    <message>
        <source>Version and trust anchors.</source>
        <translation>Sürüm ve güvenilen makamlar.</translation>
    </message>
    <message>
        <source>Address to listen on; 127.0.0.1 without it.</source>
        <translation>Dinlenecek adres; verilmezse 127.0.0.1.</translation>
    </message>
    <message>
        <source>Ports for application 999999 and for all others; 50900,50902 without it.</source>
        <translation>999999 numaralı uygulama ve bütün ötekiler için bağlantı noktaları; verilmezse 50900,50902.</translation>
    </message>
    <message>
        <source>Port where registers wait; 50910 without it.</source>
        <translation>Yazarkasaların beklediği bağlantı noktası; verilmezse 50910.</translation>
    </message>
    <message>
        <source>Takes the lines of standard input there, too: a port of 127.0.0.1, ADDR:PORT or a path.</source>
        <translation>Standart girdinin satırlarını burada da dinler: 127.0.0.1 adresinin bir bağlantı noktası, ADDR:PORT ya da bir yol.</translation>
    </message>
    <message>
        <source>Events as JSON, one object a line.</source>
        <translation>Olaylar JSON olarak, her satırda bir nesne.</translation>
    </message>
    <message>
        <source>Do something wrong, see below. May be repeated.</source>
        <translation>Bir arıza çıkarır, aşağıya bakın. Yinelenebilir.</translation>
    </message>
    <message>
        <source>--%1 &quot;%2&quot;: accepted is %3</source>
        <translation>--%1 &quot;%2&quot;: kabul edilen: %3</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no option</source>
        <translation>&quot;%1&quot; bir seçenek değil</translation>
    </message>
    <message>
        <source>an address of this computer such as 127.0.0.1, 0.0.0.0 or ::1</source>
        <translation>bu bilgisayarın bir adresi; örneğin 127.0.0.1, 0.0.0.0 ya da ::1</translation>
    </message>
    <message>
        <source>two ports of 0 to 65535, such as 50900,50902; 0 is any free one</source>
        <translation>0 ile 65535 arası iki bağlantı noktası, örneğin 50900,50902; 0 boş olan herhangi biridir</translation>
    </message>
    <message>
        <source>a port of 0 to 65535; 0 is any free one</source>
        <translation>0 ile 65535 arası bir bağlantı noktası; 0 boş olan herhangi biridir</translation>
    </message>
    <message>
        <source>--app-ports and --register-port: accepted are three different ports</source>
        <translation>--app-ports ve --register-port: birbirinden farklı üç bağlantı noktası kabul edilir</translation>
    </message>
    <message>
        <source>Trust anchors: none; it passes on what others say and believes nobody.
</source>
        <translation>Güvenilen makam yok: başkalarının söylediğini aktarır, kimseye inanmaz.
</translation>
    </message>
    <message>
        <source>
Faults:
</source>
        <translation>
Arızalar:
</translation>
    </message>
    <message>
        <source>
On standard input: fault NAME[=VALUE], fault none, quit.
Exit status: 0 told to stop, 64 wrong usage, 69 a port cannot be had.
</source>
        <translation>
Standart girdide: fault NAME[=VALUE], fault none, quit.
Çıkış durumu: 0 dur dendi, 64 yanlış kullanım, 69 bir bağlantı noktası alınamıyor.
</translation>
    </message>
    <message>
        <source>Example: velno-relay --listen 127.0.0.1 --json
</source>
        <translation>Örnek: velno-relay --listen 127.0.0.1 --json
</translation>
    </message>
    <message>
        <source>A relay: registers wait at it, and applications that name one by its serial number are joined to it.</source>
        <translation>Bir aktarma sunucusu: yazarkasalar burada bekler, birinin sicil numarasını veren uygulama ona bağlanır.</translation>
    </message>
    <message>
        <source>Trust anchors (this build&apos;s own development authority):
</source>
        <translation>Güvenilen makamlar (bu derlemenin kendi geliştirme makamı):
</translation>
    </message>
    <message>
        <source>Trust anchors:
</source>
        <translation>Güvenilen makamlar:
</translation>
    </message>
    <message>
        <source>built for development, trusts the Velno Development authority only</source>
        <translation>geliştirme için derlenmiş; yalnızca Velno Development makamına güvenir</translation>
    </message>
    <message>
        <source>keys cannot be logged to %1: %2</source>
        <translation>anahtarlar dosyaya yazılamıyor: %1: %2</translation>
    </message>
    <message>
        <source>it is no regular file</source>
        <translation>olağan bir dosya değil</translation>
    </message>
    <message>
        <source>it is somebody else&apos;s</source>
        <translation>başkasının</translation>
    </message>
    <message>
        <source>others may open it; its mode must be 0600</source>
        <translation>başkaları açabiliyor; izinleri 0600 olmalı</translation>
    </message>
    <message>
        <source>the journal %1 cannot be used: %2</source>
        <translation>kayıt dosyası kullanılamıyor: %1: %2</translation>
    </message>
    <message>
        <source>it is damaged</source>
        <translation>bozulmuş</translation>
    </message>
    <message>
        <source>it is no journal of this program</source>
        <translation>bu programın kayıt dosyası değil</translation>
    </message>
    <message>
        <source>no fonts are installed; Debian&apos;s fonts-dejavu-core is enough</source>
        <translation>yazı tipi kurulu değil; Debian&apos;ın fonts-dejavu-core paketi yeter</translation>
    </message>
    <message>
        <source>the credentials folder must hold a readable %1; there is no %2</source>
        <translation>kimlik klasöründe okunabilen bir %1 olmalı; yok: %2</translation>
    </message>
    <message>
        <source>%1 holds no certificate; accepted is one in PEM form</source>
        <translation>%1: içinde sertifika yok; kabul edilen: PEM biçiminde bir sertifika</translation>
    </message>
    <message>
        <source>%1 holds no private key that can be read; accepted is one in PEM form, without a password</source>
        <translation>%1: içinde okunabilen bir özel anahtar yok; kabul edilen: PEM biçiminde, parolasız bir anahtar</translation>
    </message>
    <message>
        <source>%1 holds a key of the kind %2; accepted is RSA</source>
        <translation>%1: içindeki anahtarın türü %2; kabul edilen: RSA</translation>
    </message>
    <message>
        <source>%1 does not fit %2; accepted is the private key of that certificate</source>
        <translation>%1: uymadığı sertifika: %2; kabul edilen: o sertifikanın özel anahtarı</translation>
    </message>
    <message>
        <source>certificate of an authority that nobody trusts</source>
        <translation>kimsenin güvenmediği bir makamın sertifikası</translation>
    </message>
    <message>
        <source>expired.crt and expired.key of the credentials folder</source>
        <translation>kimlik klasöründeki expired.crt ve expired.key</translation>
    </message>
    <message>
        <source>leaves the certificate out</source>
        <translation>sertifikayı göndermez</translation>
    </message>
    <message>
        <source>one bit of the signature is wrong</source>
        <translation>imzanın bir biti yanlış</translation>
    </message>
    <message>
        <source>cannot read its private key: result code 01, no signature</source>
        <translation>özel anahtarını okuyamaz: sonuç kodu 01, imza yok</translation>
    </message>
    <message>
        <source>answers with this result code</source>
        <translation>bu sonuç koduyla yanıt verir</translation>
    </message>
    <message>
        <source>first N answers are of another kind</source>
        <translation>ilk N yanıt başka türden</translation>
    </message>
    <message>
        <source>first N answers are requests</source>
        <translation>ilk N yanıt birer istek</translation>
    </message>
    <message>
        <source>one bit of the CRC is wrong</source>
        <translation>CRC&apos;nin bir biti yanlış</translation>
    </message>
    <message>
        <source>announces one byte more than it sends, then closes</source>
        <translation>gönderdiğinden bir bayt fazlasını bildirir, sonra kapatır</translation>
    </message>
    <message>
        <source>answers under another serial number</source>
        <translation>başka bir sicil numarasıyla yanıt verir</translation>
    </message>
    <message>
        <source>fields without a message around them</source>
        <translation>alanlar bir iletinin içinde değil</translation>
    </message>
    <message>
        <source>announces a frame longer than 4096 bytes</source>
        <translation>4096 bayttan uzun bir çerçeve bildirir</translation>
    </message>
    <message>
        <source>N bytes per TCP segment</source>
        <translation>her TCP parçasında N bayt</translation>
    </message>
    <message>
        <source>waits before each answer</source>
        <translation>her yanıttan önce bekler</translation>
    </message>
    <message>
        <source>does not answer this, stays connected</source>
        <translation>buna yanıt vermez, bağlı kalır</translation>
    </message>
    <message>
        <source>closes instead of answering this</source>
        <translation>buna yanıt vermek yerine bağlantıyı kapatır</translation>
    </message>
    <message>
        <source>finds another key check value: result code 02</source>
        <translation>başka bir anahtar denetim değeri bulur: sonuç kodu 02</translation>
    </message>
    <message>
        <source>finds another application hash: result code 03</source>
        <translation>başka bir uygulama özeti bulur: sonuç kodu 03</translation>
    </message>
    <message>
        <source>offers a 1024-bit Diffie-Hellman group</source>
        <translation>1024 bitlik bir Diffie-Hellman grubu önerir</translation>
    </message>
    <message>
        <source>random bytes instead of an answer</source>
        <translation>yanıt yerine rastgele baytlar</translation>
    </message>
    <message>
        <source>one bit of the MAC is wrong</source>
        <translation>MAC&apos;in bir biti yanlış</translation>
    </message>
    <message>
        <source>leaves the MAC out</source>
        <translation>MAC&apos;i göndermez</translation>
    </message>
    <message>
        <source>one element too many behind command and MAC</source>
        <translation>komut ve MAC&apos;in arkasında fazladan bir öğe</translation>
    </message>
    <message>
        <source>the last byte of the answer is missing</source>
        <translation>yanıtın son baytı eksik</translation>
    </message>
    <message>
        <source>says no to this command</source>
        <translation>bu komuta hayır der</translation>
    </message>
    <message>
        <source>N keep-alives before each answer</source>
        <translation>her yanıttan önce N kez &quot;hâlâ buradayım&quot; iletisi</translation>
    </message>
    <message>
        <source>half an answer now, the other half 10 s later</source>
        <translation>yanıtın yarısı şimdi, öteki yarısı 10 sn sonra</translation>
    </message>
    <message>
        <source>half an answer, and no more</source>
        <translation>yanıtın yarısı, gerisi gelmez</translation>
    </message>
    <message>
        <source>announces an answer of 1 GiB</source>
        <translation>1 GiB&apos;lik bir yanıt bildirir</translation>
    </message>
    <message>
        <source>has lost its keys when a command comes</source>
        <translation>komut geldiğinde anahtarlarını yitirmiştir</translation>
    </message>
    <message>
        <source>answers that it is in this state</source>
        <translation>bu durumda olduğunu söyler</translation>
    </message>
    <message>
        <source>answers with this register error</source>
        <translation>bu yazarkasa hatasıyla yanıt verir</translation>
    </message>
    <message>
        <source>finds every sale over its limit</source>
        <translation>her satışı sınırının üstünde bulur</translation>
    </message>
    <message>
        <source>has paper for N prints</source>
        <translation>N baskılık kâğıdı vardır</translation>
    </message>
    <message>
        <source>does this, but the answer never comes</source>
        <translation>bunu yapar, ama yanıtı hiç gelmez</translation>
    </message>
    <message>
        <source>does this, then its power is cut</source>
        <translation>bunu yapar, sonra elektriği kesilir</translation>
    </message>
    <message>
        <source>NN[@STEP]: two digits, STEP 1 to 3</source>
        <translation>NN[@STEP]: iki hane, STEP 1 ile 3 arası</translation>
    </message>
    <message>
        <source>WHEN: a step, 1 to 3, or COMMAND or COMMAND*N: %1</source>
        <translation>WHEN: 1 ile 3 arası bir adım ya da COMMAND ya da COMMAND*N: %1</translation>
    </message>
    <message>
        <source>COMMAND or COMMAND*N: %1</source>
        <translation>COMMAND ya da COMMAND*N: %1</translation>
    </message>
    <message>
        <source>The number of the current Z report.</source>
        <translation>Geçerli Z raporunun numarası.</translation>
    </message>
    <message>
        <source>When the last Z report was made, since 1970.</source>
        <translation>Son Z raporunun alındığı an, 1970&apos;ten beri saniye.</translation>
    </message>
    <message>
        <source>Its clock stands at this time, since 1970.</source>
        <translation>Saati bu anda durur, 1970&apos;ten beri saniye.</translation>
    </message>
    <message>
        <source>The highest amount of one sale; 0 for any.</source>
        <translation>Bir satışın en yüksek tutarı, kuruş; 0: sınırsız.</translation>
    </message>
    <message>
        <source>The state it is in; 1 is idle.</source>
        <translation>İçinde olduğu durum; 1 boşta demektir.</translation>
    </message>
    <message>
        <source>%1 %2 cannot be now: without paper no sale is opened, while one is open or for a report that has been made the Z number stays, and the journal must be writable</source>
        <translation>%1 %2 şu anda olamaz: kâğıtsız satış açılmaz, açık satış varken ya da alınmış bir rapor için Z numarası değişmez, kayıt dosyası da yazılabilir olmalı</translation>
    </message>
    <message>
        <source>real, or how many times as fast: %1 to %2</source>
        <translation>real ya da kaç kat hızlı olduğu: en az %1, en çok %2</translation>
    </message>
    <message>
        <source>what draws cannot be loaded: %1</source>
        <translation>çizen modül yüklenemiyor: %1</translation>
    </message>
    <message>
        <source>Serial number: 12 characters, beginning with UB or VELNO. Required.</source>
        <translation>Sicil numarası: UB ya da VELNO ile başlayan 12 karakter. Gerekli.</translation>
    </message>
    <message>
        <source>Where the other side listens: 127.0.0.1:4100, [::1]:4100, till:4100.</source>
        <translation>Karşı tarafın dinlediği yer: 127.0.0.1:4100, [::1]:4100, till:4100.</translation>
    </message>
    <message>
        <source>Where a relay keeps waiting registers; instead of --connect.</source>
        <translation>Aktarma sunucusunun yazarkasaları beklettiği yer; --connect yerine.</translation>
    </message>
    <message>
        <source>Folder with client.crt and client.key; without it those of the development authority.</source>
        <translation>client.crt ve client.key dosyalarının klasörü; verilmezse geliştirme makamınınkiler.</translation>
    </message>
    <message>
        <source>Folder with client.crt and client.key. Required.</source>
        <translation>client.crt ve client.key dosyalarının klasörü. Gerekli.</translation>
    </message>
    <message>
        <source>SHA-256 of the one application to accept, 64 hexadecimal digits.</source>
        <translation>Kabul edilecek tek uygulamanın SHA-256 özeti, 64 onaltılık hane.</translation>
    </message>
    <message>
        <source>The printer has no paper.</source>
        <translation>Yazıcıda kâğıt yok.</translation>
    </message>
    <message>
        <source>Keeps receipts and reports in this file; without it in memory.</source>
        <translation>Fişleri ve raporları bu dosyada saklar; verilmezse bellekte.</translation>
    </message>
    <message>
        <source>Appends the keys of each pairing to this file, for a look into the wire.</source>
        <translation>Her eşlemenin anahtarlarını bu dosyanın sonuna yazar; hattan geçeni görmek için.</translation>
    </message>
    <message>
        <source>Writes what is printed to this folder, a file for each print.</source>
        <translation>Yazdırılanı bu klasöre koyar, her baskı bir dosya.</translation>
    </message>
    <message>
        <source>What these files are: text, png, or text,png.</source>
        <translation>Bu dosyaların türü: text, png ya da text,png.</translation>
    </message>
    <message>
        <source>Shows what is printed on standard error.</source>
        <translation>Yazdırılanı standart hatada gösterir.</translation>
    </message>
    <message>
        <source>End after N closed receipts.</source>
        <translation>N fiş kapandıktan sonra biter.</translation>
    </message>
    <message>
        <source>Takes as long as a real register and cashier (real), or FACTOR times as fast.</source>
        <translation>Gerçek bir yazarkasa ve kasiyer kadar (real) ya da FACTOR kat hızlı çalışır.</translation>
    </message>
    <message>
        <source>Plays N registers: serial numbers and ports count up from those given.</source>
        <translation>N yazarkasa olur: sicil ve bağlantı noktası numaraları verilenlerden başlayarak artar.</translation>
    </message>
    <message>
        <source>End after one pairing: 0 paired, 1 not.</source>
        <translation>Bir eşlemeden sonra biter: 0 eşlendi, 1 eşlenmedi.</translation>
    </message>
    <message>
        <source>ADDR:PORT with a port of 1 to 65535, an IPv6 address as [::1]:4100</source>
        <translation>ADDR:PORT; bağlantı noktası 1 ile 65535 arası, IPv6 adresi [::1]:4100 gibi</translation>
    </message>
    <message>
        <source>--connect and --relay exclude each other; accepted is one of them</source>
        <translation>--connect ile --relay birlikte olmaz; kabul edilen: ikisinden biri</translation>
    </message>
    <message>
        <source>--connect is missing; accepted is %1, or --relay</source>
        <translation>--connect eksik; kabul edilen: %1 ya da --relay</translation>
    </message>
    <message>
        <source>--journal &quot;&quot;: accepted is the name of a file</source>
        <translation>--journal &quot;&quot;: kabul edilen: bir dosya adı</translation>
    </message>
    <message>
        <source>--receipts-as &quot;%1&quot;: accepted is text, png or text,png</source>
        <translation>--receipts-as &quot;%1&quot;: kabul edilen: text, png ya da text,png</translation>
    </message>
    <message>
        <source>--receipts-as needs --receipts, the folder for them</source>
        <translation>--receipts-as için --receipts, yani dosyaların klasörü gerekli</translation>
    </message>
    <message>
        <source>--receipts &quot;%1&quot;: accepted is a folder that can be written to</source>
        <translation>--receipts &quot;%1&quot;: kabul edilen: içine yazılabilen bir klasör</translation>
    </message>
    <message>
        <source>--registers &quot;%1&quot;: accepted is 1 to %2</source>
        <translation>--registers &quot;%1&quot;: kabul edilen: en az 1, en çok %2</translation>
    </message>
    <message>
        <source>--registers %1: --serial must end in digits that can be counted up so far</source>
        <translation>--registers %1: --serial bu kadar artırılabilecek rakamlarla bitmeli</translation>
    </message>
    <message>
        <source>--registers %1: each has a port of its own, from %2 up to %3 at most</source>
        <translation>--registers %1: her birinin kendi bağlantı noktası olur, ilki %2, en çok %3</translation>
    </message>
    <message>
        <source>--registers %1: --%2 is for one register alone</source>
        <translation>--registers %1: --%2 yalnızca tek yazarkasa içindir</translation>
    </message>
    <message>
        <source>--sales &quot;%1&quot;: accepted is 1 to %2</source>
        <translation>--sales &quot;%1&quot;: kabul edilen: en az 1, en çok %2</translation>
    </message>
    <message>
        <source>--speed &quot;%1&quot;: accepted is %2</source>
        <translation>--speed &quot;%1&quot;: kabul edilen: %2</translation>
    </message>
    <message>
        <source>--key-log &quot;&quot;: accepted is the name of a file</source>
        <translation>--key-log &quot;&quot;: kabul edilen: bir dosya adı</translation>
    </message>
    <message>
        <source>--%1 is missing; accepted is %2</source>
        <translation>--%1 eksik; kabul edilen: %2</translation>
    </message>
    <message>
        <source>exactly 12 characters, beginning with UB or VELNO</source>
        <translation>UB ya da VELNO ile başlayan tam 12 karakter</translation>
    </message>
    <message>
        <source>64 hexadecimal digits</source>
        <translation>64 onaltılık hane</translation>
    </message>
    <message>
        <source>a folder with client.crt and client.key</source>
        <translation>içinde client.crt ve client.key olan bir klasör</translation>
    </message>
    <message>
        <source>Faults; a STEP of a pairing is 1 (start), 2 (key exchange) or 3 (confirmation), a COMMAND is %1; WHEN is one of both; with *N behind it a COMMAND is disturbed N times only:</source>
        <translation>Arızalar; eşlemenin adımı STEP: 1 (başlangıç), 2 (anahtar değişimi) ya da 3 (onay); COMMAND: %1; WHEN: ikisinden biri; arkasında *N olan bir COMMAND yalnızca N kez bozulur:</translation>
    </message>
    <message>
        <source>Items provoke faults, too: by the name !NAME[=VALUE], or by their price.

On standard input: fault NAME[=VALUE], fault none, quit,
  </source>
        <translation>Satılan kalemler de arıza çıkarır: adı !NAME[=VALUE] olan ya da fiyatıyla.

Standart girdide: fault NAME[=VALUE], fault none, quit,
  </translation>
    </message>
    <message>
        <source>.
Exit status: 0 told to stop or --sales done, 64 wrong usage, 69 no --control there, or nothing draws;
  with --once 0 paired, 1 not.
</source>
        <translation>.
Çıkış durumu: 0 dur dendi ya da --sales tamam, 64 yanlış kullanım, 69 --control orada olamıyor ya da çizen yok;
  --once ile 0 eşlendi, 1 eşlenmedi.
</translation>
    </message>
    <message>
        <source>Example: velno-register --serial UB1234567890 --connect 127.0.0.1:4100
</source>
        <translation>Örnek: velno-register --serial UB1234567890 --connect 127.0.0.1:4100
</translation>
    </message>
    <message>
        <source>A simulated cash register: connects again and again, pairs, and obeys the application.</source>
        <translation>Bir benzetim yazarkasası: yeniden yeniden bağlanır, eşleşir ve uygulamanın dediğini yapar.</translation>
    </message>
    <message>
        <source>--registers %1: this process may have only %2 connections (ulimit -Hn)</source>
        <translation>--registers %1: bu süreç en çok %2 bağlantı açabilir (ulimit -Hn)</translation>
    </message>
    <message>
        <source>total</source>
        <translation>toplam</translation>
    </message>
    <message>
        <source>tax</source>
        <translation>vergi</translation>
    </message>
    <message>
        <source>cash</source>
        <translation>nakit</translation>
    </message>
    <message>
        <source>card</source>
        <translation>kart</translation>
    </message>
    <message>
        <source>change</source>
        <translation>para üstü</translation>
    </message>
    <message>
        <source>, items %1</source>
        <translation>, kalem %1</translation>
    </message>
    <message>
        <source>a result code, for example 8</source>
        <translation>bir sonuç kodu, örneğin 8</translation>
    </message>
    <message>
        <source>an error detail, for example 0x402</source>
        <translation>bir hata ayrıntısı, örneğin 0x402</translation>
    </message>
    <message>
        <source>the path of a file, or - for standard input</source>
        <translation>bir dosyanın yolu ya da standart girdi için -</translation>
    </message>
    <message>
        <source>the name of a command</source>
        <translation>bir komutun adı</translation>
    </message>
    <message>
        <source>lira for one unit, up to two decimals: 12.50 or 12,50</source>
        <translation>birim fiyat, lira, en çok iki ondalık: 12.50 ya da 12,50</translation>
    </message>
    <message>
        <source>lira, up to two decimals: 12.50 or 12,50</source>
        <translation>lira, en çok iki ondalık: 12.50 ya da 12,50</translation>
    </message>
    <message>
        <source>up to three decimals: 1.250 or 1,250; at most 2147483.647</source>
        <translation>en çok üç ondalık: 1.250 ya da 1,250; en fazla 2147483.647</translation>
    </message>
    <message>
        <source>up to 52 bytes of UTF-8, in quotes when there are blanks</source>
        <translation>en çok 52 bayt UTF-8, boşluk varsa tırnak içinde</translation>
    </message>
    <message>
        <source>a whole number, -128 to 127; a register&apos;s sections are 1 to 8</source>
        <translation>bir tam sayı, -128 ile 127 arası; yazarkasanın kısımları 1 ile 8 arasıdır</translation>
    </message>
    <message>
        <source>a whole number: -10 for a discount, 10 for a surcharge</source>
        <translation>bir tam sayı: indirim için -10, artırım için 10 gibi</translation>
    </message>
    <message>
        <source>a whole number; a register knows 0 to 7</source>
        <translation>bir tam sayı; yazarkasa 0 ile 7 arasını bilir</translation>
    </message>
    <message>
        <source>last, or a whole number: the line&apos;s index as the register counts</source>
        <translation>last ya da bir tam sayı: satırın yazarkasadaki sırası</translation>
    </message>
    <message>
        <source>a whole number; identity numbers have 11 digits, 11111111111 is anybody&apos;s</source>
        <translation>bir tam sayı; kimlik numarası 11 hanelidir, 11111111111 herhangi bir kişi demektir</translation>
    </message>
    <message>
        <source>cash (the key F10) or card (the key F11)</source>
        <translation>cash (nakit, F10 tuşu) ya da card (kart, F11 tuşu)</translation>
    </message>
    <message>
        <source>a whole number from 0 on; a register knows 0 to 2. Not given: 0 with a reference, otherwise 2</source>
        <translation>0 ya da daha büyük bir tam sayı; yazarkasa 0 ile 2 arasını bilir. Verilmezse: fatura numarası varsa 0, yoksa 2</translation>
    </message>
    <message>
        <source>a whole number from 0 on; 0 for a person&apos;s number, 1 for a tax number</source>
        <translation>0 ya da daha büyük bir tam sayı; 0 kimlik numarası, 1 vergi numarası</translation>
    </message>
    <message>
        <source>up to 12 bytes; 11 digits of a person, 10 of a tax number</source>
        <translation>en çok 12 bayt; kimlik numarası 11, vergi numarası 10 hanedir</translation>
    </message>
    <message>
        <source>6 to 16 characters with type 0; up to 17 with another</source>
        <translation>type 0 ise 6 ile 16 karakter arası; başkasında en çok 17</translation>
    </message>
    <message>
        <source>a whole number; a register knows 1 and 2</source>
        <translation>bir tam sayı; yazarkasa 1 ile 2 değerlerini bilir</translation>
    </message>
    <message>
        <source>yes or no; the register defines what it means</source>
        <translation>yes ya da no; ne anlama geldiğini yazarkasa belirler</translation>
    </message>
    <message>
        <source>two whole numbers with a slash between, as sale-state told them: 12/1</source>
        <translation>aralarında / olan iki tam sayı, sale-state komutunun söylediği gibi: 12/1</translation>
    </message>
    <message>
        <source>the path of a file with a receipt as docs/receipt-json.md has it</source>
        <translation>docs/receipt-json.md sayfasındaki gibi bir fiş olan dosyanın yolu</translation>
    </message>
    <message>
        <source>the sale&apos;s name in the ledger, 1 to 200 bytes without control characters</source>
        <translation>satışın kayıt dosyasındaki adı; denetim karakteri olmayan 1 ile 200 bayt arası</translation>
    </message>
    <message>
        <source>NAME, NAME=VALUE or none; the simulator&apos;s --help lists them</source>
        <translation>NAME, NAME=VALUE ya da none; hepsini benzetimin --help çıktısı sayar</translation>
    </message>
    <message>
        <source>paid, sell-again or drop</source>
        <translation>paid, sell-again ya da drop</translation>
    </message>
    <message>
        <source>who answers, up to 100 bytes; not given: the user&apos;s name</source>
        <translation>yanıtı veren kişi, en çok 100 bayt; verilmezse kullanıcı adı</translation>
    </message>
    <message>
        <source>the name of an encoding, for example UTF-8 or windows-1254</source>
        <translation>bir karakter kodlamasının adı, örneğin UTF-8 ya da windows-1254</translation>
    </message>
    <message>
        <source>a text, in quotes when there are blanks</source>
        <translation>bir yazı, boşluk varsa tırnak içinde</translation>
    </message>
    <message>
        <source>a whole number; a register knows 0 to 5</source>
        <translation>bir tam sayı; yazarkasa 0 ile 5 arasını bilir</translation>
    </message>
    <message>
        <source>a, b or ab</source>
        <translation>a, b ya da ab</translation>
    </message>
    <message>
        <source>a whole number from 0 on; up to 20 are taken</source>
        <translation>0 ya da daha büyük bir tam sayı; en çok 20 kabul edilir</translation>
    </message>
    <message>
        <source>two hexadecimal digits for each byte, for example 0000000C</source>
        <translation>her bayt için iki onaltılık hane, örneğin 0000000C</translation>
    </message>
    <message>
        <source>Reading</source>
        <translation>Okuma</translation>
    </message>
    <message>
        <source>Session</source>
        <translation>Oturum</translation>
    </message>
    <message>
        <source>Sale</source>
        <translation>Satış</translation>
    </message>
    <message>
        <source>Its end</source>
        <translation>Sonu</translation>
    </message>
    <message>
        <source>Receipts</source>
        <translation>Fişler</translation>
    </message>
    <message>
        <source>Printing</source>
        <translation>Yazdırma</translation>
    </message>
    <message>
        <source>Raw bytes</source>
        <translation>Ham bayt</translation>
    </message>
    <message>
        <source>added to the slip</source>
        <translation>bilgi fişine eklendi</translation>
    </message>
    <message>
        <source>the totals of the sale, and its number of items</source>
        <translation>satışın toplamları ve kalem sayısı</translation>
    </message>
    <message>
        <source>the register&apos;s state, by number and name</source>
        <translation>yazarkasanın durumu, numarası ve adıyla</translation>
    </message>
    <message>
        <source>state 1 (idle)</source>
        <translation>durum 1 (boşta)</translation>
    </message>
    <message>
        <source>the number of the current Z report</source>
        <translation>geçerli Z raporunun numarası</translation>
    </message>
    <message>
        <source>Z 17</source>
        <translation>Z 17</translation>
    </message>
    <message>
        <source>when the last Z report was made</source>
        <translation>son Z raporunun ne zaman alındığı</translation>
    </message>
    <message>
        <source>local time and seconds, or never</source>
        <translation>yerel saat ve saniye ya da hiç alınmadığı</translation>
    </message>
    <message>
        <source>the register&apos;s clock</source>
        <translation>yazarkasanın saati</translation>
    </message>
    <message>
        <source>local time and seconds</source>
        <translation>yerel saat ve saniye</translation>
    </message>
    <message>
        <source>the highest amount of one sale</source>
        <translation>bir satışın en yüksek tutarı</translation>
    </message>
    <message>
        <source>sale limit 12000.00 TL</source>
        <translation>satış sınırı 12000.00 TL</translation>
    </message>
    <message>
        <source>whether the printer has paper; 9 when not</source>
        <translation>yazıcıda kâğıt var mı; yoksa 9</translation>
    </message>
    <message>
        <source>paper present</source>
        <translation>kâğıt var</translation>
    </message>
    <message>
        <source>the serial number that the register gave</source>
        <translation>yazarkasanın verdiği sicil numarası</translation>
    </message>
    <message>
        <source>serial number UB1234567890</source>
        <translation>sicil numarası UB1234567890</translation>
    </message>
    <message>
        <source>a section&apos;s name and number</source>
        <translation>bir kısmın adı ve numarası</translation>
    </message>
    <message>
        <source>the section&apos;s name, and its number as the register defines it</source>
        <translation>kısmın adı ve yazarkasanın belirlediği numarası</translation>
    </message>
    <message>
        <source>the banks whose cards the register takes</source>
        <translation>yazarkasanın kart aldığı bankalar</translation>
    </message>
    <message>
        <source>their numbers</source>
        <translation>numaraları</translation>
    </message>
    <message>
        <source>opens the application&apos;s session</source>
        <translation>uygulamanın oturumunu açar</translation>
    </message>
    <message>
        <source>logged in</source>
        <translation>oturum açıldı</translation>
    </message>
    <message>
        <source>ends the session</source>
        <translation>oturumu kapatır</translation>
    </message>
    <message>
        <source>logged out</source>
        <translation>oturum kapandı</translation>
    </message>
    <message>
        <source>forgets the register&apos;s keys: the next command pairs anew</source>
        <translation>yazarkasanın anahtarlarını unutur: sonraki komut yeniden eşler</translation>
    </message>
    <message>
        <source>keys forgotten</source>
        <translation>anahtarlar unutuldu</translation>
    </message>
    <message>
        <source>starts a sale</source>
        <translation>satış başlatır</translation>
    </message>
    <message>
        <source>sale started</source>
        <translation>satış başladı</translation>
    </message>
    <message>
        <source>starts a sale that end-invoice ends</source>
        <translation>end-invoice ile bitecek bir satış başlatır</translation>
    </message>
    <message>
        <source>how the open sale stands</source>
        <translation>açık satışın durumu</translation>
    </message>
    <message>
        <source>what the register shows, the totals, and the receipt&apos;s two numbers</source>
        <translation>yazarkasanın gösterdiği, toplamlar ve fişin iki numarası</translation>
    </message>
    <message>
        <source>sells an item: one of section 1 and type 0 unless told otherwise</source>
        <translation>bir kalem satar: başka söylenmezse 1. kısımdan, 0 türünden bir tane</translation>
    </message>
    <message>
        <source>sells up to ten items at once, all or none</source>
        <translation>en çok on kalemi birden satar, ya hepsini ya hiçbirini</translation>
    </message>
    <message>
        <source>adds a medical contribution, anybody&apos;s by default</source>
        <translation>ilaç katılım payı ekler, kimliği verilmezse herhangi bir kişinin</translation>
    </message>
    <message>
        <source>the amount</source>
        <translation>tutar</translation>
    </message>
    <message>
        <source>takes a line out of the sale</source>
        <translation>satıştan bir satırı çıkarır</translation>
    </message>
    <message>
        <source>pays; sale-state tells whether the register took it</source>
        <translation>öder; yazarkasanın alıp almadığını sale-state söyler</translation>
    </message>
    <message>
        <source>what was sent</source>
        <translation>gönderilen</translation>
    </message>
    <message>
        <source>ends the sale; state tells whether the register did</source>
        <translation>satışı bitirir; yazarkasanın bitirip bitirmediğini state söyler</translation>
    </message>
    <message>
        <source>ends the sale with an invoice, of anybody unless told otherwise</source>
        <translation>satışı faturayla bitirir, başka söylenmezse herhangi bir kişinin</translation>
    </message>
    <message>
        <source>sale ended with an invoice</source>
        <translation>satış faturayla bitti</translation>
    </message>
    <message>
        <source>cancels the sale</source>
        <translation>satışı iptal eder</translation>
    </message>
    <message>
        <source>sale cancelled</source>
        <translation>satış iptal edildi</translation>
    </message>
    <message>
        <source>a closed receipt, by default the one sale-state told last</source>
        <translation>kapanmış bir fiş, verilmezse sale-state komutunun son söylediği</translation>
    </message>
    <message>
        <source>its totals, and its number of items</source>
        <translation>toplamları ve kalem sayısı</translation>
    </message>
    <message>
        <source>the banks that the sale&apos;s cards were paid with</source>
        <translation>satışta kartıyla ödenen bankalar</translation>
    </message>
    <message>
        <source>sells a whole receipt, once for each key however often it is handed over</source>
        <translation>bütün bir fişi satar; kaç kez verilirse verilsin her anahtar için bir kez</translation>
    </message>
    <message>
        <source>how it stands; 20 and more when it is not closed</source>
        <translation>durumu; kapanmadıysa 20 ve üstü</translation>
    </message>
    <message>
        <source>what is in the ledger, or one order with its history</source>
        <translation>kayıt dosyasındakiler ya da geçmişiyle bir iş</translation>
    </message>
    <message>
        <source>a line for each order</source>
        <translation>her iş için bir satır</translation>
    </message>
    <message>
        <source>a person&apos;s answer to what a receipt asks, which is acted upon</source>
        <translation>fişin sorduğuna bir kişinin yanıtı; gereği yapılır</translation>
    </message>
    <message>
        <source>how it stands then</source>
        <translation>sonraki durumu</translation>
    </message>
    <message>
        <source>begins a slip, or reads its next texts otherwise</source>
        <translation>bilgi fişi başlatır ya da sonraki yazılarını başka kodlamayla okur</translation>
    </message>
    <message>
        <source>texts of the slip in UTF-8</source>
        <translation>bilgi fişinin yazıları: UTF-8</translation>
    </message>
    <message>
        <source>adds a text to the slip</source>
        <translation>bilgi fişine bir yazı ekler</translation>
    </message>
    <message>
        <source>adds a line with two ends to the slip</source>
        <translation>bilgi fişine iki uçlu bir satır ekler</translation>
    </message>
    <message>
        <source>adds line feeds to the slip</source>
        <translation>bilgi fişine boş satırlar ekler</translation>
    </message>
    <message>
        <source>prints the slip</source>
        <translation>bilgi fişini basar</translation>
    </message>
    <message>
        <source>slip printed</source>
        <translation>bilgi fişi basıldı</translation>
    </message>
    <message>
        <source>prints the totals of the day so far</source>
        <translation>günün şimdiye kadarki toplamlarını basar</translation>
    </message>
    <message>
        <source>X report printed</source>
        <translation>X raporu basıldı</translation>
    </message>
    <message>
        <source>ends the day with a Z report</source>
        <translation>günü Z raporuyla bitirir</translation>
    </message>
    <message>
        <source>Z report printed</source>
        <translation>Z raporu basıldı</translation>
    </message>
    <message>
        <source>sends bytes encrypted; applications 999999 and 14242</source>
        <translation>baytları şifreli gönderir; 999999 ve 14242 numaralı uygulamalar</translation>
    </message>
    <message>
        <source>sent 4 bytes</source>
        <translation>4 bayt gönderildi</translation>
    </message>
    <message>
        <source>decrypts a frame received elsewhere; the same applications</source>
        <translation>başka yerde alınan bir çerçevenin şifresini çözer; aynı uygulamalar</translation>
    </message>
    <message>
        <source>the plain bytes</source>
        <translation>çözülmüş baytlar</translation>
    </message>
    <message>
        <source>has the simulator at --control do something wrong, --serial names one of several registers</source>
        <translation>--control adresindeki benzetime bir arıza çıkartır, --serial birkaç yazarkasadan birini seçer</translation>
    </message>
    <message>
        <source>what is on</source>
        <translation>neyin açık olduğu</translation>
    </message>
    <message>
        <source>a script, one command a line, # comments; - is standard input</source>
        <translation>bir betik, her satırda bir komut, # açıklama; - standart girdidir</translation>
    </message>
    <message>
        <source>what its commands print</source>
        <translation>komutlarının yazdığı</translation>
    </message>
    <message>
        <source>asks for commands; Tab completes, quit or Ctrl-D ends</source>
        <translation>komut sorar; Tab tamamlar, quit ya da Ctrl-D bitirir</translation>
    </message>
    <message>
        <source>what the commands print</source>
        <translation>komutların yazdığı</translation>
    </message>
    <message>
        <source>what a result code means, its cause and cure</source>
        <translation>bir sonuç kodunun anlamı, nedeni ve çözümü</translation>
    </message>
    <message>
        <source>the text of the code and of the detail</source>
        <translation>kodun ve ayrıntının metni</translation>
    </message>
    <message>
        <source>an overview, or one command with its arguments</source>
        <translation>genel bakış ya da bağımsız değişkenleriyle bir komut</translation>
    </message>
    <message>
        <source>the text</source>
        <translation>metin</translation>
    </message>
    <message>
        <source>all commands, each in a line</source>
        <translation>bütün komutlar, her biri bir satırda</translation>
    </message>
    <message>
        <source>the version, and whom this build trusts</source>
        <translation>sürüm ve bu derlemenin kime güvendiği</translation>
    </message>
    <message>
        <source>ends the shell</source>
        <translation>kabuğu bitirir</translation>
    </message>
    <message>
        <source>nothing</source>
        <translation>hiçbir şey</translation>
    </message>
    <message>
        <source>Usage: %1
  %2

</source>
        <translation>Kullanım: %1
  %2

</translation>
    </message>
    <message>
        <source>the same again, up to %1 in all</source>
        <translation>aynısı yeniden, toplam en çok %1</translation>
    </message>
    <message>
        <source>%1Prints: %2
Example: %3
</source>
        <translation>%1Yazdığı: %2
Örnek: %3
</translation>
    </message>
    <message>
        <source>no answer came in time</source>
        <translation>zamanında yanıt gelmedi</translation>
    </message>
    <message>
        <source>what answers there is no simulator</source>
        <translation>orada yanıt veren bir benzetim değil</translation>
    </message>
    <message>
        <source>the connection was closed without an answer</source>
        <translation>bağlantı yanıt gelmeden kapandı</translation>
    </message>
    <message>
        <source>%1 at %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>%1 on %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>before it was sent</source>
        <translation>daha gönderilmeden</translation>
    </message>
    <message>
        <source>%1 is connected</source>
        <translation>bağlandı: %1</translation>
    </message>
    <message>
        <source>while pairing with %1; nothing was sent</source>
        <translation>eşlenirken: %1; hiçbir şey gönderilmedi</translation>
    </message>
    <message>
        <source>while waiting for %1; nothing was sent</source>
        <translation>beklenirken: %1; hiçbir şey gönderilmedi</translation>
    </message>
    <message>
        <source>waiting for %1 …</source>
        <translation>bekleniyor: %1 …</translation>
    </message>
    <message>
        <source>(afresh, since what it answers to send could come as the next command&apos;s answer)</source>
        <translation>(yeniden; send komutuna vereceği yanıt sonraki komutun yanıtı sanılabilirdi)</translation>
    </message>
    <message>
        <source>(it is paired first, which takes three connections)</source>
        <translation>(önce eşlenir, bu üç bağlantı sürer)</translation>
    </message>
    <message>
        <source>while it was under way; whether the register carried it out is not known: docs/recovery.md tells how to find out</source>
        <translation>yapılırken; yazarkasanın yapıp yapmadığı bilinmiyor: nasıl öğrenileceğini docs/recovery.md anlatır</translation>
    </message>
    <message>
        <source>code</source>
        <translation>kod</translation>
    </message>
    <message>
        <source>cause</source>
        <translation>neden</translation>
    </message>
    <message>
        <source>Detail 0x%1: %2</source>
        <translation>Ayrıntı 0x%1: %2</translation>
    </message>
    <message>
        <source>%1: the line is longer than %2 bytes</source>
        <translation>%1: satır çok uzun, en çok %2 bayt olabilir</translation>
    </message>
    <message>
        <source>standard input:%1</source>
        <translation>standart girdi:%1</translation>
    </message>
    <message>
        <source>Log: </source>
        <translation>Günlük: </translation>
    </message>
    <message>
        <source>no command is given</source>
        <translation>komut verilmedi</translation>
    </message>
    <message>
        <source>; did you mean &quot;%1&quot;?</source>
        <translation>; şunu mu demek istediniz: &quot;%1&quot;?</translation>
    </message>
    <message>
        <source>&quot; or &quot;</source>
        <translation>&quot; ya da &quot;</translation>
    </message>
    <message>
        <source>the register&apos;s 12 characters</source>
        <translation>sicil numarası, 12 karakter</translation>
    </message>
    <message>
        <source>exactly 12 characters without a blank</source>
        <translation>boşluksuz tam 12 karakter</translation>
    </message>
    <message>
        <source>where the register connects</source>
        <translation>yazarkasanın bağlandığı yer</translation>
    </message>
    <message>
        <source>a local IPv4 address and a port of 1 to 65535, for example 0.0.0.0:4100</source>
        <translation>bu bilgisayarın bir IPv4 adresi ve 1 ile 65535 arası bir bağlantı noktası, örneğin 0.0.0.0:4100</translation>
    </message>
    <message>
        <source>number of the application</source>
        <translation>uygulamanın numarası</translation>
    </message>
    <message>
        <source>1 to 4294967295</source>
        <translation>1 ile 4294967295 arası</translation>
    </message>
    <message>
        <source>meet it at the relay server</source>
        <translation>aktarma sunucusunda buluşur</translation>
    </message>
    <message>
        <source>one of --listen and --relay</source>
        <translation>--listen ile --relay seçeneklerinden biri</translation>
    </message>
    <message>
        <source>default 30000</source>
        <translation>verilmezse 30000</translation>
    </message>
    <message>
        <source>0 to 4294967295 ms, where 4294967295 means no limit</source>
        <translation>0 ile 4294967295 ms arası; 4294967295 sınırsız demektir</translation>
    </message>
    <message>
        <source>for a whole answer, default none</source>
        <translation>bütün yanıt için, yoksa sınırsız</translation>
    </message>
    <message>
        <source>1 to 4294967295 ms, where 4294967295 means no limit</source>
        <translation>1 ile 4294967295 ms arası; 4294967295 sınırsız demektir</translation>
    </message>
    <message>
        <source>results as one object a line</source>
        <translation>sonuçlar satır satır nesne</translation>
    </message>
    <message>
        <source>en or tr</source>
        <translation>en ya da tr</translation>
    </message>
    <message>
        <source>of receipts</source>
        <translation>fişlerin kayıt dosyası</translation>
    </message>
    <message>
        <source>the path of a file</source>
        <translation>bir dosyanın yolu</translation>
    </message>
    <message>
        <source>of a simulator, for fault</source>
        <translation>benzetimin adresi, fault için</translation>
    </message>
    <message>
        <source>a port of 127.0.0.1, ADDR:PORT or the path of a Unix socket, as the simulator&apos;s `ready` tells it</source>
        <translation>127.0.0.1 adresinin bir bağlantı noktası, ADDR:PORT ya da bir Unix soketinin yolu; benzetim `ready` olayında söyler</translation>
    </message>
    <message>
        <source>--%1: accepted is %2</source>
        <translation>--%1: kabul edilen: %2</translation>
    </message>
    <message>
        <source>the relay</source>
        <translation>aktarma sunucusu</translation>
    </message>
    <message>
        <source>neither --listen nor --relay is given; accepted is one of them</source>
        <translation>--listen da --relay de verilmedi; kabul edilen: ikisinden biri</translation>
    </message>
    <message>
        <source>Usage: velnoctl [OPTION]... COMMAND...
Drives a cash register through velnoext.h. Several commands run in order over one
connection, up to the first that fails.

</source>
        <translation>Kullanım: velnoctl [OPTION]... COMMAND...
Bir yazarkasayı velnoext.h üzerinden kullanır. Birkaç komut tek bağlantı üzerinden
sırayla, ilk başarısız olana kadar çalışır.

</translation>
    </message>
    <message>
        <source>
  velnoctl commands       what each does, in a line
  velnoctl help COMMAND   its arguments, what is accepted, an example

</source>
        <translation>
  velnoctl commands       her komutun ne yaptığı, birer satırda
  velnoctl help COMMAND   bağımsız değişkenleri, kabul edilenler, bir örnek

</translation>
    </message>
    <message>
        <source>
Exit status: 0 done, 1-13 the library&apos;s result code (see explain), 20-35 a receipt
is not closed, 64 wrong usage, 69 no simulator, 74 a result could not be
written, 130 Ctrl-C or SIGTERM.
</source>
        <translation>
Çıkış durumu: 0 yapıldı, 1-13 kitaplığın sonuç kodu (bkz. explain), 20-35 bir fiş
kapanmadı, 64 yanlış kullanım, 69 benzetim yok, 74 bir sonuç yazılamadı,
130 Ctrl-C ya da SIGTERM.
</translation>
    </message>
    <message>
        <source>Example: velnoctl --serial UB1234567890 --listen 0.0.0.0:4100 --app 5 state z
</source>
        <translation>Örnek: velnoctl --serial UB1234567890 --listen 0.0.0.0:4100 --app 5 state z
</translation>
    </message>
    <message>
        <source>&quot;%1&quot;: options stand in front of the first command</source>
        <translation>&quot;%1&quot;: seçenekler ilk komuttan önce yazılır</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no command</source>
        <translation>&quot;%1&quot; diye bir komut yok</translation>
    </message>
    <message>
        <source>on the command line</source>
        <translation>komut satırında</translation>
    </message>
    <message>
        <source>in a script</source>
        <translation>betikte</translation>
    </message>
    <message>
        <source>in the shell</source>
        <translation>kabukta</translation>
    </message>
    <message>
        <source> and </source>
        <translation> ve </translation>
    </message>
    <message>
        <source>%1 cannot stand %2, only %3</source>
        <translation>%1: %2 kullanılamaz, yalnızca %3</translation>
    </message>
    <message>
        <source>%1: more than %2 commands</source>
        <translation>%1: en çok %2 komut olabilir</translation>
    </message>
    <message>
        <source>the line is longer than %1 bytes</source>
        <translation>satır çok uzun, en çok %1 bayt olabilir</translation>
    </message>
    <message>
        <source>run - belongs on the command line: commands are read from there already</source>
        <translation>run - komut satırına yazılır: komutlar zaten oradan okunuyor</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is one word too many: %2 is the whole command</source>
        <translation>&quot;%1&quot; fazla: komutun tamamı: %2</translation>
    </message>
    <message>
        <source>RECEIPT is missing, and no sale-state has told one; accepted is 12/1, for example</source>
        <translation>RECEIPT eksik, sale-state de bir fiş söylemedi; kabul edilen: örneğin 12/1</translation>
    </message>
    <message>
        <source>payment sent: %1, %2</source>
        <translation>ödeme gönderildi: %1, %2</translation>
    </message>
    <message>
        <source>end of the sale sent: %1</source>
        <translation>satışın sonu gönderildi: %1</translation>
    </message>
    <message>
        <source>receipt %1: %2</source>
        <translation>fiş %1: %2</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be written in %2; accepted are its letters, or another encoding</source>
        <translation>&quot;%1&quot; bu kodlamayla yazılamaz: %2; kabul edilen: onun harfleri ya da başka bir kodlama</translation>
    </message>
    <message>
        <source>texts of the slip in %1</source>
        <translation>bilgi fişinin yazıları: %1</translation>
    </message>
    <message>
        <source>no acquirers</source>
        <translation>banka yok</translation>
    </message>
    <message>
        <source>acquirers %1</source>
        <translation>bankalar %1</translation>
    </message>
    <message>
        <source>state %1 (%2)</source>
        <translation>durum %1 (%2)</translation>
    </message>
    <message>
        <source>last Z never</source>
        <translation>son Z: hiç</translation>
    </message>
    <message>
        <source>last Z</source>
        <translation>son Z</translation>
    </message>
    <message>
        <source>sale limit %1</source>
        <translation>satış sınırı %1</translation>
    </message>
    <message>
        <source>serial number %1</source>
        <translation>sicil numarası %1</translation>
    </message>
    <message>
        <source>section %1 &quot;%2&quot;, number %3</source>
        <translation>kısım %1 &quot;%2&quot;, numara %3</translation>
    </message>
    <message>
        <source>sent %1 bytes</source>
        <translation>%1 bayt gönderildi</translation>
    </message>
    <message>
        <source>%1: it is no text</source>
        <translation>%1: metin değil</translation>
    </message>
    <message>
        <source>while it was under way; hand it over again under the key %1, and it goes on</source>
        <translation>yapılırken; aynı anahtarla yeniden verin, kaldığı yerden sürer: %1</translation>
    </message>
    <message>
        <source>no receipts</source>
        <translation>fiş yok</translation>
    </message>
    <message>
        <source>the result cannot be written: </source>
        <translation>sonuç yazılamıyor: </translation>
    </message>
    <message>
        <source>connecting %1</source>
        <translation>bağlanırken: %1</translation>
    </message>
    <message>
        <source>interrupted %1</source>
        <translation>kesildi: %1</translation>
    </message>
    <message>
        <source>interrupted; nothing was under way</source>
        <translation>kesildi; yapılan bir şey yoktu</translation>
    </message>
    <message>
        <source>: it said all the same: </source>
        <translation>: yine de söylediği: </translation>
    </message>
    <message>
        <source>help shows all commands.
</source>
        <translation>Bütün komutlar: help
</translation>
    </message>
    <message>
        <source>velnoctl --help shows all commands and options.
</source>
        <translation>Bütün komutlar ve seçenekler: velnoctl --help
</translation>
    </message>
    <message>
        <source>receipt %1/%2, register shows %3: </source>
        <translation>fiş %1/%2, yazarkasanın gösterdiği %3: </translation>
    </message>
    <message>
        <source>medical contribution %1</source>
        <translation>ilaç katılım payı %1</translation>
    </message>
    <message>
        <source>while the simulator had not answered</source>
        <translation>benzetim daha yanıt vermeden</translation>
    </message>
    <message>
        <source>the simulator at %1 was not reached: %2</source>
        <translation>benzetime ulaşılamadı: %1: %2</translation>
    </message>
    <message>
        <source>all faults are off</source>
        <translation>bütün arızalar kapalı</translation>
    </message>
    <message>
        <source>%1 is on</source>
        <translation>%1 açık</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no %2; accepted is %3</source>
        <translation>&quot;%1&quot;: geçersiz %2; kabul edilen: %3</translation>
    </message>
    <message>
        <source>%1 is missing; accepted is %2</source>
        <translation>%1 eksik; kabul edilen: %2</translation>
    </message>
    <message>
        <source>&quot;%1&quot;: accepted are %2</source>
        <translation>&quot;%1&quot;: kabul edilenler: %2</translation>
    </message>
    <message>
        <source>&quot;%1&quot;: %2= is given twice</source>
        <translation>&quot;%1&quot;: %2= iki kez verildi</translation>
    </message>
    <message>
        <source>%1: &quot;+&quot; is one too many; accepted are up to %2</source>
        <translation>%1: bir &quot;+&quot; fazla; en çok %2 kabul edilir</translation>
    </message>
    <message>
        <source>idle</source>
        <translation>boşta</translation>
    </message>
    <message>
        <source>sale open</source>
        <translation>satış açık</translation>
    </message>
    <message>
        <source>idle, another screen</source>
        <translation>boşta, başka bir ekran</translation>
    </message>
    <message>
        <source>unnamed</source>
        <translation>adsız</translation>
    </message>
    <message>
        <source>byte %1 is a backslash with nothing behind it</source>
        <translation>%1. bayt bir ters bölü, arkasında bir şey yok</translation>
    </message>
    <message>
        <source>the quote %1 at byte %2 is not closed</source>
        <translation>kapanmayan tırnak: %1, %2. baytta</translation>
    </message>
    <message>
        <source>byte %1 (0x%2) is no UTF-8, which every line has to be</source>
        <translation>%1. bayt (0x%2) UTF-8 değil, oysa her satır olmalı</translation>
    </message>
    <message>
        <source>byte %1 is a zero byte, which no line may hold</source>
        <translation>%1. bayt sıfır, hiçbir satırda olamaz</translation>
    </message>
    <message>
        <source>its words cannot be told apart</source>
        <translation>sözcükleri ayrılamıyor</translation>
    </message>
    <message>
        <source>en or tr, not the locale&apos;s</source>
        <translation>en ya da tr; yerel ayar yerine</translation>
    </message>
    <message>
        <source>clock</source>
        <translation>saat</translation>
    </message>
    <message>
        <source>velnoctl: interrupted while reading a script
</source>
        <translation>velnoctl: betik okunurken kesildi
</translation>
    </message>
    <message>
        <source>velnoctl: interrupted while ending
</source>
        <translation>velnoctl: biterken kesildi
</translation>
    </message>
    <message>
        <source>applications of this build do not believe %1 and end the pairing with 5001 (%2)</source>
        <translation>bu derlemenin uygulamaları %1 belgesine inanmaz ve eşlemeyi 5001 koduyla bitirir (%2)</translation>
    </message>
</context>
</TS>
