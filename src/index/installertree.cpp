// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/installertree.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "install/packageinstaller.h"

#include <QSet>

#include <vector>

namespace nk::pm {

/// One tree in the making, package by package in the order of a walk that goes down first.
class InstallerTreeBuilder
{
public:
    explicit InstallerTreeBuilder(const InstallerFactory &make)
        : m_make(make)
    {}

    std::unique_ptr<PackageInstaller> build(const PackageNode &package)
    {
        auto root = m_make(package);
        open(package, root.get());
        while (!m_path.empty())
            advance();
        return root;
    }

private:
    /// A package whose requirements are being gone through.
    struct Frame
    {
        const PackageNode *package;
        PackageInstaller *installer;
        int nextLink = 0;
    };

    void advance()
    {
        Frame &frame = m_path.back();
        if (frame.nextLink == frame.package->outLinks().size()) {
            m_onPath.remove(frame.package);
            m_path.pop_back();
            return;
        }
        const NodeLink &link = frame.package->outLinks().at(frame.nextLink++);
        if (link.type == Requires && link.node->kind() == PackageIndexNode::Package)
            require(*static_cast<const PackageNode *>(link.node));
    }

    void require(const PackageNode &package)
    {
        if (m_onPath.contains(&package) || isOneTooMany(package))
            return;
        auto installer = m_make(package);
        PackageInstaller *const child = installer.get();
        m_path.back().installer->addChild(std::move(installer));
        open(package, child);
    }

    void open(const PackageNode &package, PackageInstaller *installer)
    {
        ++m_count;
        m_inTree.insert(&package);
        m_onPath.insert(&package);
        m_path.push_back({&package, installer});
    }

    /// Whether a tree that repeats itself has grown so large that this repetition is left out.
    bool isOneTooMany(const PackageNode &package)
    {
        if (m_count < maxRepeatingInstallers || !m_inTree.contains(&package))
            return false;
        const PackageNode *root = m_path.front().package;
        root->index()->reportManyRepetitions(root->id());
        return true;
    }

    const InstallerFactory &m_make;
    std::vector<Frame> m_path;
    QSet<const PackageNode *> m_onPath;
    QSet<const PackageNode *> m_inTree;
    int m_count = 0;
};

std::unique_ptr<PackageInstaller> createInstallerTree(
    const PackageNode &package, const InstallerFactory &make)
{
    return InstallerTreeBuilder(make).build(package);
}

} // namespace nk::pm
