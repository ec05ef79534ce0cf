// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/localpackageaccessor.h"

#include "index/keywordtypes.h"
#include "index/linktypes.h"
#include "install/localpackageinstaller.h"
#include "sources/keywordjson.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace nk::pm {

namespace {

constexpr qint64 longestJsonFile = 1024 * 1024; // bytes

/// The object in the JSON file \a path; empty if there is none.
QJsonObject readJsonObject(const QString &path, WholeFlag &isWhole)
{
    QFile file(path);
    if (!openFile(file, isWhole))
        return QJsonObject();
    const QByteArray json = file.read(longestJsonFile);
    noteRead(file, isWhole);
    return QJsonDocument::fromJson(json).object();
}

QString textOf(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toString();
}

/// What LocalPackageInstaller lays down of the directory \a path.
std::optional<QVector<PackageFileInfo>> filesIn(const QString &path)
{
    QVector<PackageFileInfo> files;
    WholeFlag isWhole{QFileInfo(path).isDir()};
    for (const DirectoryEntry &entry : readDirectory(path, isWhole)) {
        if (entry.kind == DirectoryEntry::Directory || entry.name == QLatin1String("manifest.json"))
            continue;
        std::error_code fault;
        const auto size =
            fs::file_size(fs::u8path((path + QLatin1Char('/') + entry.name).toStdString()), fault);
        if (fault)
            return {};
        files.append({entry.name, qint64(size), {}});
    }
    std::sort(files.begin(), files.end(), [](const PackageFileInfo &a, const PackageFileInfo &b) {
        return a.name < b.name;
    });
    return isWhole ? std::optional(files) : std::nullopt;
}

} // namespace

LocalPackageAccessor::LocalPackageAccessor(const QString &root)
    : m_root(QDir(root).absolutePath())
{}

LocalPackageAccessor::~LocalPackageAccessor() = default;

void LocalPackageAccessor::load()
{
    m_packages = scanPackages(m_root + QLatin1String("/packages"), m_manifests, m_isWhole);
    m_manifests.squeeze();
    m_keywords = listJsonFiles(QStringLiteral("dictionary"));
    m_links = listJsonFiles(QStringLiteral("links"));
}

QVector<QStringRef> LocalPackageAccessor::listJsonFiles(const QString &directory)
{
    QVector<QStringRef> result;
    for (const DirectoryEntry &entry :
         readDirectory(m_root + QLatin1Char('/') + directory, m_isWhole)) {
        if (entry.kind == DirectoryEntry::Directory
            || !entry.name.endsWith(QLatin1String(".json"), Qt::CaseInsensitive))
            continue;
        const QString name = QFileInfo(entry.name).baseName();
        result.append(QStringRef(&m_names, m_names.size(), name.size()));
        m_names.append(name);
    }
    return result;
}

int LocalPackageAccessor::packageCount() const
{
    return int(m_packages.size());
}

PackageInfo LocalPackageAccessor::packageInfo(int index) const
{
    const LocalPackageEntry &package = m_packages.at(std::size_t(index));
    return {package.id, package.type, QString()};
}

QJsonObject LocalPackageAccessor::manifest(int index) const
{
    const LocalPackageEntry &package = m_packages.at(std::size_t(index));
    return QJsonDocument::fromJson(m_manifests.view(package.manifest)).object();
}

QUrl LocalPackageAccessor::fileUrl(int index, const QString &fileName) const
{
    // The names are filled in last, and none of them is taken for an absolute path.
    const QString path = QDir(m_root).absoluteFilePath(QStringLiteral("packages/%1/%2/%3"));
    const QString &id = m_packages.at(std::size_t(index)).id;
    return QUrl::fromLocalFile(path.arg(typePath(index), id, fileName));
}

std::unique_ptr<PackageInstaller> LocalPackageAccessor::createInstaller(
    int index, const InstallLocation &location) const
{
    return std::make_unique<LocalPackageInstaller>(QDir(directoryPath(index)), location);
}

QString LocalPackageAccessor::directoryPath(int index) const
{
    const QString &id = m_packages.at(std::size_t(index)).id;
    const QString path = QStringLiteral("packages/%1/%2").arg(typePath(index), id);
    return QDir(m_root).absoluteFilePath(path);
}

QString LocalPackageAccessor::typePath(int index) const
{
    QString type = m_packages.at(std::size_t(index)).type;
    return type.replace(QLatin1Char(':'), QLatin1Char('/'));
}

int LocalPackageAccessor::keywordCount() const
{
    return m_keywords.size();
}

KeywordInfo LocalPackageAccessor::keywordInfo(int index) const
{
    const QString id = m_keywords.at(index).toString();
    const QJsonObject object =
        readJsonObject(m_root + QStringLiteral("/dictionary/%1.json").arg(id), m_isWhole);
    const int type = int(keywordTypeFromString(textOf(object, "type")));
    return {id, type, keywordStrings(type, object)};
}

QStringList LocalPackageAccessor::languages() const
{
    return {QStringLiteral("de"), QStringLiteral("en")};
}

int LocalPackageAccessor::linkCount() const
{
    return m_links.size();
}

LinkInfo LocalPackageAccessor::linkInfo(int index) const
{
    const QString name = m_links.at(index).toString();
    const QJsonObject object =
        readJsonObject(m_root + QStringLiteral("/links/%1.json").arg(name), m_isWhole);
    return {
        linkTypeFromString(textOf(object, "type")), textOf(object, "from"), textOf(object, "to")};
}

std::optional<QVector<PackageFileInfo>> LocalPackageAccessor::files(int index) const
{
    return filesIn(directoryPath(index));
}

} // namespace nk::pm
