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
    const QString &id = m_packages.at(std::size_t(index)).id;
    const QString path = QStringLiteral("packages/%1/%2").arg(typePath(index), id);
    const QDir directory(QDir(m_root).absoluteFilePath(path));
    return std::make_unique<LocalPackageInstaller>(directory, location);
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

} // namespace nk::pm
