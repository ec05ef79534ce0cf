// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/packageserveraccessor.h"

#include "install/filestore.h"
#include "install/packageserverinstaller.h"
#include "sources/ledgerfileproxy.h"
#include "sources/ledgerformat.h"
#include "sources/ledgerloader.h"
#include "sources/trustkey.h"
#include "sources/verifiedsignatures.h"

#include <norvakaccount/service.h>

#include <QJsonDocument>
#include <QPointer>

#include <algorithm>

namespace nk::pm {

using nk::crypto::ed25519::PublicKey;

struct PackageServerAccessorPrivate
{
    PackageServerAccessor *q;
    QPointer<nk::account::Service> service;
    QByteArray ledger; // never changed: the tables are views of it
    PublicKey trustKey;
    QSharedPointer<FileStore> fileStore;
    LedgerTables tables;
    std::unique_ptr<LedgerFileProxy> fileProxy; // null until a file isn't in the store

    LedgerFileProxy &proxy();
    QString idOf(int index, bool ofPackage) const;
    /// What is installed of a package.
    QHash<QByteArray, QString> namesByHash(int index) const;
};

LedgerFileProxy &PackageServerAccessorPrivate::proxy()
{
    if (!fileProxy)
        fileProxy = std::make_unique<LedgerFileProxy>(ledger, tables.packages, service, fileStore);
    return *fileProxy;
}

// Nothing for an index that the ledger doesn't have: nobody has checked it so far.
QString PackageServerAccessorPrivate::idOf(int index, bool ofPackage) const
{
    const int count = ofPackage ? tables.packages.size() : tables.keywords.size();
    if (index < 0 || index >= count)
        return {};
    return (ofPackage ? tables.packages.at(index).id : tables.keywords.at(index).id).text();
}

static KeywordString keywordString(const QString &language, const LedgerString &forms)
{
    const QList<QByteArray> parts = forms.bytes().split(ledger::formSeparator);
    KeywordString string;
    string.language = language;
    string.string = QString::fromUtf8(parts.first());
    string.plural = QString::fromUtf8(parts.value(1));
    return string;
}

QHash<QByteArray, QString> PackageServerAccessorPrivate::namesByHash(int index) const
{
    QHash<QByteArray, QString> names;
    const auto files = tables.packages.at(index).files.sortedUnique();
    for (const LedgerFile &file : files) {
        const QByteArray hash(file.hash, ledger::hashSize);
        if (!names.contains(hash)) // of equal files, always the same one is installed
            names.insert(hash, file.name.text());
    }
    return names;
}

PackageServerAccessor::PackageServerAccessor(
    nk::account::Service *service, const QByteArray &ledger)
    : PackageServerAccessor(service, ledger, PublicKey::fromPEM(ledger::trustKeyPem()))
{}

PackageServerAccessor::PackageServerAccessor(
    nk::account::Service *service, const QByteArray &ledger, const PublicKey &trustKey)
    : d(new PackageServerAccessorPrivate{
        this, service, ledger, trustKey, FileStore::instance(), {}, nullptr})
{}

PackageServerAccessor::~PackageServerAccessor()
{
    LedgerFileProxy::release(std::move(d->fileProxy));
}

void PackageServerAccessor::load()
{
    d->tables = loadLedger(d->ledger, d->trustKey, VerifiedSignatures::instance());
}

int PackageServerAccessor::packageCount() const
{
    return d->tables.packages.size();
}

PackageInfo PackageServerAccessor::packageInfo(int index) const
{
    const PackageEntry &package = d->tables.packages.at(index);
    const auto revision = QByteArray::fromRawData(package.signature, ledger::revisionSignatureSize);
    PackageInfo info;
    info.id = package.id.text();
    info.type = d->tables.types.at(package.typeIndex).text();
    info.revision = QString::fromLatin1(revision.toBase64());
    return info;
}

QJsonObject PackageServerAccessor::manifest(int index) const
{
    QJsonParseError error;
    const QByteArray text = d->tables.packages.at(index).manifest.bytes();
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError)
        qCCritical(ledgerLog) << "Package manifest parsing failed:" << error.errorString();
    return document.object();
}

QUrl PackageServerAccessor::fileUrl(int index, const QString &fileName) const
{
    const PackageEntry &package = d->tables.packages.at(index);
    const char *hash = package.files.hashOf(fileName.toUtf8());
    if (!hash)
        return {};
    const QString digest = QString::fromLatin1(fileDigest(hash));
    if (d->fileStore->contains(digest))
        return QUrl::fromLocalFile(d->fileStore->filePath(digest));
    return d->proxy().url(package.id.text(), fileName);
}

std::unique_ptr<PackageInstaller> PackageServerAccessor::createInstaller(
    int index, const InstallLocation &location) const
{
    return std::make_unique<PackageServerInstaller>(
        d->namesByHash(index), d->service, d->fileStore, location);
}

int PackageServerAccessor::keywordCount() const
{
    return d->tables.keywords.size();
}

KeywordInfo PackageServerAccessor::keywordInfo(int index) const
{
    const LedgerKeyword &keyword = d->tables.keywords.at(index);
    KeywordInfo info;
    info.id = keyword.id.text();
    info.type = keyword.type;
    for (auto group = keyword.strings.cbegin(); group != keyword.strings.cend(); ++group) {
        const QString language = d->tables.languages.at(group.key()).text();
        for (const LedgerString &forms : group.value())
            info.strings.append(keywordString(language, forms));
    }
    return info;
}

QStringList PackageServerAccessor::languages() const
{
    QStringList languages;
    for (const LedgerString &language : qAsConst(d->tables.languages))
        languages.append(language.text());
    return languages;
}

int PackageServerAccessor::linkCount() const
{
    return d->tables.links.size();
}

LinkInfo PackageServerAccessor::linkInfo(int index) const
{
    const LedgerLink &link = d->tables.links.at(index);
    LinkInfo info;
    info.type = link.type;
    info.from = d->idOf(link.from, link.isFromPackage());
    info.to = d->idOf(link.to, link.isToPackage());
    return info;
}

/// The key and not the labels beside it, which nobody has signed.
QByteArray PackageServerAccessor::issuerKey(int index) const
{
    const LedgerIssuer &issuer = d->tables.issuers.at(d->tables.packages.at(index).issuerIndex);
    return QByteArray(issuer.publicKey.data, issuer.publicKey.length);
}

bool PackageServerAccessor::isRefused() const
{
    return !d->ledger.isEmpty() && !d->tables.verified;
}

std::optional<QVector<PackageFileInfo>> PackageServerAccessor::files(int index) const
{
    QVector<PackageFileInfo> files;
    const auto names = d->namesByHash(index);
    for (auto name = names.begin(); name != names.end(); ++name)
        files.append({name.value(), -1, QString::fromLatin1(name.key().toHex())});
    std::sort(files.begin(), files.end(), [](const PackageFileInfo &a, const PackageFileInfo &b) {
        return a.name < b.name;
    });
    return files;
}

std::function<nk::Request *()> PackageServerAccessor::fileDownload(const QString &digest) const
{
    const QByteArray hash = QByteArray::fromHex(digest.toLatin1());
    const auto &packages = d->tables.packages;
    const bool isListed = std::any_of(packages.cbegin(), packages.cend(), [&](const auto &package) {
        return package.files.hasHash(hash);
    });
    return isListed ? PackageServerInstaller::download(digest.toLower(), d->service)
                    : std::function<nk::Request *()>();
}

void PackageServerAccessor::requestFile(const QUrl &url)
{
    d->proxy().requestFile(url);
}

} // namespace nk::pm
