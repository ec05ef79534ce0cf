// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "publish/layout.h"

#include <QtEndian>

namespace nk::pm::publisher {

namespace {

constexpr qint64 startOf1980 = 315532800;
constexpr quint32 thirtyBits = (1U << 30) - 1; // about 34 years

} // namespace

Layout::Layout(const QString &root)
    : m_root(root)
{}

QString Layout::filesDirectory() const
{
    return m_root + QStringLiteral("/api/v1/ledger");
}

QString Layout::ledgerFile() const
{
    return filesDirectory() + QStringLiteral("/index.html");
}

QString Layout::contentFile(const QByteArray &digest) const
{
    return filesDirectory() + u'/' + QString::fromLatin1(digest.toHex());
}

QString Layout::stateDirectory() const
{
    return m_root + QStringLiteral("/.nkledger");
}

QString Layout::lockFile() const
{
    return stateDirectory() + QStringLiteral("/lock");
}

QString Layout::stagingDirectory() const
{
    return stateDirectory() + QStringLiteral("/staging");
}

QString Layout::stagedFile(const QByteArray &digest) const
{
    return stagingDirectory() + u'/' + QString::fromLatin1(digest.toHex());
}

QString Layout::ledgerMark() const
{
    return stateDirectory() + QStringLiteral("/ledger");
}

qint64 modificationTime(const QByteArray &digest)
{
    return startOf1980 + (qFromBigEndian<quint32>(digest.constData()) & thirtyBits);
}

QByteArray entityTag(qint64 modificationTime, qint64 size)
{
    return '"' + QByteArray::number(modificationTime, 16) + '-' + QByteArray::number(size, 16)
           + '"';
}

} // namespace nk::pm::publisher
