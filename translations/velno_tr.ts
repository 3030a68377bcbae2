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
</context>
</TS>
