// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/localpackageaccessor.h"

#include "index/keywordtypes.h"
#include "index/linktypes.h"
#include "install/localpackageinstaller.h"
#include "sources/keywordjson.h"

#include <QDir>
#include <QDirIterator>
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
QJsonObject readJsonObject(const QString &path)
{
    QFile file(path);
    // To open a pipe would be to wait for its other end.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return QJsonObject();
    return QJsonDocument::fromJson(file.read(longestJsonFile)).object();
}

QString textOf(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toString();
}

/// What LocalPackageInstaller lays down of the directory \a path. Unlike QDirIterator this tells an
/// error from the end.
std::optional<QVector<PackageFileInfo>> filesIn(const QString &path)
{
    QVector<PackageFileInfo> files;
    std::error_code error;
    fs::directory_iterator it(fs::u8path(path.toStdString()), error);
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
        const std::string bytes = it->path().filename().u8string();
        const QString name = QString::fromStdString(bytes);
        const bool isLegible = !name.startsWith(QLatin1Char('.')) && name.toStdString() == bytes;
        if (!isLegible || name == QLatin1String("manifest.json"))
            continue;
        std::error_code fault;
        if (!it->is_regular_file(fault)) {
            if (fault && fault != std::errc::no_such_file_or_directory
                && fault != std::errc::too_many_symbolic_link_levels)
                return {};
            continue; // a directory, or a link that leads nowhere
        }
        const std::uintmax_t size = it->file_size(fault);
        if (fault)
            return {};
        files.append({name, qint64(size)});
    }
    std::sort(files.begin(), files.end(), [](const PackageFileInfo &a, const PackageFileInfo &b) {
        return a.name < b.name;
    });
    return error ? std::nullopt : std::optional(files);
}

} // namespace

LocalPackageAccessor::LocalPackageAccessor(const QString &root)
    : m_root(QDir(root).absolutePath())
{}

LocalPackageAccessor::~LocalPackageAccessor() = default;

void LocalPackageAccessor::load()
{
    m_packages = scanPackages(m_root + QLatin1String("/packages"), m_manifests);
    m_manifests.squeeze();
    m_keywords = listJsonFiles(QStringLiteral("dictionary"));
    m_links = listJsonFiles(QStringLiteral("links"));
}

QVector<QStringRef> LocalPackageAccessor::listJsonFiles(const QString &directory)
{
    QVector<QStringRef> result;
    QDirIterator files(
        m_root + QLatin1Char('/') + directory, {QStringLiteral("*.json")}, QDir::Files);
    while (files.hasNext()) {
        files.next();
        const QString name = files.fileInfo().baseName();
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
        readJsonObject(m_root + QStringLiteral("/dictionary/%1.json").arg(id));
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
    const QJsonObject object = readJsonObject(m_root + QStringLiteral("/links/%1.json").arg(name));
    return {
        linkTypeFromString(textOf(object, "type")), textOf(object, "from"), textOf(object, "to")};
}

std::optional<QVector<PackageFileInfo>> LocalPackageAccessor::files(int index) const
{
    return filesIn(directoryPath(index));
}

} // namespace nk::pm
