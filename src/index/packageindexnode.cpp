// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindexnode.h"

#include "index/installertree.h"
#include "index/packageindex.h"
#include "index/packagekeywords.h"
#include "index/sortkey.h"
#include "index/typesearch.h"
#include "install/packageinstaller.h"
#include "repository/packageaccessor.h"

namespace nk::pm {

PackageIndexNode::PackageIndexNode(PackageIndex *index, const QString &id, Kind kind)
    : m_index(index)
    , m_id(index->addString(id))
    , m_kind(kind)
{}

PackageIndexNode::~PackageIndexNode() = default;

PackageNode::PackageNode(
    PackageIndex *index, const PackageInfo &info, int accessorIndex, int entryIndex)
    : PackageIndexNode(index, info.id, Package)
    , m_type(index->addString(info.type))
    , m_revision(index->addString(info.revision))
    , m_accessorIndex(accessorIndex)
    , m_entryIndex(entryIndex)
{}

PackageNode::~PackageNode()
{
    delete m_manifestCache.load(std::memory_order_relaxed);
}

PackageAccessor *PackageNode::accessor() const
{
    return index()->accessor(m_accessorIndex);
}

QByteArray PackageNode::issuerKey() const
{
    return accessor()->issuerKey(m_entryIndex);
}

QJsonObject PackageNode::manifest() const
{
    return cachedManifest();
}

QJsonValue PackageNode::manifestValue(const QString &key) const
{
    return cachedManifest().value(key);
}

/// Several threads may read the manifest at once; the first to store it wins, and all of them
/// answer from that copy.
const QJsonObject &PackageNode::cachedManifest() const
{
    if (const QJsonObject *cached = m_manifestCache.load(std::memory_order_acquire))
        return *cached;
    auto read = std::make_unique<QJsonObject>(accessor()->manifest(m_entryIndex));
    QJsonObject *stored = nullptr;
    if (m_manifestCache.compare_exchange_strong(
            stored, read.get(), std::memory_order_acq_rel, std::memory_order_acquire))
        stored = read.release();
    return *stored;
}

QSet<KeywordNode *> PackageNode::keywords() const
{
    return keywordsOf(*this);
}

bool PackageNode::isOfType(const QStringRef &type) const
{
    if (m_type.size() < type.size() || m_type.left(type.size()) != type)
        return false;
    return m_type.size() == type.size() || m_type.at(type.size()) == QLatin1Char(':');
}

QString PackageNode::sortKey() const
{
    if (m_sortKey.isEmpty()) {
        const KeywordChain chain = keywordChainOf(*this);
        if (chain.isCut)
            index()->reportLongSortKey(id());
        m_sortKey = sortKeyOf(*this, chain);
    }
    return m_sortKey;
}

/// The package's directory, relative to a root.
QString PackageNode::installPath() const
{
    const QString levels = m_type.toString().replace(QLatin1Char(':'), QLatin1Char('/'));
    return QStringLiteral("%1/%2").arg(levels, id());
}

InstallLocation PackageNode::installLocation() const
{
    return index()->installLocation().subLocation(installPath());
}

QUrl PackageNode::fileUrl(const QString &fileName) const
{
    const QString installed = installLocation().pathToFile(fileName);
    if (!installed.isEmpty())
        return QUrl::fromLocalFile(installed);
    return accessor()->fileUrl(m_entryIndex, fileName);
}

std::unique_ptr<PackageInstaller> PackageNode::createInstaller(const InstallLocation &root) const
{
    const InstallLocation base = root.isValid() ? root : index()->installLocation();
    return createInstallerTree(*this, [&base](const PackageNode &node) {
        const InstallLocation location = base.subLocation(node.installPath());
        return node.accessor()->createInstaller(node.m_entryIndex, location);
    });
}

KeywordNode::KeywordNode(PackageIndex *index, const QString &id)
    : PackageIndexNode(index, id, Keyword)
{}

bool KeywordNode::isCategory() const
{
    return false;
}

bool KeywordNode::isUsedByType(const QStringRef &type) const
{
    return isReachedByType(*this, type);
}

} // namespace nk::pm
