// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "closing/closingdown.h"
#include "index/indexlogging.h"
#include "index/indexorder.h"
#include "index/keywordnodes.h"
#include "index/packageindex.h"
#include "index/packageindex_p.h"

namespace nk::pm {

namespace {

std::unique_ptr<PackageIndexNode> makeKeywordNode(const KeywordInfo &info, PackageIndex *index)
{
    switch (KeywordType(info.type)) {
    case KeywordType::Noun:
        return std::make_unique<NounNode>(info, index);
    case KeywordType::Name:
        return std::make_unique<NameNode>(info, index);
    case KeywordType::Adjective:
        return std::make_unique<AdjectiveNode>(info, index);
    case KeywordType::Literal:
        return std::make_unique<LiteralNode>(info, index);
    case KeywordType::Category:
        return std::make_unique<CategoryNode>(info, index);
    case KeywordType::Invalid:
        break;
    }
    return nullptr;
}

} // namespace

void PackageIndexPrivate::addNode(std::unique_ptr<PackageIndexNode> node)
{
    nodes.insert(node->id(), node.get());
    arena.push_back(std::move(node));
}

/// First pass: all nodes of one accessor. Later accessors replace earlier ones' nodes, whole. Both
/// passes end at the next record when the application closes down.
void PackageIndex::buildIndex(unsigned int accessorIndex)
{
    PackageAccessor *source = d->accessors[accessorIndex].get();
    source->load();

    const int packageCount = source->packageCount();
    for (int i = 0; i < packageCount && !isClosingDown(); ++i) {
        d->addNode(
            std::make_unique<PackageNode>(this, source->packageInfo(i), int(accessorIndex), i));
    }

    const int keywordCount = source->keywordCount();
    for (int i = 0; i < keywordCount && !isClosingDown(); ++i) {
        const KeywordInfo info = source->keywordInfo(i);
        if (info.strings.isEmpty())
            continue;
        if (auto node = makeKeywordNode(info, this))
            d->addNode(std::move(node));
    }
}

/// Second pass: the links of one accessor, between nodes of any. Runs when all nodes are there.
void PackageIndex::buildGraph(unsigned int accessorIndex)
{
    const PackageAccessor *source = d->accessors[accessorIndex].get();
    const int linkCount = source->linkCount();
    for (int i = 0; i < linkCount && !isClosingDown(); ++i) {
        const LinkInfo info = source->linkInfo(i);
        if (info.from.isEmpty() || info.to.isEmpty() || info.type == -1)
            continue;
        PackageIndexNode *from = d->nodes.value(QStringRef(&info.from));
        PackageIndexNode *to = d->nodes.value(QStringRef(&info.to));
        if (!from || !to) {
            qCDebug(lcPackageIndex) << "Cannot link between" << info.from << "and" << info.to;
            continue;
        }
        qCDebug(lcPackageIndex) << "Creating link between" << from->id() << "and" << to->id()
                                << "with type" << info.type;
        from->m_outLinks.append({info.type, to});
        to->m_inLinks.append({info.type, from});
    }
}

void PackageIndexPrivate::finishTables()
{
    for (PackageIndexNode *node : qAsConst(nodes)) {
        if (node->kind() == PackageIndexNode::Package)
            packages.append(static_cast<PackageNode *>(node));
        else
            keywords.append(static_cast<KeywordNode *>(node));
    }
    sortKeywords(keywords);
    for (int i = 0; i < keywords.size(); ++i)
        keywords.at(i)->m_number = i;
    markCycles();
    sortPackages(packages);
    typeRanges = typeRangesOf(packages);
}

void PackageIndex::reportLongSortKey(const QStringRef &id)
{
    if (d->longSortKeyReported)
        return;
    d->longSortKeyReported = true;
    qCWarning(lcPackageIndex) << "Keywords above package" << id
                              << "are too many to sort by; the rest is passed over";
}

void PackageIndex::reportManyRepetitions(const QStringRef &id)
{
    if (d->manyRepetitionsReported)
        return;
    d->manyRepetitionsReported = true;
    qCWarning(lcPackageIndex)
        << "Package" << id
        << "requires too many packages repeatedly; each is installed once from"
           " now on";
}

} // namespace nk::pm
