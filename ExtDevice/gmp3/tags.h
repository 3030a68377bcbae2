// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

/**
 * The tag dictionary of GMP3: enumerators to tag bytes and back, over the tables of protocol_table.h.
 *
 * The value of an enumerator is the index of its row. A forward look-up refers to constant bytes (no copy,
 * valid for the life of the program) and is empty for a value outside the enumeration. A reverse look-up
 * of an unknown tag answers with the number of rows.
 */
namespace Velno::GMP {

/** Message kinds. Each has two tags: of the request (application) and of the response (register). */
enum MessageTag {
    Message8801,
    Message8802,
    Message8803,
    Message8804,
    Message8805,
    Message8806,
    Message8807,
    Message8808,
    PairingStart,       ///< identities, randoms; certificate and group in the response
    PairingKeyExchange, ///< public keys; signature in the response
    PairingConfirm,     ///< key check value, encrypted application hash; verdict in the response
    Message8A64,
    None, ///< no message; in framing a body without message element
};

enum GroupTag { Group02, Group40, Group41, Group42, Group6F };

enum TransactionFieldTag {
    Field8204,
    SequenceNumber,  ///< 3-byte BCD
    TransactionDate, ///< BCD YY MM DD
    TransactionTime, ///< BCD HH MM SS
    Field820B,
    Field820D,
    Field820E,
    Field8210,
    Field8211,
};

enum SpecialDataFieldTag {
    FieldC001,
    FieldC002,
    FieldC003,
    FieldC004,
    FieldC005,
    FieldC006,
    FieldC007,
    FieldC008,
    FieldC009,
    FieldC00A,
    FieldC00B,
    FieldC00C,
    FieldC00D,
    FieldC00E,
    FieldC00F,
    FieldC010,
    FieldC011,
};

enum ExternalDataFieldTag {
    FieldC101,
    FieldC102,
    FieldC103,
    FieldC104,
    FieldC105,
    FieldC106,
    ExtDeviceVendor,
    ExtDeviceModel,
    ExtDeviceIdentity,
    EcrBrand,
    EcrModel,
    EcrIdentity,
    RequesterRandom, ///< 16 bytes
    ResponderRandom, ///< 16 bytes
    FieldC111,
    FieldC112,
    FieldC113,
    FieldC114,
    FieldC115,
    FieldC116,
    FieldC117,
    FieldC118,
    FieldC119,
};

enum DataSecurityFieldTag {
    FieldC201,
    FieldC202,
    FieldC203,
    FieldC204,
    FieldC205,
    FieldC206,
    FieldC207,
    FieldC208,
    FieldC209,
    FieldC20A,
    FieldC20B,
    FieldC210,
    FieldC212,
    FieldC213,
};

enum PairingFieldTag {
    Certificate,        ///< PEM
    PairingNumber,      ///< 2-byte BCD
    ResponderPublicKey, ///< shares its tag with the next: one travels in responses, one in requests
    RequesterPublicKey,
    FieldEF04,
    ResultCode, ///< two digits, "00" for success
    FieldEF07,
    PairingIndex, ///< one byte
    Signature,    ///< of the responder's public key
    ProtocolVersion,
    DhPrime,
    DhGenerator,
    KeyCheckValue, ///< 32 bytes
};

/** What is encrypted, and what says that somebody cannot encrypt. */
enum CommandFieldTag {
    CommandCipher, ///< see envelope.h
    CommandMac,    ///< 32 bytes
    AppHashCipher, ///< the application hash in a PairingConfirm
    KeysAbsent,    ///< "0": an application that holds no keys of this register
};

QByteArray requestMessageTag(MessageTag message);
QByteArray responseMessageTag(MessageTag message);
QByteArray groupTag(GroupTag group);
QByteArray fieldTag(TransactionFieldTag field);
QByteArray fieldTag(SpecialDataFieldTag field);
QByteArray fieldTag(ExternalDataFieldTag field);
QByteArray fieldTag(DataSecurityFieldTag field);
QByteArray fieldTag(PairingFieldTag field);
QByteArray fieldTag(CommandFieldTag field);

/** The kind of a message tag; sets `isResponse`, except for an unknown tag (`None`), which leaves it as it
 * was. */
MessageTag message(const QByteArray &tag, bool *isResponse);
GroupTag group(const QByteArray &tag);
TransactionFieldTag transactionField(const QByteArray &tag);
SpecialDataFieldTag specialDataField(const QByteArray &tag);
ExternalDataFieldTag externalDataField(const QByteArray &tag);
DataSecurityFieldTag dataSecurityField(const QByteArray &tag);
/** Both public keys share DFEF03, which is answered with `ResponderPublicKey`. */
PairingFieldTag pairingField(const QByteArray &tag);

} // namespace Velno::GMP
