// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindexnode.h"

#include "index/indexlogging.h"
#include "index/installertree.h"
#include "index/packageindex.h"
#include "index/packagekeywords.h"
#include "index/sortkey.h"
#include "index/typesearch.h"
#include "install/packageinstaller.h"
#include "install/packagepath.h"
#include "repository/packageaccessor.h"

#include <QFileInfo>

namespace nk::pm {

namespace {

/// Stands for a package that can't be installed.
class FailedInstaller final : public PackageInstaller
{
public:
    explicit FailedInstaller(const QString &message)
        : PackageInstaller(InstallLocation())
    {
        addError(0, message);
        finish();
    }
};

} // namespace

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

/// The package's directory below \a root; invalid if the package's names are refused.
InstallLocation PackageNode::locationBelow(const InstallLocation &root) const
{
    const QString path = packagePath(m_type.toString(), id().toString());
    return path.isEmpty() ? InstallLocation() : root.subLocation(path);
}

InstallLocation PackageNode::installLocation() const
{
    return locationBelow(index()->installLocation());
}

// A name with a separator would be looked for in the directory of another package.
QUrl PackageNode::fileUrl(const QString &fileName) const
{
    if (isPathComponent(fileName)) {
        const QString installed = installLocation().pathToFile(fileName);
        if (QFileInfo(installed).isFile())
            return QUrl::fromLocalFile(installed);
    }
    return accessor()->fileUrl(m_entryIndex, fileName);
}

/// The installer of this package alone, never null.
std::unique_ptr<PackageInstaller> PackageNode::createOwnInstaller(const InstallLocation &root) const
{
    if (packagePath(m_type.toString(), id().toString()).isEmpty()) {
        qCWarning(lcPackageIndex) << "Package" << id() << "of type" << m_type
                                  << "has no directory of its own and isn't installed";
        return std::make_unique<FailedInstaller>(
            QStringLiteral("Package %1 has no directory of its own").arg(id()));
    }
    auto installer = accessor()->createInstaller(m_entryIndex, locationBelow(root));
    if (!installer)
        return std::make_unique<FailedInstaller>(
            QStringLiteral("No installer for package %1").arg(id()));
    return installer;
}

std::optional<QVector<PackageFileInfo>> PackageNode::files() const
{
    return accessor()->files(m_entryIndex);
}

std::unique_ptr<PackageInstaller> PackageNode::createInstaller(const InstallLocation &root) const
{
    const InstallLocation base = root.isValid() ? root : index()->installLocation();
    return createInstallerTree(
        *this, [&base](const PackageNode &node) { return node.createOwnInstaller(base); });
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
