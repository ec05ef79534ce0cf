// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/cataloguescan.h"

#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace nk::pm::publisher {

namespace {

const QLatin1String manifestName("manifest.json");

enum class EntryKind { File, Directory, DeadLink, Special, Unreadable };

struct Entry
{
    QString name;
    EntryKind kind;
};

QString leadsOut()
{
    return QStringLiteral("links out of the catalogue (--follow-links takes what is there)");
}

fs::path native(const QString &path)
{
    return fs::u8path(path.toUtf8().constData());
}

/// What \a path is, or leads to as a link. Complains of what the disk doesn't tell: it isn't to be
/// taken for something that isn't there.
EntryKind kindOf(const fs::directory_entry &entry, const QString &path, Problems &problems)
{
    std::error_code error;
    const fs::file_status status = entry.status(error);
    if (fs::is_regular_file(status))
        return EntryKind::File;
    if (fs::is_directory(status))
        return EntryKind::Directory;
    if (status.type() == fs::file_type::not_found
        || error == std::errc::too_many_symbolic_link_levels)
        return EntryKind::DeadLink;
    if (!error)
        return EntryKind::Special;
    problems.error(
        path, QStringLiteral("can't be read: ") + QString::fromStdString(error.message()));
    return EntryKind::Unreadable;
}

EntryKind kindOf(const CatalogueRoot &root, const QString &path, Problems &problems)
{
    fs::directory_entry entry;
    std::error_code error; // told again by the entry's status
    entry.assign(native(root.absolute(path)), error);
    return kindOf(entry, path, problems);
}

/// Why the entry \a name, which is \a bytes on the disk, can't be published; empty if it can.
QString objectionTo(const QString &name, const std::string &bytes)
{
    if (bytes.compare(0, 3, "\xef\xbb\xbf") == 0)
        return QStringLiteral("the name begins with U+FEFF, which readers of a ledger lose");
    return name.toStdString() == bytes ? QString() : QStringLiteral("the name isn't valid UTF-8");
}

/// The entries of the directory \a path by name, without hidden ones. QDir would do, but it passes
/// over names that it can't decode and takes a directory that it can't read for an empty one.
QVector<Entry> entriesOf(const CatalogueRoot &root, const QString &path, Problems &problems)
{
    QVector<Entry> entries;
    std::error_code error;
    fs::directory_iterator it(native(root.absolute(path)), error);
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
        const std::string bytes = it->path().filename().u8string();
        const QString name = QString::fromStdString(bytes);
        if (name.startsWith(u'.'))
            continue;
        const QString entry = path + u'/' + name;
        const QString objection = objectionTo(name, bytes);
        if (!objection.isEmpty()) {
            problems.error(entry, objection);
            continue;
        }
        const EntryKind kind = kindOf(*it, entry, problems);
        std::error_code unknown;
        const bool isLink = it->is_symlink(unknown) || unknown;
        if (isLink && kind != EntryKind::DeadLink && root.isForbidden(entry))
            problems.error(entry, leadsOut());
        else if (kind != EntryKind::Unreadable)
            entries.append({name, kind});
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
    PackageScan(const CatalogueRoot &root, Problems &problems)
        : m_root(root)
        , m_problems(problems)
    {}

    void scan(const QString &path, const QString &type)
    {
        if (!enter(path))
            return;
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
    }

    QVector<PackageDirectory> packages;

private:
    /// False for a directory that links have led to before: the ways through a few levels of links
    /// soon are too many to go.
    bool enter(const QString &path)
    {
        const QString canonical = QFileInfo(m_root.absolute(path)).canonicalFilePath();
        const QString before = m_entered.value(canonical);
        if (before.isEmpty())
            m_entered.insert(canonical, path);
        else if (path.startsWith(before + u'/'))
            m_problems.error(path, QStringLiteral("links to a directory above itself"));
        else
            m_problems.error(path, QStringLiteral("is the same directory as %1").arg(before));
        return before.isEmpty();
    }

    void visit(const QString &path, const QString &type, const QString &name)
    {
        const QString manifest = path + u'/' + manifestName;
        switch (kindOf(m_root, manifest, m_problems)) {
        case EntryKind::File:
            packages.append({path, type, name});
            return;
        case EntryKind::Directory:
        case EntryKind::Special: // to open a pipe would be to wait for its other end
            return m_problems.error(manifest, QStringLiteral("is no file"));
        case EntryKind::Unreadable:
            return;
        case EntryKind::DeadLink:
            break;
        }
        if (name.contains(u':'))
            m_problems.error(
                path, QStringLiteral("the name of a type can't hold \":\", which "
                                     "stands between a type and its sub-type"));
        scan(path, type.isEmpty() ? name : type + u':' + name);
    }

    const CatalogueRoot &m_root;
    Problems &m_problems;
    QHash<QString, QString> m_entered; // canonical paths of directories, and how each was found
};

/// Whether the directory \a path is there, and may be read.
bool isOpen(const CatalogueRoot &root, const QString &path, Problems &problems)
{
    const EntryKind kind = kindOf(root, path, problems);
    if (kind == EntryKind::DeadLink || kind == EntryKind::Unreadable)
        return false;
    const bool isForbidden = root.isForbidden(path);
    if (isForbidden)
        problems.error(path, leadsOut());
    return !isForbidden;
}

} // namespace

CatalogueRoot::CatalogueRoot(const QString &path, Links links)
    : m_path(QFileInfo(path).absoluteFilePath())
{
    const QString real = QFileInfo(path).canonicalFilePath();
    if (links == Links::Within)
        m_real = (real.isEmpty() ? m_path : real) + u'/';
}

bool CatalogueRoot::isForbidden(const QString &relative) const
{
    const QString target = QFileInfo(absolute(relative)).canonicalFilePath();
    return !m_real.isEmpty() && !target.startsWith(m_real);
}

QVector<PackageDirectory> findPackages(const CatalogueRoot &root, Problems &problems)
{
    const QString packages = QStringLiteral("packages");
    if (!isOpen(root, packages, problems))
        return {};
    PackageScan scan(root, problems);
    scan.scan(packages, {});
    return scan.packages;
}

QStringList packageFileNames(const CatalogueRoot &root, const QString &path, Problems &problems)
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
        case EntryKind::Unreadable:
            break; // said already
        }
    }
    return names;
}

QStringList recordFileNames(const CatalogueRoot &root, const QString &path, Problems &problems)
{
    QStringList names;
    if (!isOpen(root, path, problems))
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
