// SPDX-License-Identifier: Apache-2.0

#include "bench/bare_pairing.h"

#include "ExtDevice/openssl_ptr.h"

#include <QByteArrayView>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <openssl/core_names.h>
#include <openssl/pem.h>
#include <vector>

namespace {

using namespace Velno;
using std::string;
using std::string_view;

const char identity[] = "UB1234567890";
const string requesterRandom(16, 'D');
const string responderRandom(16, 'E');
const string seed = responderRandom + requesterRandom;

const unsigned char *bytes(string_view text)
{
    return reinterpret_cast<const unsigned char *>(text.data());
}

unsigned char *bytes(string &text)
{
    return reinterpret_cast<unsigned char *>(text.data());
}

string fileContent(const string &path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

void add(string &body, const char *tag, string_view value)
{
    body += tag;
    if (value.size() > 255) {
        body += '\x82';
        body += char(value.size() >> 8);
    } else if (value.size() > 127) {
        body += '\x81';
    }
    body += char(value.size() & 0xFF);
    body += value;
}

/** Reads the length field at `position` and moves behind it. */
size_t takeLength(string_view data, size_t &position)
{
    const auto at = [&](size_t i) { return size_t(static_cast<unsigned char>(data.at(i))); };
    const size_t first = at(position++);
    if (first < 0x80)
        return first;
    if (first == 0x81)
        return at(position++);
    position += 2;
    return at(position - 2) * 256 + at(position - 1);
}

/** Fields of three-byte tags; views into the frame. */
class Fields
{
public:
    explicit Fields(string_view body)
    {
        for (size_t position = 0; position + 4 <= body.size();) {
            const string_view tag = body.substr(position, 3);
            position += 3;
            const size_t length = takeLength(body, position);
            m_fields.emplace_back(tag, body.substr(position, length));
            position += length;
        }
    }

    string_view operator[](string_view tag) const
    {
        const auto field =
            std::find_if(m_fields.begin(), m_fields.end(), [&](auto &f) { return f.first == tag; });
        return field == m_fields.end() ? string_view() : field->second;
    }

private:
    std::vector<std::pair<string_view, string_view>> m_fields;
};

string frame(const char *messageTag, string_view body)
{
    string inner = identity;
    add(inner, messageTag, body);
    const quint16 crc = qChecksum(QByteArrayView(inner.data(), qsizetype(inner.size())));
    inner += char(crc >> 8);
    inner += char(crc & 0xFF);
    string whole{char(inner.size() >> 8), char(inner.size() & 0xFF)};
    return whole += inner;
}

/** The body of the message in a frame whose CRC, identity and tag are right. */
string_view bodyOf(string_view frame, const char *messageTag)
{
    const size_t end = frame.size() - 2;
    const quint16 crc = qChecksum(QByteArrayView(frame.data(), qsizetype(end)));
    const bool right = static_cast<unsigned char>(frame[end]) == crc >> 8 &&
                       static_cast<unsigned char>(frame[end + 1]) == (crc & 0xFF) &&
                       frame.substr(0, 12) == identity && frame.substr(12, 3) == messageTag;
    require(right, "the bare conversation went wrong");
    size_t position = 15;
    const size_t length = takeLength(frame, position);
    return frame.substr(position, length);
}

void addHead(string &body)
{
    add(body, "\xDF\x82\x08", string("\0\0\1", 3));
    add(body, "\xDF\x82\x09", "\x26\x11\x21");
    add(body, "\xDF\x82\x0A", "\x12\x34\x56");
    add(body, "\xDF\xC1\x07", "VENDOR 1234");
    add(body, "\xDF\xC1\x08", "MODEL X");
    add(body, "\xDF\xC1\x09", "001A2B3C4D5E");
}

} // namespace

struct BarePairing::Kept
{
    PkeyPtr group, pair;
    PkeyCtxPtr keygen;
    string p;
    PkeyPtr signingKey;
    string certificatePem;
    X509Ptr certificate;
    X509StorePtr store;
    MacCtxPtr mac;
    MdCtxPtr md;
    MdPtr sha256;
    CipherPtr aes;
    CipherCtxPtr cipher;
    string hmacKey, iv, aesKey;

