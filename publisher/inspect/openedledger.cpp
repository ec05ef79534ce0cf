// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "inspect/openedledger.h"

#include "publish/layout.h"
#include "sources/ledgerformat.h"

#include <QDataStream>
#include <QDir>
#include <QFile>

namespace nk::pm::publisher {

namespace {

/// The ledger in a client's own file, behind its ETag; null if \a content is no such file.
QByteArray unwrapped(const QByteArray &content)
{
    QDataStream stream(content);
    QByteArray etag;
    QByteArray ledger;
    stream >> etag >> ledger;
    return stream.status() == QDataStream::Ok && stream.atEnd() ? ledger : QByteArray();
}

} // namespace

OpenedLedger openLedger(const QString &path)
{
    OpenedLedger result;
    const bool isDirectory = QFileInfo(path).isDir();
    if (isDirectory)
        result.publication = path;
    QFile file(isDirectory ? Layout(path).ledgerFile() : path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.fault =
            QStringLiteral("can't read \"%1\": %2").arg(file.fileName(), file.errorString());
        return result;
    }
    result.bytes = file.readAll();
    if (file.error() != QFile::NoError)
        result.fault =
            QStringLiteral("can't read \"%1\": %2").arg(file.fileName(), file.errorString());
    if (!result.bytes.startsWith(ledger::magic)) {
        const QByteArray inner = unwrapped(result.bytes);
        if (!inner.isNull())
            result.bytes = inner;
    }
    return result;
}

} // namespace nk::pm::publisher
