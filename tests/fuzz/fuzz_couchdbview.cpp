// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "fuzztarget.h"
#include "sources/couchdbpackageaccessor.h"

#include <norvak/locations.h>

#include <QJsonArray>
#include <QJsonDocument>

namespace nk::pm::fuzz {

namespace {

const QJsonObject chair{
    {"_id", "package:nora"},
    {"_rev", "3-59d1"},
    {"packageType", "furniture:chairs"},
    {"manifest", QJsonObject{{"name", "Nora"}, {"size", QJsonArray{1.5, 2}}}},
    {"_attachments",
     QJsonObject{{"deep/picture.png", QJsonObject{{"digest", "md5-XrY7u+Ae7tCTyyK7j1rNww=="}}}}},
};

const QJsonObject seat{
    {"_id", "keyword:seat"},
    {"keywordType", "noun"},
    {"strings",
     QJsonObject{
         {"en", QJsonArray{QJsonObject{{"sg", "seat"}, {"pl", "seats"}}}},
         {"de", QJsonArray{QJsonObject{{"sg", "Sitz"}}}}}},
};

const QJsonObject isSeat{{"_id", "link:1"}, {"linkType", "is_a"}, {"from", "nora"}, {"to", "seat"}};

QJsonObject row(const char *kind, const QJsonObject &document)
{
    return {{"id", document.value("_id")}, {"key", QJsonArray{kind}}, {"value", document}};
}

QByteArray response(const QJsonArray &rows)
{
    return QJsonDocument(QJsonObject{{"total_rows", rows.size()}, {"rows", rows}})
        .toJson(QJsonDocument::Compact);
}

} // namespace

void runOnce(const QByteArray &input)
{
    static const QString path = nk::Locations::dataLocation().filePath("view");
    writeInput(path, input);
    CouchDBPackageAccessor accessor(path, QUrl("http://localhost:5984/catalogue"), nullptr);
    accessor.load();
    readAll(accessor);
    for (int i = 0; i < accessor.packageCount(); ++i) {
        const QUrl url = accessor.fileUrl(i, "deep/picture.png");
        require(!url.isValid() || url.host() == "localhost", "A file is on a strange server");
    }
}

QVector<Seed> seeds()
{
    const QJsonArray wrongTypes{
        1, QJsonObject{{"key", "package"}}, QJsonObject{{"key", QJsonArray()}},
        QJsonObject{{"key", QJsonArray{"keyword"}}, {"value", 1}}};
    return {
        {"empty", response({})},
        {"package", response({row("package", chair)})},
        {"keyword", response({row("keyword", seat)})},
        {"link", response({row("link", isSeat)})},
        {"catalogue", response({row("package", chair), row("keyword", seat), row("link", isSeat)})},
        {"wrong types", response(wrongTypes)},
        {"error", R"({"error":"not_found","reason":"missing"})"},
    };
}

} // namespace nk::pm::fuzz
