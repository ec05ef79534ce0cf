// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/localpackagescan.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <optional>

namespace nk::pm {

namespace {

constexpr int mostFollowedLinks = 4096;

/// A directory that is still to be looked at.
struct Candidate
{
    QString parent; // path; shared by all directories in it
    QString name;
    QString type;
    bool isLink;

    QString path() const { return parent + QLatin1Char('/') + name; }
    QString typeBelow() const { return type.isEmpty() ? name : type + QLatin1Char(':') + name; }
};

class PackageScan
{
public:
    PackageScan(const QString &path, LocalManifests &manifests)
        : m_top(path)
        , m_manifests(manifests)
    {}

    std::vector<LocalPackageEntry> run();

private:
    void addDirectories(const QString &path, const QString &type);
    bool addPackage(const Candidate &directory);
    bool mayEnter(const Candidate &directory);
    bool leadsBack(const QString &linkPath) const;

    const QString m_top;
    LocalManifests &m_manifests;
    std::vector<LocalPackageEntry> m_packages;
    std::vector<Candidate> m_left; // the next one is the last
    int m_followedLinks = 0;
};

std::vector<LocalPackageEntry> PackageScan::run()
{
    addDirectories(m_top, QString());
    while (!m_left.empty() && !QCoreApplication::closingDown()) {
        const Candidate directory = std::move(m_left.back());
        m_left.pop_back();
        if (!addPackage(directory) && mayEnter(directory))
            addDirectories(directory.path(), directory.typeBelow());
    }
    m_packages.shrink_to_fit();
    return std::move(m_packages);
}

void PackageScan::addDirectories(const QString &path, const QString &type)
{
    const auto first = std::vector<Candidate>::difference_type(m_left.size());
    QDirIterator directories(path, QDir::Dirs | QDir::NoDot | QDir::NoDotDot);
    while (directories.hasNext()) {
        directories.next();
        m_left.push_back({path, directories.fileName(), type, directories.fileInfo().isSymLink()});
    }
    std::reverse(m_left.begin() + first, m_left.end());
}

bool PackageScan::addPackage(const Candidate &directory)
{
    QFile manifest(directory.path() + QLatin1String("/manifest.json"));
    // To open a pipe would be to wait for its other end.
    if (!QFileInfo(manifest.fileName()).isFile() || !manifest.open(QIODevice::ReadOnly))
        return false;
    m_packages.push_back({directory.name, directory.type, m_manifests.append(manifest)});
    return true;
}

bool PackageScan::mayEnter(const Candidate &directory)
{
    if (!directory.isLink)
        return true;
    return !leadsBack(directory.path()) && ++m_followedLinks <= mostFollowedLinks;
}

bool PackageScan::leadsBack(const QString &linkPath) const
{
    const QString target = QFileInfo(linkPath).canonicalFilePath();
    QString step = linkPath;
    while (step.size() > m_top.size()) {
        step.truncate(step.lastIndexOf(QLatin1Char('/')));
        if (QFileInfo(step).canonicalFilePath() == target)
            return true;
    }
    return false;
}

} // namespace

std::vector<LocalPackageEntry> scanPackages(const QString &path, LocalManifests &manifests)
{
    return PackageScan(path, manifests).run();
}

} // namespace nk::pm