    string publicKey() const
    {
        BIGNUM *taken = nullptr;
        EVP_PKEY_get_bn_param(pair.get(), OSSL_PKEY_PARAM_PUB_KEY, &taken);
        const BnPtr number{taken};
        string key(256, '\0');
        BN_bn2binpad(number.get(), bytes(key), 256);
        return key;
    }

    void makePair()
    {
        EVP_PKEY *made = nullptr;
        require(EVP_PKEY_keygen(keygen.get(), &made) == 1, "no key pair");
        pair.reset(made);
    }

    string secret(string_view peerKey) const
    {
        const PkeyPtr peer{EVP_PKEY_new()};
        const PkeyCtxPtr ctx{EVP_PKEY_CTX_new_from_pkey(nullptr, pair.get(), nullptr)};
        size_t length = 256;
        string result(length, '\0');
        require(EVP_PKEY_copy_parameters(peer.get(), group.get()) == 1 &&
                    EVP_PKEY_set1_encoded_public_key(peer.get(), bytes(peerKey), peerKey.size()) == 1 &&
                    EVP_PKEY_derive_init(ctx.get()) == 1 &&
                    EVP_PKEY_derive_set_peer_ex(ctx.get(), peer.get(), 0) == 1 &&
                    EVP_PKEY_derive(ctx.get(), bytes(result), &length) == 1,
                "no secret");
        result.resize(length);
        return result;
    }

    string hmac(string_view key, const string &message) const
    {
        string result(32, '\0');
        size_t length = 0;
        EVP_MAC_init(mac.get(), bytes(key), key.size(), nullptr);
        EVP_MAC_update(mac.get(), bytes(message), message.size());
        EVP_MAC_final(mac.get(), bytes(result), &length, result.size());
        return result;
    }

    string prf(string_view key, const char *label) const
    {
        const string labelSeed = label + seed;
        return hmac(key, hmac(key, labelSeed) + labelSeed);
    }

    string encrypt(string_view plain, const string &start) const
    {
        string result(plain.size(), '\0');
        int length = 0;
        EVP_EncryptInit_ex2(cipher.get(), aes.get(), bytes(aesKey), bytes(start), nullptr);
        EVP_CIPHER_CTX_set_padding(cipher.get(), 0);
        EVP_EncryptUpdate(cipher.get(), bytes(result), &length, bytes(plain), int(plain.size()));
        return result;
    }

    /** Makes the keys; returns the key check value. */
    string makeKeys(const string &z)
    {
        const string master = prf(z, "GMP-3 istek");
        hmacKey = prf(master, "GMP-3 anahtarlar");
        iv = prf(hmacKey, "GMP-3 anahtarlar").substr(0, 16);
        aesKey = prf(iv, "GMP-3 anahtarlar");
        string check = encrypt(string(32, '\xFF'), iv);
        iv = check.substr(16);
        return check;
    }

    string sealedHash() const { return encrypt(string(32, '\x20') + string(32, 'h'), iv); }

    bool trusted(string_view pem) const
    {
        if (pem != certificatePem) // parsed when it was first seen
            return false;
        const X509StoreCtxPtr ctx{X509_STORE_CTX_new()};
        return X509_STORE_CTX_init(ctx.get(), store.get(), certificate.get(), nullptr) == 1 &&
               X509_verify_cert(ctx.get()) == 1;
    }

    bool signedBy(string_view key, string_view signature) const
    {
        EVP_MD_CTX_reset(md.get());
        return EVP_DigestVerifyInit(md.get(), nullptr, sha256.get(), nullptr,
                                    X509_get0_pubkey(certificate.get())) == 1 &&
               EVP_DigestVerify(md.get(), bytes(signature), signature.size(), bytes(key), key.size()) == 1;
    }

