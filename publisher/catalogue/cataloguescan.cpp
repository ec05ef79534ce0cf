// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/cataloguescan.h"

#include <QFileInfo>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace nk::pm::publisher {

namespace {

const QLatin1String manifestName("manifest.json");

enum class EntryKind { File, Directory, DeadLink, Special };

struct Entry
{
    QString name;
    EntryKind kind;
};

EntryKind kindOf(const fs::directory_entry &entry)
{
    std::error_code error;
    const fs::file_status status = entry.status(error); // of a link's target
    if (fs::is_regular_file(status))
        return EntryKind::File;
    if (fs::is_directory(status))
        return EntryKind::Directory;
    return entry.is_symlink(error) ? EntryKind::DeadLink : EntryKind::Special;
}

/// The entries of the directory \a path by name, without hidden ones. QDir would do, but it passes
/// over names that it can't decode and takes a directory that it can't read for an empty one.
QVector<Entry> entriesOf(const QString &root, const QString &path, Problems &problems)
{
    QVector<Entry> entries;
    std::error_code error;
    const QByteArray native = (root + u'/' + path).toUtf8();
    fs::directory_iterator it(fs::u8path(native.constData()), error);
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
        const std::string bytes = it->path().filename().u8string();
        const QString name = QString::fromStdString(bytes);
        if (name.startsWith(u'.'))
            continue;
        if (name.toStdString() != bytes)
            problems.error(path + u'/' + name, QStringLiteral("the name isn't valid UTF-8"));
        else
            entries.append({name, kindOf(*it)});
    }
    if (error)
        problems.error(
            path, QStringLiteral("can't be read: ") + QString::fromStdString(error.message()));
    std::sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) {
        return a.name < b.name;
    });
    return entries;
}

/// One descent through "packages".
class PackageScan
{
public:
    PackageScan(const QString &root, Problems &problems)
        : m_root(root)
        , m_problems(problems)
    {}

    void scan(const QString &path, const QString &type)
    {
        const QString canonical = QFileInfo(m_root + u'/' + path).canonicalFilePath();
        if (m_open.contains(canonical))
            return m_problems.error(path, QStringLiteral("links to a directory above itself"));
        m_open.append(canonical);
        const QVector<Entry> entries = entriesOf(m_root, path, m_problems);
        bool hasDirectories = false;
        for (const Entry &entry : entries) {
            if (entry.kind != EntryKind::Directory)
                continue;
            hasDirectories = true;
            visit(path + u'/' + entry.name, type, entry.name);
        }
        if (!hasDirectories && !entries.isEmpty())
            m_problems.warning(
                path, QStringLiteral("holds files but no manifest.json, so it is no "
                                     "package and isn't published"));
        m_open.removeLast();
    }

    QVector<PackageDirectory> packages;

private:
    void visit(const QString &path, const QString &type, const QString &name)
    {
        if (QFileInfo::exists(m_root + u'/' + path + u'/' + manifestName)) {
            packages.append({path, type, name});
            return;
        }
        if (name.contains(u':'))
            m_problems.error(
                path, QStringLiteral("the name of a type can't hold \":\", which "
                                     "stands between a type and its sub-type"));
        scan(path, type.isEmpty() ? name : type + u':' + name);
    }

    const QString &m_root;
    Problems &m_problems;
    QStringList m_open; // canonical paths of the directories above the current one
};

} // namespace

QVector<PackageDirectory> findPackages(const QString &root, Problems &problems)
{
    const QString packages = QStringLiteral("packages");
    if (!QFileInfo::exists(root + u'/' + packages))
        return {};
    PackageScan scan(root, problems);
    scan.scan(packages, {});
    return scan.packages;
}

QStringList packageFileNames(const QString &root, const QString &path, Problems &problems)
{
    QStringList names;
    const auto entries = entriesOf(root, path, problems);
    for (const Entry &entry : entries) {
        const QString file = path + u'/' + entry.name;
        switch (entry.kind) {
        case EntryKind::File:
            if (entry.name != manifestName)
                names.append(entry.name);
            break;
        case EntryKind::Directory:
            problems.warning(
                file, QStringLiteral("a directory inside a package isn't published, since "
                                     "installers lay down plain files only"));
            break;
        case EntryKind::DeadLink:
            problems.error(file, QStringLiteral("links to something that doesn't exist"));
            break;
        case EntryKind::Special:
            problems.error(file, QStringLiteral("is neither a file nor a directory"));
            break;
        }
    }
    return names;
}

QStringList recordFileNames(const QString &root, const QString &path, Problems &problems)
{
    QStringList names;
    if (!QFileInfo::exists(root + u'/' + path))
        return names;
    const auto entries = entriesOf(root, path, problems);
    for (const Entry &entry : entries) {
        // Whatever the case, as in the local source's pattern.
        if (!entry.name.endsWith(QLatin1String(".json"), Qt::CaseInsensitive))
            continue;
        if (entry.kind == EntryKind::File)
            names.append(entry.name);
        else
            problems.error(path + u'/' + entry.name, QStringLiteral("is no file"));
    }
    return names;
}

} // namespace nk::pm::publisher
