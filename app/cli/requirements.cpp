// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "requirements.h"

#include "index/packageindexnode.h"

#include <QSet>

namespace nk::pm::cli {
namespace {

QVector<const PackageNode *> packagesAlong(const QVector<NodeLink> &links)
{
    QVector<const PackageNode *> result;
    QSet<const PackageIndexNode *> seen;
    for (const auto &link : links) {
        if (link.type != Requires || link.node->kind() != PackageIndexNode::Package
            || seen.contains(link.node))
            continue;
        seen.insert(link.node);
        result.append(static_cast<const PackageNode *>(link.node));
    }
    return result;
}

/// A package whose requirements are being visited; `next` is the number of the first that wasn't.
struct Visit
{
    const PackageNode *package;
    QVector<const PackageNode *> requirements;
    int next = 0;
};

} // namespace

QVector<const PackageNode *> requirementsOf(const PackageNode *package)
{
    return packagesAlong(package->outLinks());
}

QVector<const PackageNode *> dependentsOf(const PackageNode *package)
{
    return packagesAlong(package->inLinks());
}

QVector<const PackageNode *> withRequirements(const QVector<const PackageNode *> &packages)
{
    QVector<const PackageNode *> result;
    QSet<const PackageNode *> entered;
    QVector<Visit> path; // a stack of our own: chains may be as long as the catalogue
    const auto enter = [&](const PackageNode *package) {
        if (entered.contains(package))
            return;
        entered.insert(package);
        path.append({package, requirementsOf(package)});
    };
    for (const auto *package : packages) {
        enter(package);
        while (!path.isEmpty()) {
            Visit &visit = path.last();
            if (visit.next < visit.requirements.size()) {
                enter(visit.requirements.at(visit.next++));
            } else {
                result.append(visit.package);
                path.removeLast();
            }
        }
    }
    return result;
}

} // namespace nk::pm::cli