    string sign(const string &key) const
    {
        string signature(256, '\0');
        size_t length = signature.size();
        EVP_MD_CTX_reset(md.get());
        require(EVP_DigestSignInit(md.get(), nullptr, sha256.get(), nullptr, signingKey.get()) == 1 &&
                    EVP_DigestSign(md.get(), bytes(signature), &length, bytes(key), key.size()) == 1,
                "no signature");
        return signature;
    }
};

namespace {

PkeyPtr makeGroup()
{
    const PkeyCtxPtr ctx{EVP_PKEY_CTX_new_from_name(nullptr, "DH", nullptr)};
    char name[] = "modp_2048";
    const OSSL_PARAM params[] = {OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, name, 0),
                                 OSSL_PARAM_construct_end()};
    EVP_PKEY *group = nullptr;
    EVP_PKEY_fromdata_init(ctx.get());
    require(EVP_PKEY_fromdata(ctx.get(), &group, EVP_PKEY_KEY_PARAMETERS, const_cast<OSSL_PARAM *>(params)) ==
                1,
            "no group");
    return PkeyPtr{group};
}

MacCtxPtr makeMac()
{
    const MacPtr hmac{EVP_MAC_fetch(nullptr, "HMAC", nullptr)};
    MacCtxPtr ctx{EVP_MAC_CTX_new(hmac.get())};
    char name[] = "SHA256";
    const OSSL_PARAM params[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, name, 0),
                                 OSSL_PARAM_construct_end()};
    EVP_MAC_CTX_set_params(ctx.get(), params);
    return ctx;
}

X509StorePtr makeStore(const string &pem)
{
    X509StorePtr store{X509_STORE_new()};
    const BioPtr bio{BIO_new_mem_buf(pem.data(), int(pem.size()))};
    while (const X509Ptr anchor{PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr)})
        X509_STORE_add_cert(store.get(), anchor.get());
    return store;
}

} // namespace

BarePairing::BarePairing(const string &authority)
    : m_kept(std::make_unique<Kept>())
{
    Kept &kept = *m_kept;
    kept.group = makeGroup();
    kept.keygen.reset(EVP_PKEY_CTX_new_from_pkey(nullptr, kept.group.get(), nullptr));
    EVP_PKEY_keygen_init(kept.keygen.get());
    const BnPtr p{BN_get_rfc3526_prime_2048(nullptr)};
    kept.p.resize(256);
    BN_bn2bin(p.get(), bytes(kept.p));
    kept.certificatePem = fileContent(authority + "/register/client.crt");
    const string key = fileContent(authority + "/register/client.key");
    const BioPtr keyBio{BIO_new_mem_buf(key.data(), int(key.size()))};
    kept.signingKey.reset(PEM_read_bio_PrivateKey(keyBio.get(), nullptr, nullptr, nullptr));
    const BioPtr certificateBio{BIO_new_mem_buf(kept.certificatePem.data(), int(kept.certificatePem.size()))};
    kept.certificate.reset(PEM_read_bio_X509(certificateBio.get(), nullptr, nullptr, nullptr));
    require(kept.signingKey && kept.certificate, "the development authority could not be read");
    kept.store = makeStore(fileContent(authority + "/trust-anchors.pem"));
    kept.mac = makeMac();
    kept.md.reset(EVP_MD_CTX_new());
    kept.sha256.reset(EVP_MD_fetch(nullptr, "SHA256", nullptr));
    kept.aes.reset(EVP_CIPHER_fetch(nullptr, "AES-256-CBC", nullptr));
    kept.cipher.reset(EVP_CIPHER_CTX_new());
}

BarePairing::~BarePairing() = default;

