// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "couchdb/couchdocuments.h"

#include "catalogue/parallel.h"
#include "couchdb/packagesmap.h"
#include "index/keywordtypes.h"
#include "inspect/ledgerjson.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace nk::pm::publisher {

namespace {

QJsonObject keywordContent(const KeywordInfo &keyword)
{
    QJsonObject content{{QStringLiteral("keywordType"), keywordTypeName(keyword.type)}};
    if (keyword.type == int(KeywordType::Literal)) {
        content.insert(QStringLiteral("string"), keyword.strings.value(0).string);
        return content;
    }
    QJsonObject strings;
    for (const KeywordString &text : keyword.strings) {
        QJsonArray texts = strings.value(text.language).toArray();
        if (keyword.type != int(KeywordType::Noun)) {
            texts.append(text.string);
        } else {
            texts.append(QJsonObject{
                {QStringLiteral("sg"), text.string}, {QStringLiteral("pl"), text.plural}});
        }
        strings.insert(text.language, texts);
    }
    content.insert(QStringLiteral("strings"), strings);
    return content;
}

CouchDocument keywordDocument(const CatalogueKeyword &keyword)
{
    return {QStringLiteral("keyword:") + keyword.info.id, keywordContent(keyword.info)};
}

CouchDocument packageDocument(const Catalogue &catalogue, const CataloguePackage &package)
{
    CouchDocument document{
        QStringLiteral("package:") + package.id,
        {{QStringLiteral("packageType"), package.type},
         {QStringLiteral("manifest"), QJsonDocument::fromJson(package.manifest).object()}}};
    for (const PackageFile &file : package.files)
        document.attachments.append(
            {file.name, catalogue.absolutePath(package.filePath(file)), {}});
    return document;
}

CouchDocument linkDocument(const CatalogueLink &link)
{
    const QString name = link.file.section(u'/', -1).section(u'.', 0, 0);
    return {
        QStringLiteral("link:") + name,
        {{QStringLiteral("from"), link.info.from},
         {QStringLiteral("to"), link.info.to},
         {QStringLiteral("linkType"), linkTypeName(link.info.type)}}};
}

// Leaves the digest empty for a file that can't be read.
void hashAttachments(CouchDocument &document)
{
    for (CouchAttachment &attachment : document.attachments) {
        QFile file(attachment.path);
        QCryptographicHash hash(QCryptographicHash::Md5);
        if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
            continue;
        attachment.md5 = hash.result();
        attachment.size = file.size();
    }
}

QString couchDigest(const CouchAttachment &attachment)
{
    return QStringLiteral("md5-") + QString::fromLatin1(attachment.md5.toBase64());
}

QJsonObject withoutPrivateMembers(const QJsonObject &stored)
{
    QJsonObject content;
    for (auto member = stored.begin(); member != stored.end(); ++member) {
        if (!member.key().startsWith(u'_'))
            content.insert(member.key(), member.value());
    }
    return content;
}

QJsonObject storedAttachments(const QJsonObject &stored)
{
    return stored.value(QLatin1String("_attachments")).toObject();
}

} // namespace

QVector<CouchDocument> couchDocuments(const Catalogue &catalogue, Problems &problems)
{
    QVector<CouchDocument> documents;
    for (const CatalogueKeyword &keyword : catalogue.keywords)
        documents.append(keywordDocument(keyword));
    for (const CataloguePackage &package : catalogue.packages)
        documents.append(packageDocument(catalogue, package));
    for (const CatalogueLink &link : catalogue.links)
        documents.append(linkDocument(link));

    forEachOnAllCores(documents, hashAttachments);
    for (const CouchDocument &document : qAsConst(documents)) {
        for (const CouchAttachment &attachment : document.attachments) {
            if (attachment.md5.isEmpty())
                problems.error(
                    attachment.path.mid(catalogue.root.size() + 1),
                    QStringLiteral("can't be read"));
        }
    }
    return documents;
}

QJsonObject couchDesignDocument(const QJsonObject &stored)
{
    QJsonObject views = stored.value(QLatin1String("views")).toObject();
    views.insert(
        QStringLiteral("packages"), QJsonObject{{QStringLiteral("map"), packagesMapFunction()}});
    QJsonObject design = stored;
    design.insert(QStringLiteral("language"), QStringLiteral("javascript"));
    design.insert(QStringLiteral("views"), views);
    return design;
}

QVector<CouchAttachment> missingAttachments(
    const CouchDocument &document, const QJsonObject &stored)
{
    const QJsonObject held = storedAttachments(stored);
    QVector<CouchAttachment> missing;
    for (const CouchAttachment &attachment : document.attachments) {
        const QJsonObject stub = held.value(attachment.name).toObject();
        if (stub.value(QLatin1String("digest")).toString() != couchDigest(attachment)
            || stub.value(QLatin1String("length")).toDouble() != double(attachment.size)
            || stub.value(QLatin1String("content_type")) != QLatin1String(couchAttachmentType))
            missing.append(attachment);
    }
    return missing;
}

bool isUpToDate(const CouchDocument &document, const QJsonObject &stored)
{
    return withoutPrivateMembers(stored) == document.content
           && storedAttachments(stored).size() == document.attachments.size()
           && missingAttachments(document, stored).isEmpty();
}

} // namespace nk::pm::publisher
