// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "index/packageindexnode.h"
#include "index/stringpool.h"
#include "install/installlocation.h"
#include "repository/packageaccessor.h"

#include <QHash>
#include <QMap>
#include <QPair>
#include <QStringRef>
#include <QVector>

#include <memory>
#include <vector>

namespace nk::pm {

class PackageIndex;

/// What PackageIndex holds. Written by the one thread that builds, read-only from then on.
struct PackageIndexPrivate
{
    PackageIndex *q;
    const quint64 serial; // another one for each index of the process
    StringPool pool;      // outlives everything below, which refers to its text
    std::vector<std::unique_ptr<PackageIndexNode>> arena; // every node ever made, replaced ones too
    QHash<QStringRef, PackageIndexNode *> nodes;          // the nodes that count, by identifier
    QVector<PackageNode *> packages;                      // by type, then by sort key
    QVector<KeywordNode *> keywords;                      // by display string
    QMap<QStringRef, QPair<int, int>> typeRanges;         // first and last position in packages
    QStringRef activeLanguage;
    std::vector<std::unique_ptr<PackageAccessor>> accessors;
    InstallLocation installLocation;
    bool longSortKeyReported = false;
    bool manyRepetitionsReported = false; // after the build, GUI thread

    explicit PackageIndexPrivate(PackageIndex *index);

    /// Enters \a node under its identifier, in the place of what stood there.
    void addNode(std::unique_ptr<PackageIndexNode> node);
    void chooseActiveLanguage();
    void finishTables();
    /// Tells each keyword whether it leads into a cycle of IsA links, and the log of one such
    /// cycle.
    void markCycles();
};

} // namespace nk::pm
