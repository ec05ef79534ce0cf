// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakcrypto/ed25519.h"

#include "norvakcrypto/keyencoding.h"

#include <sodium.h>

#include <array>

namespace nk::crypto::ed25519 {

namespace {

constexpr int publicKeySize = crypto_sign_ed25519_PUBLICKEYBYTES;
constexpr int seedSize = crypto_sign_ed25519_SEEDBYTES;
constexpr int signatureSize = crypto_sign_ed25519_BYTES;

// SEQUENCE { SEQUENCE { OID 1.3.101.112 }, BIT STRING (no unused bits) } up to the 32 key bytes.
QByteArray publicKeyPrefix()
{
    return QByteArrayLiteral("\x30\x2a\x30\x05\x06\x03\x2b\x65\x70\x03\x21\x00");
}

// SEQUENCE { INTEGER 0, SEQUENCE { OID 1.3.101.112 }, OCTET STRING { OCTET STRING } } up to the
// seed.
QByteArray privateKeyPrefix()
{
    return QByteArrayLiteral("\x30\x2e\x02\x01\x00\x30\x05\x06\x03\x2b\x65\x70\x04\x22\x04\x20");
}

constexpr char publicKeyLabel[] = "PUBLIC KEY";
constexpr char privateKeyLabel[] = "PRIVATE KEY";

bool sodiumReady()
{
    static const bool ready = sodium_init() >= 0;
    return ready;
}

const unsigned char *bytes(const QByteArray &array)
{
    return reinterpret_cast<const unsigned char *>(array.constData());
}

unsigned char *bytes(QByteArray &array)
{
    return reinterpret_cast<unsigned char *>(array.data());
}

// Overwrites the array's memory when the scope ends, whichever way.
class Wiper
{
public:
    explicit Wiper(QByteArray &array)
        : m_array(array)
    {}
    ~Wiper() { sodium_memzero(m_array.data(), size_t(m_array.size())); }

private:
    Q_DISABLE_COPY(Wiper)
    QByteArray &m_array;
};

} // namespace

PublicKey::PublicKey() = default;

PublicKey PublicKey::fromPEM(const QByteArray &pem)
{
    return fromDER(pemDecode(publicKeyLabel, pem));
}

PublicKey PublicKey::fromDER(const QByteArray &der)
{
    PublicKey key;
    if (der.size() != publicKeyPrefix().size() + publicKeySize
        || !der.startsWith(publicKeyPrefix()))
        return key;
    const QByteArray point = der.mid(publicKeyPrefix().size());
    if (sodiumReady() && crypto_core_ed25519_is_valid_point(bytes(point)) == 1)
        key.m_point = point;
    return key;
}

bool PublicKey::isValid() const
{
    return !m_point.isEmpty();
}

bool PublicKey::verify(const QByteArray &signature, const QByteArray &message) const
{
    return isValid() && signature.size() == signatureSize
           && crypto_sign_ed25519_verify_detached(
                  bytes(signature), bytes(message), quint64(message.size()), bytes(m_point))
                  == 0;
}

QByteArray PublicKey::toDER() const
{
    return isValid() ? publicKeyPrefix() + m_point : QByteArray();
}

QByteArray PublicKey::toPEM() const
{
    return isValid() ? pemEncode(publicKeyLabel, toDER()) : QByteArray();
}

// The seed and, behind it, the public half: what sign() takes.
struct PrivateKey::Secret
{
    std::array<unsigned char, crypto_sign_ed25519_SECRETKEYBYTES> bytes{};

    Secret() = default;
    Secret(const Secret &) = delete;
    Secret &operator=(const Secret &) = delete;
    ~Secret() { sodium_memzero(bytes.data(), bytes.size()); }
};

PrivateKey::PrivateKey() = default;

PrivateKey PrivateKey::generate()
{
    PrivateKey key;
    std::array<unsigned char, publicKeySize> point;
    auto secret = std::make_shared<Secret>();
    if (sodiumReady() && crypto_sign_ed25519_keypair(point.data(), secret->bytes.data()) == 0)
        key.m_secret = secret;
    return key;
}

PrivateKey PrivateKey::fromPEM(const QByteArray &pem)
{
    PrivateKey key;
    QByteArray der = pemDecode(privateKeyLabel, pem);
    const Wiper wiper(der);
    if (der.size() != privateKeyPrefix().size() + seedSize || !der.startsWith(privateKeyPrefix()))
        return key;
    std::array<unsigned char, publicKeySize> point;
    auto secret = std::make_shared<Secret>();
    const unsigned char *seed = bytes(std::as_const(der)) + privateKeyPrefix().size();
    if (sodiumReady()
        && crypto_sign_ed25519_seed_keypair(point.data(), secret->bytes.data(), seed) == 0)
        key.m_secret = secret;
    return key;
}

bool PrivateKey::isValid() const
{
    return m_secret != nullptr;
}

PublicKey PrivateKey::publicKey() const
{
    PublicKey key;
    if (!isValid())
        return key;
    key.m_point.resize(publicKeySize);
    crypto_sign_ed25519_sk_to_pk(bytes(key.m_point), m_secret->bytes.data());
    return key;
}

QByteArray PrivateKey::sign(const QByteArray &message) const
{
    if (!isValid())
        return {};
    QByteArray signature(signatureSize, Qt::Uninitialized);
    crypto_sign_ed25519_detached(
        bytes(signature), nullptr, bytes(message), quint64(message.size()), m_secret->bytes.data());
    return signature;
}

QByteArray PrivateKey::toPEM() const
{
    if (!isValid())
        return {};
    QByteArray der;
    der.reserve(privateKeyPrefix().size() + seedSize); // one buffer, so that one wiping is enough
    der += privateKeyPrefix();
    der.append(reinterpret_cast<const char *>(m_secret->bytes.data()), seedSize);
    const Wiper wiper(der);
    return pemEncode(privateKeyLabel, der);
}

} // namespace nk::crypto::ed25519
