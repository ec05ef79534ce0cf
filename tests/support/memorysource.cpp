// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/memorysource.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"

#include <QUrl>

namespace nk::pm::test {

MemoryCatalogue &MemoryCatalogue::package(
    const QString &id, const QString &type, const QJsonObject &manifest, const QString &revision)
{
    packages.append({id, type, revision});
    manifests.append(manifest);
    return *this;
}

MemoryCatalogue &MemoryCatalogue::keyword(
    const QString &id, KeywordType type, const QVector<KeywordString> &strings)
{
    keywords.append({id, int(type), strings});
    return *this;
}

MemoryCatalogue &MemoryCatalogue::word(const QString &id, const QString &text, KeywordType type)
{
    return keyword(id, type, {{"de", text, {}}, {"en", text, {}}});
}

MemoryCatalogue &MemoryCatalogue::link(const QString &from, int linkType, const QString &to)
{
    links.append({linkType, from, to});
    return *this;
}

MemoryCatalogue &MemoryCatalogue::linked(const QString &links)
{
    for (const QString &text : links.split(", ", Qt::SkipEmptyParts)) {
        const QStringList words = text.split(' ');
        link(words.at(0), linkTypeFromString(words.at(1)), words.at(2));
    }
    return *this;
}

MemoryInstaller::MemoryInstaller(const QString &id, const InstallLocation &location)
    : PackageInstaller(location)
    , m_id(id)
{}

void MemoryInstaller::fail(int code, const QString &message)
{
    addError(code, message);
    finish();
}

MemoryAccessor::MemoryAccessor(
    const MemoryCatalogue &catalogue, const QSharedPointer<MemoryLog> &log)
    : m_catalogue(catalogue)
    , m_log(log)
{}

QJsonObject MemoryAccessor::manifest(int index) const
{
    ++m_log->manifestReads;
    return m_catalogue.manifests.at(index);
}

QUrl MemoryAccessor::fileUrl(int index, const QString &fileName) const
{
    return QUrl("memory:/" + m_catalogue.packages.at(index).id + '/' + fileName);
}

std::unique_ptr<PackageInstaller> MemoryAccessor::createInstaller(
    int index, const InstallLocation &location) const
{
    auto installer = std::make_unique<MemoryInstaller>(m_catalogue.packages.at(index).id, location);
    m_log->installers.append(installer.get());
    return installer;
}

MemorySource::MemorySource(int priority, QObject *parent)
    : PackageSource(parent)
    , m_priority(priority)
    , m_log(QSharedPointer<MemoryLog>::create())
{}

MemoryInstaller *MemorySource::installer(const QString &id) const
{
    for (auto it = m_log->installers.crbegin(); it != m_log->installers.crend(); ++it) {
        if (*it && (*it)->packageId() == id)
            return *it;
    }
    return nullptr;
}

std::unique_ptr<PackageAccessor> MemorySource::getAccessor()
{
    if (const auto make = accessorMaker) // a copy: it may replace itself
        return make();
    return std::make_unique<MemoryAccessor>(catalogue, m_log);
}

QSharedPointer<PackageIndex> buildIndex(const QList<PackageSource *> &sources)
{
    auto index = QSharedPointer<PackageIndex>::create();
    for (PackageSource *source : sources)
        index->addSource(source);
    index->build();
    return index;
}

QSharedPointer<PackageIndex> buildIndex(const MemoryCatalogue &catalogue)
{
    MemorySource source;
    source.catalogue = catalogue;
    return buildIndex({&source});
}

PackageNode *packageOf(const QSharedPointer<PackageIndex> &index, const QString &id)
{
    return index->getPackage(&id);
}

KeywordNode *keywordOf(const QSharedPointer<PackageIndex> &index, const QString &id)
{
    return index->getKeyword(&id);
}

QString ids(const PackageList &list)
{
    QStringList ids;
    for (const PackageNode *node : list)
        ids.append(node->id().toString());
    return ids.join(' ');
}

QString ids(const KeywordList &list)
{
    QStringList ids;
    for (const KeywordNode *node : list)
        ids.append(node->id().toString());
    return ids.join(' ');
}

} // namespace nk::pm::test
