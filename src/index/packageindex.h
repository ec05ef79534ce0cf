// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "index/keywordlist.h"
#include "index/packagelist.h"
#include "install/installlocation.h"

#include <norvakpackagemanager_export.h>

#include <QScopedPointer>
#include <QSharedPointer>
#include <QStringRef>
#include <QVector>

#include <functional>

namespace nk {
class Request;
}

namespace nk::pm {

class KeywordNode;
class PackageAccessor;
class PackageNode;
class PackageSource;
struct PackageIndexPrivate;

/// The merged graph of all sources' packages and keywords at one moment.
///
/// Made and given its sources on the GUI thread, built once on one worker, and read-only from then
/// on, from any thread without a lock. It lives as long as a QSharedPointer, a list or a reference
/// holds it; nodes live as long as their index.
class NK_PM_EXPORT PackageIndex
{
public:
    PackageIndex();
    ~PackageIndex();

    /// Takes a snapshot of \a source, which isn't kept. GUI thread, before build(). Later sources
    /// replace the packages and keywords of earlier ones under the same identifier, whole.
    void addSource(PackageSource *source);

    /// Reads the snapshots and builds the graph. Called once, on a worker thread; takes as long as
    /// its sources' load() and some milliseconds per thousand packages.
    void build();

    /// The language of the keywords' texts, settled at the start of build().
    QStringRef activeLanguage() const;

    /// Root directory of everything installed from this index.
    InstallLocation installLocation() const;

    /// Packages of \a type and its sub-types, of all types if it is empty, for which \a matcher
    /// returns true. Sorted stably by \a sorter; without one in the index's order: by type, then by
    /// sort key. An empty function means no restriction, or no sort. Both run on the calling
    /// thread. Invalid for a null index and for a type that no package has.
    static PackageList selectPackages(
        QSharedPointer<PackageIndex> index, const QString &type,
        std::function<bool(PackageNode *)> matcher,
        std::function<bool(PackageNode *, PackageNode *)> sorter);

    /// Keywords for which \a matcher returns true, in the order of their display strings. An empty
    /// function takes all. Invalid for a null index.
    static KeywordList selectKeywords(
        QSharedPointer<PackageIndex> index, std::function<bool(KeywordNode *)> matcher);

    /// The package of that identifier; null if there is none, or it is a keyword's.
    PackageNode *getPackage(const QStringRef &id) const;
    /// The keyword of that identifier; null if there is none, or it is a package's.
    KeywordNode *getKeyword(const QStringRef &id) const;

    /// How many snapshots the index was built from.
    int accessorCount() const;
    /// The snapshot at that position, unchecked; lives as long as the index.
    PackageAccessor *accessor(int index) const;

    /// The downloads of a file by its digest, as PackageAccessor::fileDownload() says, of all
    /// snapshots that have one; later sources first.
    QVector<std::function<nk::Request *()>> fileDownloads(const QString &digest) const;

    /// A pooled copy of \a string for a node under construction; null once the build is over.
    QStringRef addString(const QString &string);

private:
    Q_DISABLE_COPY(PackageIndex)
    friend class InstallerTreeBuilder;
    friend class PackageNode;
    friend class KeywordReach;

    void buildIndex(unsigned int accessorIndex);
    void buildGraph(unsigned int accessorIndex);
    void reportLongSortKey(const QStringRef &id);
    void reportManyRepetitions(const QStringRef &id);

    QScopedPointer<PackageIndexPrivate> d;
};

} // namespace nk::pm
