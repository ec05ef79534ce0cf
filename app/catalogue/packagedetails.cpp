// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "packagedetails.h"

#include "catalogueprovider.h"
#include "manifesttexts.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"

#include <QDirIterator>
#include <QLocale>
#include <QVariantMap>

#include <algorithm>

namespace nk::pm::app {
namespace {

QVariantMap fileEntry(const QString &name, const QUrl &url)
{
    const QFileInfo info(url.toLocalFile());
    return {
        {QStringLiteral("name"), name},
        {QStringLiteral("url"), url},
        {QStringLiteral("size"),
         info.isFile() ? QLocale().formattedDataSize(info.size()) : QString()}};
}

QVariantList installedFiles(const PackageNode &node)
{
    QVariantList result;
    const QDir directory(node.installLocation().directory(false));
    if (directory.path().isEmpty() || !directory.exists())
        return result;
    QDirIterator it(directory.path(), QDir::Files, QDirIterator::Subdirectories);
    QStringList names;
    while (it.hasNext())
        names.append(directory.relativeFilePath(it.next()));
    names.sort();
    for (const QString &name : names)
        result.append(fileEntry(name, QUrl::fromLocalFile(directory.filePath(name))));
    return result;
}

/// A manifest doesn't tell which of its texts are file names; those that lead somewhere are.
QVariantList offeredFiles(const PackageNode &node)
{
    QVariantList result;
    const QJsonObject manifest = node.manifest();
    for (const QJsonValue &value : manifest) {
        const QString name = value.toString();
        if (!isFileName(name))
            continue;
        const QUrl url = node.fileUrl(name);
        if (url.isValid() && (!url.isLocalFile() || QFileInfo::exists(url.toLocalFile())))
            result.append(fileEntry(name, url));
    }
    return result;
}

} // namespace

PackageDetails::PackageDetails(QObject *parent)
    : QObject(parent)
{}

void PackageDetails::setCatalogue(CatalogueProvider *catalogue)
{
    if (m_catalogue == catalogue)
        return;
    if (m_catalogue)
        m_catalogue->disconnect(this);
    m_catalogue = catalogue;
    if (m_catalogue) {
        connect(m_catalogue, &CatalogueProvider::summaryChanged, this, &PackageDetails::reload);
        connect(m_catalogue, &CatalogueProvider::textsChanged, this, &PackageDetails::reload);
    }
    Q_EMIT catalogueChanged();
    reload();
}

void PackageDetails::setPackageId(const QString &id)
{
    if (m_id == id)
        return;
    m_id = id;
    Q_EMIT packageIdChanged();
    reload();
}

QString PackageDetails::text(const QString &field) const
{
    return m_node ? manifestText(*m_node, field) : QString();
}

QString PackageDetails::title() const
{
    return m_node ? packageTitle(*m_node) : m_id;
}

QString PackageDetails::description() const
{
    return text(QStringLiteral("description"));
}

QUrl PackageDetails::preview() const
{
    return m_node ? packagePreview(*m_node) : QUrl();
}

QString PackageDetails::type() const
{
    return m_node ? m_node->type().toString() : QString();
}

QString PackageDetails::revision() const
{
    return m_node ? m_node->revision().toString() : QString();
}

QString PackageDetails::issuer() const
{
    return m_node ? QString::fromLatin1(m_node->issuerKey().toBase64()) : QString();
}

QString PackageDetails::source() const
{
    const TrackedSource *source = m_node && m_catalogue ? m_catalogue->sourceOf(m_node) : nullptr;
    return source ? source->location() : QString();
}

QVariantList PackageDetails::fields() const
{
    static const QStringList shownElsewhere{
        QStringLiteral("name"), QStringLiteral("description"), QStringLiteral("preview")};
    QVariantList result;
    const QJsonObject manifest = m_node ? m_node->manifest() : QJsonObject();
    for (auto it = manifest.begin(); it != manifest.end(); ++it) {
        if (shownElsewhere.contains(it.key()) || it.value().isObject())
            continue;
        result.append(QVariantMap{
            {QStringLiteral("name"), it.key()},
            {QStringLiteral("value"), shownValue(it.value(), text(it.key()))}});
    }
    return result;
}

QVariantList PackageDetails::keywords() const
{
    QVariantList result;
    if (!m_node)
        return result;
    QVector<const KeywordNode *> nodes;
    const auto held = m_node->keywords();
    for (const KeywordNode *keyword : held)
        nodes.append(keyword);
    std::sort(nodes.begin(), nodes.end(), [](const KeywordNode *a, const KeywordNode *b) {
        const int order = a->displayString().compare(b->displayString(), Qt::CaseInsensitive);
        return order != 0 ? order < 0 : a->id() < b->id();
    });
    for (const KeywordNode *keyword : nodes) {
        const QString shown = keyword->displayString().toString();
        result.append(QVariantMap{
            {QStringLiteral("id"), keyword->id().toString()},
            {QStringLiteral("text"), shown.isEmpty() ? keyword->id().toString() : shown}});
    }
    return result;
}

QVariantList PackageDetails::requirements() const
{
    QVariantList result;
    if (!m_node)
        return result;
    for (const NodeLink &link : m_node->outLinks()) {
        if (link.type != Requires || link.node->kind() != PackageIndexNode::Package)
            continue;
        const auto &required = static_cast<const PackageNode &>(*link.node);
        result.append(QVariantMap{
            {QStringLiteral("id"), required.id().toString()},
            {QStringLiteral("title"), packageTitle(required)}});
    }
    return result;
}

QVariantList PackageDetails::files() const
{
    if (!m_node)
        return {};
    const QVariantList installed = installedFiles(*m_node);
    return installed.isEmpty() ? offeredFiles(*m_node) : installed;
}

void PackageDetails::reload()
{
    m_node = nullptr;
    m_index = m_catalogue ? m_catalogue->packageRepository()->packageIndex()
                          : QSharedPointer<PackageIndex>();
    if (m_index)
        m_node = m_index->getPackage(QStringRef(&m_id));
    Q_EMIT changed();
}

} // namespace nk::pm::app
