// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/contenthash.h"

#include <QIODevice>

#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace nk::pm {

namespace {

constexpr int blockSize = 256 * 1024; // bytes

/// Null where a system's policy forbids one.
struct Implementations
{
    /// The look-up leaves a record of errors with its thread, which nobody frees if the thread
    /// lives as long as the process.
    Implementations() { OPENSSL_thread_stop(); }

    const EVP_MD *const md5 = EVP_MD_fetch(nullptr, "MD5", nullptr);
    const EVP_MD *const sha224 = EVP_MD_fetch(nullptr, "SHA224", nullptr);
};

/// Null for the other algorithms, and where a system's policy forbids MD5.
const EVP_MD *implementation(QCryptographicHash::Algorithm algorithm)
{
    // Looking them up takes a lock, so once is enough.
    static const Implementations found;
    switch (algorithm) {
    case QCryptographicHash::Md5:
        return found.md5;
    case QCryptographicHash::Sha224:
        return found.sha224;
    default:
        return nullptr;
    }
}

} // namespace

void ContentHash::Free::operator()(EVP_MD_CTX *context) const
{
    EVP_MD_CTX_free(context);
}

ContentHash::ContentHash(QCryptographicHash::Algorithm algorithm)
    : m_algorithm(algorithm)
    , m_slow(algorithm)
{
    if (implementation(algorithm))
        m_context.reset(EVP_MD_CTX_new());
    reset();
}

void ContentHash::reset()
{
    m_slow.reset();
    if (m_context && EVP_DigestInit_ex2(m_context.get(), implementation(m_algorithm), nullptr) != 1)
        m_context.reset();
}

void ContentHash::addData(const char *data, qint64 size)
{
    if (m_context)
        EVP_DigestUpdate(m_context.get(), data, size_t(size));
    else
        m_slow.addData(data, int(size));
}

bool ContentHash::addData(QIODevice *device)
{
    QByteArray block(blockSize, Qt::Uninitialized);
    qint64 count = 0;
    while ((count = device->read(block.data(), block.size())) > 0)
        addData(block.constData(), count);
    return count == 0;
}

QByteArray ContentHash::result()
{
    if (!m_context)
        return m_slow.result();
    QByteArray digest(QCryptographicHash::hashLength(m_algorithm), '\0');
    EVP_DigestFinal_ex(m_context.get(), reinterpret_cast<unsigned char *>(digest.data()), nullptr);
    return digest;
}

} // namespace nk::pm
