// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/certificates.h"

#include "ExtDevice/gmp3/log.h"
#include "ExtDevice/openssl_ptr.h"

#include <mutex>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

using namespace Qt::StringLiterals;

namespace Velno::GMP {

namespace {

constexpr int leastKeyBits = 2048;

/**
 * The object that was made last, kept with the text it was made from: parsing costs ten times a check. Shared
 * by all threads, not one for each: a thread that is still ending frees its own after the process has begun
 * to clean up.
 */
template <typename Ptr, auto UpRef>
class LastMade
{
public:
    /** A reference of the caller's own; null when the text cannot be made into an object. */
    template <typename Make>
    Ptr get(const QByteArray &wanted, Make make)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_object || m_text != wanted) {
            m_object = make(wanted);
            m_text = QByteArray(wanted.constData(), wanted.size()); // the caller may hold a view only
        }
        if (m_object)
            UpRef(m_object.get());
        return Ptr{m_object.get()};
    }

private:
    std::mutex m_mutex;
    QByteArray m_text;
    Ptr m_object;
};

/** Encrypted PEM gets no password: OpenSSL would ask for one on the terminal. */
int noPassword(char *, int, int, void *)
{
    return -1;
}

BioPtr reader(const QByteArray &text)
{
    return BioPtr{BIO_new_mem_buf(text.constData(), int(text.size()))};
}

X509Ptr parseCertificate(const QByteArray &pem)
{
    const BioPtr bio = reader(pem);
    return X509Ptr{bio ? PEM_read_bio_X509(bio.get(), nullptr, noPassword, nullptr) : nullptr};
}

PkeyPtr parsePrivateKey(const QByteArray &pem)
{
    const BioPtr bio = reader(pem);
    return PkeyPtr{bio ? PEM_read_bio_PrivateKey(bio.get(), nullptr, noPassword, nullptr) : nullptr};
}

/** Every certificate that ends with the marker and a line feed; what does not parse is skipped. */
X509StorePtr makeStore(const QByteArray &chain)
{
    static const QByteArray marker = "-----END CERTIFICATE-----\n"_ba;
    X509StorePtr store{X509_STORE_new()};
    for (qsizetype start = 0, found; store && (found = chain.indexOf(marker, start)) >= 0;) {
        const qsizetype end = found + marker.size();
        if (const X509Ptr anchor = parseCertificate(chain.mid(start, end - start)))
            X509_STORE_add_cert(store.get(), anchor.get());
        start = end;
    }
    return store;
}

X509Ptr certificateOf(const QByteArray &pem)
{
    static LastMade<X509Ptr, X509_up_ref> last;
    return last.get(pem, parseCertificate);
}

X509StorePtr storeOf(const QByteArray &chain)
{
    static LastMade<X509StorePtr, X509_STORE_up_ref> last;
    return last.get(chain, makeStore);
}

/** Digests under which two certificates with one signature can be made. */
bool isBrokenDigest(int digest)
{
    return digest == NID_md2 || digest == NID_md4 || digest == NID_md5;
}

/** Why a certificate whose chain is good is none of a register; null when nothing speaks against it. */
const char *registerFault(X509 *x509)
{
    const EVP_PKEY *key = X509_get0_pubkey(x509);
    int digest = NID_undef;
    if (!key || !EVP_PKEY_is_a(key, "RSA"))
        return "its key is not RSA";
    if (EVP_PKEY_get_bits(key) < leastKeyBits)
        return "its key is shorter than 2048 bits";
    if (X509_get_signature_info(x509, &digest, nullptr, nullptr, nullptr) != 1 || isBrokenDigest(digest))
        return "it is signed with MD5 or worse";
    // The first alone passes an authority whose key is not for certificates.
    if (X509_check_ca(x509) != 0 || (X509_get_extension_flags(x509) & EXFLAG_CA) != 0)
        return "it is an authority's";
    // Without the extension a key may be used for everything: all bits are set then.
    if ((X509_get_key_usage(x509) & KU_DIGITAL_SIGNATURE) == 0)
        return "its key is not for signatures";
    return nullptr;
}

} // namespace

bool verifyCertificate(const QByteArray &certificate, const QByteArray &chain)
{
    if (certificate.isEmpty() || chain.isEmpty())
        return false;
    const X509StorePtr store = storeOf(chain);
    const X509Ptr x509 = store ? certificateOf(certificate) : nullptr;
    const X509StoreCtxPtr ctx{X509_STORE_CTX_new()};
    if (!x509 || !ctx || X509_STORE_CTX_init(ctx.get(), store.get(), x509.get(), nullptr) != 1)
        return false;
    if (X509_verify_cert(ctx.get()) != 1) {
        LogLine() << "Verificatione error: "
                  << X509_verify_cert_error_string(X509_STORE_CTX_get_error(ctx.get()));
        return false;
    }
    if (const char *const fault = registerFault(x509.get())) {
        LogLine() << "Certificate refused: " << fault;
        return false;
    }
    return true;
}

QByteArray openssl_signChecksum(const QByteArray &data, const QByteArray &privateKey)
{
    static LastMade<PkeyPtr, EVP_PKEY_up_ref> last;
    const PkeyPtr key = last.get(privateKey, parsePrivateKey);
    const MdCtxPtr ctx{EVP_MD_CTX_new()};
    size_t length = 0;
    if (!key || !EVP_PKEY_is_a(key.get(), "RSA") || !ctx ||
        EVP_DigestSignInit(ctx.get(), nullptr, EVP_sha256(), nullptr, key.get()) != 1 ||
        EVP_DigestSign(ctx.get(), nullptr, &length, octets(data), size_t(data.size())) != 1)
        return {};
    QByteArray signature(qsizetype(length), '\0');
    if (EVP_DigestSign(ctx.get(), octets(signature), &length, octets(data), size_t(data.size())) != 1)
        return {};
    signature.truncate(qsizetype(length));
    return signature;
}

bool verifyChecksum(const QByteArray &certificate, const QByteArray &data, const QByteArray &signature)
{
    const X509Ptr x509 = certificateOf(certificate);
    EVP_PKEY *key = x509 ? X509_get0_pubkey(x509.get()) : nullptr; // lent: x509 goes on owning it
    const MdCtxPtr ctx{EVP_MD_CTX_new()};
    return key && EVP_PKEY_is_a(key, "RSA") && ctx &&
           EVP_DigestVerifyInit(ctx.get(), nullptr, EVP_sha256(), nullptr, key) == 1 &&
           EVP_DigestVerify(ctx.get(), octets(signature), size_t(signature.size()), octets(data),
                            size_t(data.size())) == 1;
}

} // namespace Velno::GMP
