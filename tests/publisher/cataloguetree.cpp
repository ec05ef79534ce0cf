// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"

#include "support/testfiles.h"

#include <QDir>

#include <filesystem>

namespace nk::pm::test {

CatalogueTree::CatalogueTree()
{
    directory("packages");
}

CatalogueTree::~CatalogueTree()
{
    // QTemporaryDir leaves behind names that aren't UTF-8.
    std::filesystem::remove_all(path().toStdString());
}

void CatalogueTree::file(const QString &relative, const QByteArray &content)
{
    writeFile(path() + '/' + relative, content);
}

void CatalogueTree::directory(const QString &relative)
{
    QDir().mkpath(path() + '/' + relative);
}

void CatalogueTree::remove(const QString &relative)
{
    const QString target = path() + '/' + relative;
    if (!QFile::remove(target) && !QDir(target).removeRecursively())
        qFatal("Can't remove %s", qPrintable(target));
}

void CatalogueTree::package(const QString &relative, const QByteArray &manifest)
{
    file("packages/" + relative + "/manifest.json", manifest);
}

void CatalogueTree::keyword(const QString &id)
{
    file(
        "dictionary/" + id + ".json",
        "{\"type\":\"name\",\"strings\":{\"de\":[\"" + id.toUtf8() + "\"]}}");
}

void CatalogueTree::link(
    const QString &name, const QString &from, const QString &type, const QString &to)
{
    file(
        "links/" + name + ".json",
        QString(R"({"from":"%1","type":"%2","to":"%3"})").arg(from, type, to).toUtf8());
}

void CatalogueTree::fillWithGoods()
{
    package(
        "furniture/chairs/stool", R"({ "title": "Stool", "size": [0.4, 0.45], "type": "own" })");
    file("packages/furniture/chairs/stool/stool.obj", "v 0 0 0\n");
    file("packages/furniture/chairs/stool/preview.svg", "<svg/>");
    package("materials/oak", R"({"title":"Eiche \u00fc"})");
    file("packages/materials/oak/oak.png", QByteArray(200000, 'o'));
    package("loose");

    file("dictionary/chair.json", R"({"type":"noun","strings":{
        "en":[{"sg":"chair","pl":"chairs"},{"sg":"seat"}],
        "de":[{"sg":"Stuhl","pl":"Stühle"},{"pl":"Sitzmöbel"}]}})");
    file("dictionary/wooden.json", R"({"type":"adjective","strings":{"de":["hölzern"]}})");
    file("dictionary/sku.json", R"({"type":"literal","string":"SKU-4711"})");
    file("dictionary/rooms.json", R"({"type":"category","strings":{"en":["Rooms","Places"]}})");
    keyword("nordic");

    link("stool-is-chair", "stool", "is_a", "chair");
    link("stool-needs-oak", "stool", "requires", "oak");
    link("chair-is-wooden", "chair", "is", "wooden");
    link("rooms-hold-stool", "rooms", "contains", "stool");
}

} // namespace nk::pm::test
