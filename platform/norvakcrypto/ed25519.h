// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakcrypto/norvakcrypto_export.h>

#include <QByteArray>

#include <memory>

namespace nk::crypto::ed25519 {

/// An Ed25519 public key (RFC 8032), or none.
///
/// An implicitly shared value. All operations are safe on any thread, also on one shared key.
class NORVAK_CRYPTO_EXPORT PublicKey
{
public:
    /// No key: isValid() is false and verify() refuses everything.
    PublicKey();

    /// The key of one PEM block "PUBLIC KEY" that is all of \a pem but for line ends (LF or CRLF)
    /// and white space around it. Invalid for anything else.
    static PublicKey fromPEM(const QByteArray &pem);
    /// The key of \a der, a SubjectPublicKeyInfo of exactly 44 bytes (RFC 8410). Invalid for
    /// anything else, and for a point with which signatures can be forged (small order) or that no
    /// key generation gives (off the curve, not in the main subgroup, not in reduced form).
    static PublicKey fromDER(const QByteArray &der);

    bool isValid() const;

    /// True if \a signature is this key's signature, 64 bytes, of the whole \a message.
    bool verify(const QByteArray &signature, const QByteArray &message) const;

    /// What fromDER() reads, 44 bytes; empty for an invalid key.
    QByteArray toDER() const;
    /// What fromPEM() reads, 113 bytes with the last line's end; empty for an invalid key.
    QByteArray toPEM() const;

private:
    friend class PrivateKey;
    QByteArray m_point; // 32 bytes, or empty
};

/// An Ed25519 private key, or none; the publisher's side.
///
/// An implicitly shared value, safe on any thread. The key's bytes are overwritten when its last
/// copy goes.
class NORVAK_CRYPTO_EXPORT PrivateKey
{
public:
    /// No key: isValid() is false and sign() gives nothing.
    PrivateKey();

    /// A new key from the system's random numbers.
    static PrivateKey generate();
    /// The key of one PEM block "PRIVATE KEY", a PKCS#8 structure of 48 bytes as in section 7 of
    /// RFC 8410, without attributes and public half. White space as for PublicKey::fromPEM();
    /// invalid for anything else. \a pem stays with the caller, who may want to overwrite it.
    static PrivateKey fromPEM(const QByteArray &pem);

    bool isValid() const;

    /// The public half; invalid if this key is.
    PublicKey publicKey() const;
    /// The signature of \a message, 64 bytes, always the same for the same message; empty for an
    /// invalid key.
    QByteArray sign(const QByteArray &message) const;
    /// What fromPEM() reads; empty for an invalid key. The caller looks after the secret.
    QByteArray toPEM() const;

private:
    struct Secret;
    std::shared_ptr<const Secret> m_secret;
};

} // namespace nk::crypto::ed25519