bool BarePairing::request(const BareSocket &socket)
{
    Kept &kept = *m_kept;
    string body;
    addHead(body);
    add(body, "\xDF\xEF\x0B", "1.0.0.0");
    add(body, "\xDF\xC1\x0D", requesterRandom);
    socket.write(frame("\xFF\x8A\x60", body));
    const string first = socket.readFrame();
    const Fields start(bodyOf(first, "\xFF\x8E\x60"));
    if (start["\xDF\xEF\x06"] != "00" || start["\xDF\xEF\x0C"] != kept.p ||
        !kept.trusted(start["\xDF\xEF\x01"]))
        return false;

    kept.makePair();
    body.clear();
    addHead(body);
    for (const char *tag : {"\xDF\xC1\x0A", "\xDF\xC1\x0B", "\xDF\xC1\x0C"})
        add(body, tag, start[tag]);
    add(body, "\xDF\xEF\x03", kept.publicKey());
    add(body, "\xDF\xEF\x09", start["\xDF\xEF\x09"]);
    socket.write(frame("\xFF\x8A\x62", body));
    const string second = socket.readFrame();
    const Fields exchange(bodyOf(second, "\xFF\x8E\x62"));
    const string_view peerKey = exchange["\xDF\xEF\x03"];
    if (exchange["\xDF\xEF\x06"] != "00" || !kept.signedBy(peerKey, exchange["\xDF\xEF\x0A"]))
        return false;

    body.clear();
    addHead(body);
    for (const char *tag : {"\xDF\xC1\x0A", "\xDF\xC1\x0B", "\xDF\xC1\x0C"})
        add(body, tag, start[tag]);
    add(body, "\xDF\xEF\x0E", kept.makeKeys(kept.secret(peerKey)));
    add(body, "\xDF\xEF\x09", exchange["\xDF\xEF\x09"]);
    add(body, "\xDF\xE0\x04", kept.sealedHash());
    socket.write(frame("\xFF\x8A\x63", body));
    const string third = socket.readFrame();
    return Fields(bodyOf(third, "\xFF\x8E\x63"))["\xDF\xEF\x06"] == "00";
}

void BarePairing::respond(const BareSocket &socket)
{
    Kept &kept = *m_kept;
    const string index(1, '\0');
    const auto echo = [](string &body, const Fields &request) {
        for (const char *tag : {"\xDF\x82\x08", "\xDF\x82\x09", "\xDF\x82\x0A"})
            add(body, tag, request[tag]);
    };
    const string first = socket.readFrame();
    if (first.empty())
        return;
    string body;
    echo(body, Fields(bodyOf(first, "\xFF\x8A\x60")));
    add(body, "\xDF\xC1\x0A", "DALMORIVEN");
    add(body, "\xDF\xC1\x0B", "m120");
    add(body, "\xDF\xC1\x0C", identity);
    add(body, "\xDF\xEF\x0B", "1.0.0.0");
    add(body, "\xDF\xEF\x01", kept.certificatePem);
    add(body, "\xDF\xEF\x0C", kept.p);
    add(body, "\xDF\xEF\x0D", "\x02");
    add(body, "\xDF\xEF\x06", "00");
    add(body, "\xDF\xEF\x09", index);
    add(body, "\xDF\xC1\x0E", responderRandom);
    socket.write(frame("\xFF\x8E\x60", body));

    const string second = socket.readFrame();
    const Fields exchange(bodyOf(second, "\xFF\x8A\x62"));
    kept.makePair();
    const string publicKey = kept.publicKey();
    body.clear();
    echo(body, exchange);
    add(body, "\xDF\xEF\x03", publicKey);
    add(body, "\xDF\xEF\x06", "00");
    add(body, "\xDF\xEF\x09", index);
    add(body, "\xDF\xEF\x0A", kept.sign(publicKey));
    socket.write(frame("\xFF\x8E\x62", body));

    const string third = socket.readFrame();
    const Fields confirm(bodyOf(third, "\xFF\x8A\x63"));
    const bool right = kept.makeKeys(kept.secret(exchange["\xDF\xEF\x03"])) == confirm["\xDF\xEF\x0E"] &&
                       kept.sealedHash() == confirm["\xDF\xE0\x04"];
    body.clear();
    echo(body, confirm);
    add(body, "\xDF\xEF\x06", right ? "00" : "02");
    add(body, "\xDF\xEF\x02", string(2, '\0'));
    add(body, "\xDF\xEF\x09", index);
    socket.write(frame("\xFF\x8E\x63", body));
}
