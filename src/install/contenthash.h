// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QCryptographicHash>

#include <memory>

using EVP_MD_CTX = struct evp_md_ctx_st;

namespace nk::pm {

/// QCryptographicHash, but of the store's two algorithms with the processor's own instructions
/// where it has them: Qt's SHA-224 takes seven to ten times as long.
class ContentHash
{
public:
    explicit ContentHash(QCryptographicHash::Algorithm algorithm);

    /// Forgets everything.
    void reset();
    void addData(const char *data, qint64 size);
    void addData(const QByteArray &data) { addData(data.constData(), data.size()); }
    /// Reads \a device to its end. False if that breaks off.
    bool addData(QIODevice *device);
    /// The digest, in its raw form. Once, until reset().
    QByteArray result();

private:
    struct Free
    {
        void operator()(EVP_MD_CTX *context) const;
    };

    const QCryptographicHash::Algorithm m_algorithm;
    std::unique_ptr<EVP_MD_CTX, Free> m_context; // null if Qt has to do it
    QCryptographicHash m_slow;
};

} // namespace nk::pm
