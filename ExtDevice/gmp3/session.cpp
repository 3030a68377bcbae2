// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/session.h"

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/diffie_hellman.h"
#include "ExtDevice/gmp3/key_schedule.h"
#include "ExtDevice/gmp3/log.h"

namespace Velno::GMP {

namespace {

constexpr unsigned int sendTimeout = 10000; // ms

// Messages name some thirty fields; a peer that keeps inventing tags gets no more room than this.
constexpr qsizetype mostFields = 1024;

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

qsizetype fieldIndex(const QVector<QByteArray> &fields, const QByteArray &tag)
{
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (isField(fields.at(i), tag))
            return i;
    }
    return -1;
}

} // namespace

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

bool GMP3_Message::add(const QByteArray &tag, const QByteArray &value, bool replace)
{
    const qsizetype index = replace ? fieldIndex(fields, tag) : -1;
    if (index >= 0)
        fields[index] = tlvElement(tag, value);
    else
        fields.append(tlvElement(tag, value));
    return index < 0;
}

QByteArray GMP3_Message::value(const QByteArray &tag) const
{
    const qsizetype index = fieldIndex(fields, tag);
    if (index < 0)
        return {};
    Field found;
    unsigned short size = 0;
    extractTlvElement(fields.at(index), &found.tag, &found.value, &size);
    return found.value;
}

void GMP3_Message::store(const QVector<Field> &newFields)
{
    for (const Field &field : newFields) {
        if (fields.size() < mostFields || fieldIndex(fields, field.tag) >= 0)
            add(field.tag, field.value, true);
    }
}

void GMP3_Message::take(const ReceivedMessage &received)
{
    message = received.kind;
    isResponse = received.isResponse;
    store(received.fields);
    if (const QByteArray *const random = received.find(fieldTag(RequesterRandom)))
        requesterRandom = *random;
    if (const QByteArray *const random = received.find(fieldTag(ResponderRandom)))
        responderRandom = *random;
}

QByteArray GMP3_Message::createKeys(const QByteArray &peerPublicKey)
{
    QByteArray secret = sharedSecret(dh, peerPublicKey);
    const SessionKeys keys = deriveKeys(secret, responderRandom, requesterRandom);
    for (QByteArray *old : {&hmacKey, &kcvIv, &aesKey})
        cleanse(*old);
    hmacKey = keys.hmacKey;
    kcvIv = keys.kcvIv;
    aesKey = keys.aesKey;
    secretAgreed = !secret.isEmpty();
    cleanse(secret);
    return keys.checkValue;
}

void GMP3_Message::putKeysInto(MatchExt &pairingRecord) const
{
    pairingRecord.forgetKeys();
    pairingRecord.randomDFC10D = requesterRandom;
    pairingRecord.randomDFC10E = responderRandom;
    pairingRecord.hmacKey = hmacKey;
    pairingRecord.kcvIv = kcvIv;
    pairingRecord.aesKey = aesKey;
}

void Session::begin()
{
    record.message = None;
    record.fields.clear();
}

int Session::send(const char *data, int size)
{
    const int status = link->write(data, size, sendTimeout);
    return status == 0 ? 0 : logged("velno_network_write", status, 2000);
}

int Session::receive(unsigned int timeout, char *buffer, int *length)
{
    if (!length)
        return 4000;
    const int capacity = *length;
    *length = 0;
    int count = frameLengthSize;
    if (const int status = link->read(buffer, &count, timeout); status != 0)
        return logged("velno_network_read (1)", status, 3000);
    *length = frameLengthSize; // also when only one byte came: the buffer's own second byte then counts
    const int announced = announcedLength(buffer);
    if (capacity < announced)
        return 4000;
    const int whole = announced + frameLengthSize;
    do {
        count = whole - *length;
        int status = link->read(buffer + *length, &count, timeout);
        if (status == 0 && count < 0)
            status = 5; // the socket failed while it was read
        if (status != 0)
            return logged("velno_network_read (2)", status, 3000);
        *length += count;
    } while (*length < whole);
    return 0;
}

int Session::disconnect()
{
    const int status = link->close();
    return status == 0 ? 0 : logged("velno_network_disconnect", status, 3000);
}

int Session::check(const char *data, int size, const char *identity, bool parse)
{
    record.message = None;
    if (!parse)
        return checkFrame(data, size, identity);
    ReceivedMessage received;
    const int status = readFrame(data, size, identity, &received);
    if (status == 0)
        record.take(received);
    return status;
}

} // namespace Velno::GMP
