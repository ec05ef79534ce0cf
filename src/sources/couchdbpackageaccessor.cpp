// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/couchdbpackageaccessor.h"

#include "index/keywordtypes.h"
#include "index/linktypes.h"
#include "install/couchdbpackageinstaller.h"
#include "install/filestore.h"
#include "sources/keywordjson.h"

#include <QFile>
#include <QJsonDocument>
#include <QNetworkAccessManager>

namespace nk::pm {

namespace {

// Documents of all kinds share one space of "_id"s: the first characters tell the kind, such as
// "package:", and aren't part of the identifier.
constexpr int documentPrefixLength = 8;

QString identifier(const QJsonObject &document)
{
    return document.value(QLatin1String("_id")).toString().mid(documentPrefixLength);
}

QString text(const QJsonObject &document, const char *key)
{
    return document.value(QLatin1String(key)).toString();
}

} // namespace

CouchDBPackageAccessor::CouchDBPackageAccessor(
    const QString &path, const QUrl &url, QNetworkAccessManager *manager,
    std::shared_ptr<QTemporaryDir> directory)
    : m_url(url)
    , m_path(path)
    , m_directory(std::move(directory))
    , m_networkManager(manager)
    , m_fileStore(FileStore::instance())
{}

CouchDBPackageAccessor::~CouchDBPackageAccessor() = default;

QJsonArray CouchDBPackageAccessor::readRows()
{
    QFile file(m_path);
    if (m_path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject root = QJsonDocument::fromJson(file.read(maximumResponseSize)).object();
    const QJsonValue rows = root.value(QLatin1String("rows"));
    m_isRefused = !rows.isArray();
    return rows.toArray();
}

void CouchDBPackageAccessor::load()
{
    const QJsonArray rows = readRows();
    m_directory.reset();
    for (const QJsonValue &row : rows) {
        const QJsonObject object = row.toObject();
        const QString kind = object.value(QLatin1String("key")).toArray().at(0).toString();
        const int position = m_documents.size();
        m_documents.append(object.value(QLatin1String("value")).toObject());
        if (kind == QLatin1String("package"))
            m_packages.append(position);
        else if (kind == QLatin1String("keyword"))
            m_keywords.append(position);
        else
            m_links.append(position);
    }
}

int CouchDBPackageAccessor::packageCount() const
{
    return m_packages.size();
}

PackageInfo CouchDBPackageAccessor::packageInfo(int index) const
{
    const QJsonObject &document = m_documents.at(m_packages.at(index));
    return {identifier(document), text(document, "packageType"), text(document, "_rev")};
}

QJsonObject CouchDBPackageAccessor::manifest(int index) const
{
    return m_documents.at(m_packages.at(index)).value(QLatin1String("manifest")).toObject();
}

QUrl CouchDBPackageAccessor::fileUrl(int index, const QString &fileName) const
{
    const QString documentId = text(m_documents.at(m_packages.at(index)), "_id");
    return QUrl(
        m_url.toString() + QStringLiteral("/%1/%2").arg(documentId, fileName), QUrl::TolerantMode);
}

QUrl CouchDBPackageAccessor::documentUrl(const QJsonObject &document) const
{
    return QUrl(m_url.toString() + QStringLiteral("/%1/").arg(text(document, "_id")));
}

std::unique_ptr<PackageInstaller> CouchDBPackageAccessor::createInstaller(
    int index, const InstallLocation &location) const
{
    const QJsonObject &document = m_documents.at(m_packages.at(index));
    return std::make_unique<CouchDBPackageInstaller>(
        documentUrl(document), m_networkManager.data(), document, m_fileStore, location);
}

int CouchDBPackageAccessor::keywordCount() const
{
    return m_keywords.size();
}

KeywordInfo CouchDBPackageAccessor::keywordInfo(int index) const
{
    const QJsonObject &document = m_documents.at(m_keywords.at(index));
    KeywordInfo info;
    info.id = identifier(document);
    info.type = int(keywordTypeFromString(text(document, "keywordType")));
    info.strings = keywordStrings(info.type, document);
    return info;
}

QStringList CouchDBPackageAccessor::languages() const
{
    return {QStringLiteral("de"), QStringLiteral("en")};
}

int CouchDBPackageAccessor::linkCount() const
{
    return m_links.size();
}

LinkInfo CouchDBPackageAccessor::linkInfo(int index) const
{
    const QJsonObject &document = m_documents.at(m_links.at(index));
    LinkInfo info;
    info.from = text(document, "from");
    info.to = text(document, "to");
    info.type = linkTypeFromString(text(document, "linkType"));
    return info;
}

std::optional<QVector<PackageFileInfo>> CouchDBPackageAccessor::files(int index) const
{
    const auto attachments =
        m_documents.at(m_packages.at(index)).value(QLatin1String("_attachments")).toObject();
    QHash<QString, QString> namesByDigest; // of equal ones the last is installed
    for (auto attachment = attachments.begin(); attachment != attachments.end(); ++attachment)
        namesByDigest[text(attachment.value().toObject(), "digest")] = attachment.key();
    QStringList names = namesByDigest.values();
    names.sort();
    QVector<PackageFileInfo> files;
    for (const QString &name : qAsConst(names)) {
        const QJsonObject attachment = attachments.value(name).toObject();
        const QJsonValue size = attachment.value(QLatin1String("length"));
        files.append(
            {name, qint64(size.toDouble(-1)), CouchDBPackageInstaller::digestOf(attachment)});
    }
    return files;
}

std::function<nk::Request *()> CouchDBPackageAccessor::fileDownload(const QString &digest) const
{
    for (const int package : m_packages) {
        const QJsonObject &document = m_documents.at(package);
        const auto download = CouchDBPackageInstaller::download(
            digest.toLower(), documentUrl(document), m_networkManager.data(), document);
        if (download)
            return download;
    }
    return {};
}

} // namespace nk::pm
