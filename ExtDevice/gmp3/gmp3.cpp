#include "ExtDevice/gmp3/gmp3.h"

#include "ExtDevice/encoding/crc.h"
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/log.h"
#include "ExtDevice/network/velno_network.h"

#include <QtEndian>

#include <cstring>

namespace Velno::GMP {

namespace {

// OpenSSL cleans up when the process ends, in the reverse order of the start. Started here, before the
// session exists, it is still there when the session frees its key pair. (Asked for nothing, it does not
// start.)
[[maybe_unused]] const bool openSslOutlivesTheSession =
    OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr) == 1;

} // namespace

GMP3_Message gmp3_message;
unsigned int connection_handle = 0;

GMP3_Message::~GMP3_Message()
{
    forgetKeys();
}

void GMP3_Message::forgetKeys()
{
    dh.reset(); // OpenSSL overwrites the secret exponent
    for (QByteArray *key : {&hmacKey, &kcvIv, &aesKey})
        cleanse(*key);
    secretAgreed = false;
    cleanseStack();
}

namespace {

constexpr int lengthSize = 2;
constexpr int identitySize = 12;
constexpr int crcSize = 2;
constexpr int emptyFrameSize = lengthSize + identitySize + crcSize;
constexpr int mostElementOverhead = 6;      // tag and length of the message element
constexpr unsigned int sendTimeout = 10000; // ms

// Messages name some thirty fields; a peer that keeps inventing tags gets no more room than this.
constexpr qsizetype mostFields = 1024;

int number16(const char *bytes)
{
    return static_cast<unsigned char>(bytes[0]) * 256 + static_cast<unsigned char>(bytes[1]);
}

void append16(QByteArray &bytes, unsigned int number)
{
    bytes.append(char(number >> 8 & 0xFF)).append(char(number & 0xFF));
}

int logged(const char *call, int status, int base)
{
    LogLine() << call << ": " << status;
    return base + status;
}

/** Whether the stored element has this tag and a value. */
bool isField(const QByteArray &element, const QByteArray &tag)
{
    // Stored elements are well-formed: the tag, a length field, the value. A zero length is no value.
    return element.size() > tag.size() + 1 && element.startsWith(tag) && tlvTag(element).size() == tag.size();
}

qsizetype fieldIndex(const QByteArray &tag)
{
    const QVector<QByteArray> &fields = gmp3_message.fields;
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (isField(fields.at(i), tag))
            return i;
    }
    return -1;
}

/** The body of the first message element; remembers its kind and direction. False when there is none. */
bool findMessage(const QByteArray &payload, QByteArray *body)
{
    for (const QByteArray &element : extractTlvElements(payload)) {
        QByteArray tag;
        unsigned short size = 0;
        if (!extractTlvElement(element, &tag, body, &size))
            continue;
        const MessageTag kind = message(tag, &gmp3_message.isResponse);
        if (kind == None)
            continue;
        gmp3_message.message = kind;
        return true;
    }
    return false;
}

void storeFields(const QByteArray &body)
{
    static const QByteArray requesterRandom = fieldTag(RequesterRandom);
    static const QByteArray responderRandom = fieldTag(ResponderRandom);
    for (const QByteArray &element : extractTlvElements(body)) {
        QByteArray tag;
        QByteArray value;
        unsigned short size = 0;
        if (!extractTlvElement(element, &tag, &value, &size))
            continue;
        if (gmp3_message.fields.size() < mostFields || fieldIndex(tag) >= 0)
            GMP3::TLV_add(tag, value, true);
        if (tag == requesterRandom)
            gmp3_message.requesterRandom = value;
        else if (tag == responderRandom)
            gmp3_message.responderRandom = value;
    }
}

bool crcMatches(const char *data, int size)
{
    if (size < lengthSize + crcSize)
        return false;
    const int received = number16(data + size - crcSize);
    const int computed = crc16(QByteArrayView(data + lengthSize, size - lengthSize - crcSize));
    if (received == computed)
        return true;
    // The stream stays in upper-case hexadecimal: what reads these logs is used to it.
    LogLine() << "CRC is not equal: " << std::uppercase << std::hex << received << "!=" << computed;
    return false;
}

bool identityMatches(const char *data, int size, const char *identity)
{
    // Compared up to the identity's terminator, so a short identity matches no space-padded header.
    if (size >= emptyFrameSize && (!identity || std::strncmp(data + lengthSize, identity, identitySize) == 0))
        return true;
    LogLine() << "No Serial Match!";
    return false;
}

} // namespace

