// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/localpackagescan.h"

#include "closing/closingdown.h"

#include <QFile>

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
    PackageScan(LocalManifests &manifests, WholeFlag &isWhole)
        : m_manifests(manifests)
        , m_isWhole(isWhole)
    {}

    std::vector<LocalPackageEntry> run(const QString &top);

private:
    void enter(const Directory &directory);
    void lookAt(const Candidate &candidate);
    bool addPackage(const Candidate &candidate, const QString &path);
    bool isAbove(const Candidate &candidate, const QString &path) const;

    LocalManifests &m_manifests;
    WholeFlag &m_isWhole;
    std::vector<LocalPackageEntry> m_packages;
    std::vector<Directory> m_entered;
    std::vector<Candidate> m_left; // the next one is the last
    int m_followedLinks = 0;
};

std::vector<LocalPackageEntry> PackageScan::run(const QString &top)
{
    enter({canonicalPath(top, m_isWhole), QString(), -1});
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
    if (directory.path.isEmpty())
        return;
    const auto first = std::vector<Candidate>::difference_type(m_left.size());
    const int place = int(m_entered.size());
    m_entered.push_back(directory);
    for (DirectoryEntry &entry : readDirectory(directory.path, m_isWhole)) {
        if (entry.kind == DirectoryEntry::Directory)
            m_left.push_back({place, std::move(entry.name), entry.isLink});
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
        path = canonicalPath(path, m_isWhole);
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
    if (!openFile(manifest, m_isWhole))
        return false;
    const QString &type = m_entered[size_t(candidate.parent)].type;
    m_packages.push_back({candidate.name, type, m_manifests.append(manifest)});
    noteRead(manifest, m_isWhole);
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

std::vector<LocalPackageEntry> scanPackages(
    const QString &path, LocalManifests &manifests, WholeFlag &isWhole)
{
    return PackageScan(manifests, isWhole).run(path);
}

} // namespace nk::pm
