// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/envelope.h"

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/cipher.h"
#include "ExtDevice/gmp3/frame.h"

namespace Velno::GMP {

namespace {

constexpr int roomForRest = 64; // of an envelope beside its ciphertext
constexpr char noKeys[] = "0";

QByteArray framed(const QByteArray &elements, const QByteArray &identity)
{
    return makeFrame(true, None, elements, identity.constData());
}

/** @return 0, EnvelopeOfNoKeys or ElementsWrong */
int readElements(QByteArrayView run, Envelope *envelope)
{
    int count = 0;
    for (TlvView element; takeTlvElement(&run, &element); ++count) {
        if (element.tag == fieldTag(CommandCipher))
            envelope->cipher = element.value;
        else if (element.tag == fieldTag(CommandMac))
            envelope->mac = element.value;
        else if (element.tag == fieldTag(KeysAbsent) && element.value == noKeys && count == 0 &&
                 run.isEmpty())
            return EnvelopeOfNoKeys;
        else
            return ElementsWrong;
    }
    if (!run.isEmpty() || envelope->cipher.isEmpty() || envelope->mac.isEmpty())
        return ElementsWrong;
    envelope->isInOrder = count == 2 && envelope->cipher.data() < envelope->mac.data();
    return 0;
}

} // namespace

int readEnvelope(const QByteArray &frame, const QByteArray &identity, Envelope *envelope)
{
    const int status = checkFrame(frame.constData(), int(frame.size()), identity.constData());
    if (status != 0)
        return status;
    *envelope = {};
    return readElements(frameBody(frame.constData(), int(frame.size())), envelope);
}

int openEnvelope(const MatchExt &record, const Envelope &envelope, QByteArray *plaintext)
{
    const QByteArray cipher = QByteArray::fromRawData(envelope.cipher.data(), envelope.cipher.size());
    if (!sameSecret(GMP3_HMAC(record, cipher), envelope.mac))
        return MacWrong;
    const QByteArray decrypted = GMP3_cipher(record, false, cipher);
    if (decrypted.isEmpty())
        return NothingDecrypted;
    *plaintext = decrypted;
    return 0;
}

int unseal(const MatchExt &record, const QByteArray &frame, QByteArray *plaintext)
{
    Envelope envelope;
    const int status = readEnvelope(frame, record.registerData, &envelope);
    return status == 0 ? openEnvelope(record, envelope, plaintext) : status;
}

QByteArray authenticated(const MatchExt &record, const QByteArray &cipher)
{
    QByteArray elements;
    elements.reserve(cipher.size() + roomForRest);
    if (cipher.isEmpty() || !appendTlvElement(elements, fieldTag(CommandCipher), cipher) ||
        !appendTlvElement(elements, fieldTag(CommandMac), GMP3_HMAC(record, cipher)))
        return {};
    return elements;
}

QByteArray sealedElements(const MatchExt &record, const QByteArray &plaintext)
{
    constexpr int largestElement = 0xFFFF; // nothing is encrypted that has no room in one
    return plaintext.size() > largestElement ? QByteArray()
                                             : authenticated(record, GMP3_cipher(record, true, plaintext));
}

QByteArray seal(const MatchExt &record, const QByteArray &plaintext)
{
    const QByteArray elements = sealedElements(record, plaintext);
    return elements.isEmpty() ? QByteArray() : framed(elements, record.registerData);
}

QByteArray frameOfNoKeys(const QByteArray &identity)
{
    return framed(tlvElement(fieldTag(KeysAbsent), noKeys), identity);
}

} // namespace Velno::GMP
