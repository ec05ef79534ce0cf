// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/localpackagescan.h"

#include "closing/closingdown.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace nk::pm {

namespace {

constexpr int mostFollowedLinks = 4096;

/// A directory that was entered, and thus holds no package of its own.
struct Directory
{
    QString path; // canonical
    QString type; // of the packages in it
    int parent;   // place in the list of all entered ones, -1 for the first
};

/// A directory that is still to be looked at.
struct Candidate
{
    int parent;
    QString name;
    bool isLink;
};

class PackageScan
{
public:
    explicit PackageScan(LocalManifests &manifests)
        : m_manifests(manifests)
    {}

    std::vector<LocalPackageEntry> run(const QString &top);

private:
    void enter(const Directory &directory);
    void lookAt(const Candidate &candidate);
    bool addPackage(const Candidate &candidate, const QString &path);
    bool isAbove(const Candidate &candidate, const QString &path) const;

    LocalManifests &m_manifests;
    std::vector<LocalPackageEntry> m_packages;
    std::vector<Directory> m_entered;
    std::vector<Candidate> m_left; // the next one is the last
    int m_followedLinks = 0;
};

std::vector<LocalPackageEntry> PackageScan::run(const QString &top)
{
    enter({QFileInfo(top).canonicalFilePath(), QString(), -1});
    while (!m_left.empty() && !isClosingDown()) {
        const Candidate candidate = std::move(m_left.back());
        m_left.pop_back();
        lookAt(candidate);
    }
    m_packages.shrink_to_fit();
    return std::move(m_packages);
}

void PackageScan::enter(const Directory &directory)
{
    // The canonical path of nothing is empty, which QDirIterator takes for the working directory.
    if (directory.path.isEmpty())
        return;
    const auto first = std::vector<Candidate>::difference_type(m_left.size());
    const int place = int(m_entered.size());
    m_entered.push_back(directory);
    QDirIterator entries(directory.path, QDir::Dirs | QDir::NoDot | QDir::NoDotDot);
    while (entries.hasNext()) {
        entries.next();
        m_left.push_back({place, entries.fileName(), entries.fileInfo().isSymLink()});
    }
    std::reverse(m_left.begin() + first, m_left.end());
}

void PackageScan::lookAt(const Candidate &candidate)
{
    const Directory &parent = m_entered[size_t(candidate.parent)];
    QString path = parent.path + QLatin1Char('/') + candidate.name;
    if (addPackage(candidate, path))
        return;
    if (candidate.isLink) {
        path = QFileInfo(path).canonicalFilePath();
        if (m_followedLinks == mostFollowedLinks || isAbove(candidate, path))
            return;
        ++m_followedLinks;
    }
    const QString &type = parent.type;
    enter(
        {path, type.isEmpty() ? candidate.name : type + QLatin1Char(':') + candidate.name,
         candidate.parent});
}

bool PackageScan::addPackage(const Candidate &candidate, const QString &path)
{
    QFile manifest(path + QLatin1String("/manifest.json"));
    // To open a pipe would be to wait for its other end.
    if (!QFileInfo(manifest.fileName()).isFile() || !manifest.open(QIODevice::ReadOnly))
        return false;
    const QString &type = m_entered[size_t(candidate.parent)].type;
    m_packages.push_back({candidate.name, type, m_manifests.append(manifest)});
    return true;
}

/// Whether the directory \a path is one of those that the way to \a candidate leads through.
bool PackageScan::isAbove(const Candidate &candidate, const QString &path) const
{
    int place = candidate.parent;
    while (place >= 0 && m_entered[size_t(place)].path != path)
        place = m_entered[size_t(place)].parent;
    return place >= 0;
}

} // namespace

std::vector<LocalPackageEntry> scanPackages(const QString &path, LocalManifests &manifests)
{
    return PackageScan(manifests).run(path);
}

} // namespace nk::pm