void GMP3::init(unsigned int handle)
{
    gmp3_message.message = None;
    connection_handle = handle;
    gmp3_message.fields.clear();
}

int GMP3::accept(const char *address, unsigned short port, unsigned int timeout)
{
    if (connection_handle != 0)
        velno_network_disconnect(connection_handle);
    connection_handle = 0;
    const int status = velno_network_accept(address, port, int(timeout), &connection_handle);
    return status == 0 ? 0 : logged("velno_network_accept", status, 1000);
}

int GMP3::send(const char *data, int size)
{
    const int status = velno_network_write(connection_handle, sendTimeout, data, size);
    return status == 0 ? 0 : logged("velno_network_write", status, 2000);
}

int GMP3::receive(unsigned int timeout, char *buffer, int *length)
{
    if (!length)
        return 4000;
    const int capacity = *length;
    *length = 0;
    int count = lengthSize;
    if (const int status = velno_network_read(connection_handle, timeout, buffer, &count); status != 0)
        return logged("velno_network_read (1)", status, 3000);
    *length = lengthSize; // also when only one byte came: the buffer's own second byte then counts
    const int announced = number16(buffer);
    if (capacity < announced)
        return 4000;
    const int whole = announced + lengthSize;
    do {
        count = whole - *length;
        int status = velno_network_read(connection_handle, timeout, buffer + *length, &count);
        if (status == 0 && count < 0)
            status = 5; // the socket failed while it was read
        if (status != 0)
            return logged("velno_network_read (2)", status, 3000);
        *length += count;
    } while (*length < whole);
    return 0;
}

int GMP3::disconnect()
{
    const int status = velno_network_disconnect(connection_handle);
    connection_handle = 0;
    return status == 0 ? 0 : logged("velno_network_disconnect", status, 3000);
}

QByteArray GMP3::frame(bool response, MessageTag kind, const QByteArray &body, const char *identity)
{
    QByteArray frame;
    frame.reserve(emptyFrameSize + mostElementOverhead + body.size());
    append16(frame, 0); // the length, when it is known
    frame.append(identity, qsizetype(qstrnlen(identity, identitySize)));
    frame.append(lengthSize + identitySize - frame.size(), ' ');
    if (kind == None)
        frame += body;
    else if (!appendTlvElement(frame, response ? responseMessageTag(kind) : requestMessageTag(kind), body))
        return {};
    append16(frame, crc16(QByteArrayView(frame).sliced(lengthSize)));
    const qsizetype announced = frame.size() - lengthSize;
    if (announced > 0xFFFF)
        return {};
    qToBigEndian(quint16(announced), frame.data());
    return frame;
}

int GMP3::check(const char *data, int size, const char *identity, bool parse)
{
    gmp3_message.message = None;
    if (!data || size < lengthSize || size - lengthSize != number16(data))
        return 4000;
    if (!crcMatches(data, size))
        return 4001;
    if (!identityMatches(data, size, identity))
        return 4002;
    if (!parse)
        return 0;
    const QByteArray payload =
        QByteArray::fromRawData(data + lengthSize + identitySize, size - emptyFrameSize);
    QByteArray body;
    if (!findMessage(payload, &body))
        return 4003;
    storeFields(body);
    return 0;
}

bool GMP3::TLV_add(const QByteArray &tag, const QByteArray &value, bool replace)
{
    const qsizetype index = replace ? fieldIndex(tag) : -1;
    if (index >= 0)
        gmp3_message.fields[index] = tlvElement(tag, value);
    else
        gmp3_message.fields.append(tlvElement(tag, value));
    return index < 0;
}

QByteArray GMP3::TLV_value(const QByteArray &tag)
{
    const qsizetype index = fieldIndex(tag);
    if (index < 0)
        return {};
    QByteArray found;
    QByteArray value;
    unsigned short size = 0;
    extractTlvElement(gmp3_message.fields.at(index), &found, &value, &size);
    return value;
}

MessageTag GMP3::next_state(MessageTag kind)
{
    switch (kind) {
    case PairingStart:
        return PairingKeyExchange;
    case PairingKeyExchange:
        return PairingConfirm;
    default:
        return None;
    }
}

} // namespace Velno::GMP
