// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "index/linktypes.h"
#include "install/installlocation.h"

#include <norvakpackagemanager_export.h>

#include <QJsonObject>
#include <QJsonValue>
#include <QSet>
#include <QString>
#include <QStringRef>
#include <QUrl>
#include <QVector>

#include <atomic>
#include <memory>
#include <optional>

namespace nk::pm {

class KeywordNode;
class KeywordReach;
class PackageAccessor;
class PackageIndex;
class PackageIndexNode;
class PackageInstaller;
struct PackageIndexPrivate;
struct PackageFileInfo;
struct PackageInfo;

/// One end of a link: its LinkType and the node at the far end, which the index owns.
struct NodeLink
{
    int type;               ///< as the source has it: it may be none of LinkType's numbers
    PackageIndexNode *node; ///< never null, of the same index
};

/// Node of the graph. Nodes are made while an index is built, never change afterwards (but for
/// caches that show nothing), and die with their index: whoever keeps a pointer holds the index's
/// QSharedPointer too. After the build all operations are safe on any thread.
class NK_PM_EXPORT PackageIndexNode
{
public:
    /// Which class a node is of: PackageNode or KeywordNode.
    enum Kind { Package = 0, Keyword = 1 };

    virtual ~PackageIndexNode();

    /// The index that owns the node; it dies with it, and doesn't keep it alive.
    PackageIndex *index() const { return m_index; }
    /// The identifier, a view into the index's string pool.
    QStringRef id() const { return m_id; }
    /// To be tested before casting.
    Kind kind() const { return m_kind; }
    /// Links that end here, in the order in which they were made.
    const QVector<NodeLink> &inLinks() const { return m_inLinks; }
    /// Links that start here, in the order in which they were made.
    const QVector<NodeLink> &outLinks() const { return m_outLinks; }

protected:
    /// Puts \a id into the string pool of \a index, so only while that is being built.
    PackageIndexNode(PackageIndex *index, const QString &id, Kind kind);

private:
    Q_DISABLE_COPY(PackageIndexNode)
    friend class PackageIndex;

    PackageIndex *const m_index;
    const QStringRef m_id;
    const Kind m_kind;
    QVector<NodeLink> m_inLinks;
    QVector<NodeLink> m_outLinks;
};

/// A package of the index.
class NK_PM_EXPORT PackageNode final : public PackageIndexNode
{
public:
    /// The package \a info, which is number \a entryIndex of the index's accessor \a accessorIndex.
    PackageNode(PackageIndex *index, const PackageInfo &info, int accessorIndex, int entryIndex);
    ~PackageNode() override;

    /// The package type, levels joined with ":".
    QStringRef type() const { return m_type; }
    /// Version mark of this copy; empty where the source has none.
    QStringRef revision() const { return m_revision; }
    /// The snapshot that the package comes from; lives as long as the index.
    PackageAccessor *accessor() const;
    /// The public key, in DER, of who signed the package, verified; empty if nobody did.
    QByteArray issuerKey() const;

    /// The manifest, read at the first call and kept.
    QJsonObject manifest() const;
    /// One top-level value of the manifest; undefined if it is missing.
    QJsonValue manifestValue(const QString &key) const;

    /// All keywords that hold for the package, with the links followed and IsNotA taken out.
    QSet<KeywordNode *> keywords() const;
    /// Whether the package is of \a type or of a sub-type of it.
    bool isOfType(const QStringRef &type) const;
    /// Orders packages of one type in the index: what the package is, in canonical texts.
    QString sortKey() const;

    /// The package's own directory below the index's root. Invalid if the identifier or a level of
    /// the type isn't an ordinary path component: such a package is shown, but not installed.
    InstallLocation installLocation() const;
    /// Where \a fileName can be had now: the installed file, else what the source gives. Always the
    /// latter for a name with a separator.
    QUrl fileUrl(const QString &fileName) const;
    /// The files that an installer of the package lays down; see PackageAccessor::files().
    std::optional<QVector<PackageFileInfo>> files() const;
    /// A working tree of installers for the package and everything that it requires, below \a root;
    /// below the index's own root if \a root is invalid. Never null: what can't be installed has an
    /// installer that has failed. GUI thread.
    std::unique_ptr<PackageInstaller> createInstaller(const InstallLocation &root) const;

private:
    const QJsonObject &cachedManifest() const;
    InstallLocation locationBelow(const InstallLocation &root) const;
    std::unique_ptr<PackageInstaller> createOwnInstaller(const InstallLocation &root) const;

    const QStringRef m_type;
    const QStringRef m_revision;
    const int m_accessorIndex;
    const int m_entryIndex;
    mutable std::atomic<QJsonObject *> m_manifestCache{nullptr};
    mutable QString m_sortKey; // filled by the build's worker, read-only afterwards
};

/// A keyword of the index: a word with a grammatical role, in the index's active language.
class NK_PM_EXPORT KeywordNode : public PackageIndexNode
{
public:
    /// A KeywordType as a number.
    virtual int type() const = 0;
    /// Whether it is an entry of a category list, which CategoryListModel shows.
    virtual bool isCategory() const;
    /// What the user reads, in the active language; empty if the keyword has no text in it.
    virtual QStringRef displayString() const = 0;
    /// Name of the keyword that doesn't depend on the user's language.
    virtual QStringRef canonicalString() const = 0;
    /// The stored texts that hold \a search as a part, case ignored, in the order of storage.
    virtual QVector<QStringRef> matchingStrings(const QStringRef &search) const = 0;
    /// 2 if a text equals \a search, 1 if one holds it, 0 otherwise; case ignored. The walk over
    /// the texts ends at the first that matches in either way.
    virtual int matchLevel(const QStringRef &search) const = 0;

    /// Whether some package of \a type reaches this keyword along links that pass its meaning on.
    bool isUsedByType(const QStringRef &type) const;
    /// Whether IsA links lead from here to a keyword from which they lead back to it.
    bool leadsIntoCycle() const { return m_leadsIntoCycle; }

protected:
    /// As PackageIndexNode's constructor.
    KeywordNode(PackageIndex *index, const QString &id);

    /// What canonicalString() gives, filled by the constructors of subclasses.
    QStringRef m_canonicalString;

private:
    friend struct PackageIndexPrivate;
    friend class KeywordReach;

    int m_number = -1; // position among the index's keywords, once it is built
    bool m_leadsIntoCycle = false;
};

} // namespace nk::pm
