// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "fuzztarget.h"
#include "sources/localpackageaccessor.h"

#include <norvak/locations.h>

#include <QUrl>

namespace nk::pm::fuzz {

namespace {

/// A tree of one package, one keyword and one link, whose contents change.
class Tree
{
public:
    Tree()
    {
        const QDir root = nk::Locations::dataLocation();
        require(
            root.mkpath("tree/packages/furniture/chairs/nora") && root.mkpath("tree/dictionary")
                && root.mkpath("tree/links"),
            "The tree can't be made");
    }

    QString root() const { return nk::Locations::dataLocation().filePath("tree"); }

    void fill(const QByteArray &manifest, const QByteArray &keyword, const QByteArray &link) const
    {
        writeInput(root() + "/packages/furniture/chairs/nora/manifest.json", manifest);
        writeInput(root() + "/dictionary/seat.json", keyword);
        writeInput(root() + "/links/nora-is-a-seat.json", link);
    }
};

/// One input is three files, with a NUL in between.
constexpr char separator = '\0';

QByteArray joined(const QByteArray &manifest, const QByteArray &keyword, const QByteArray &link)
{
    return manifest + separator + keyword + separator + link;
}

} // namespace

void runOnce(const QByteArray &input)
{
    static const Tree tree;
    const QList<QByteArray> parts = input.split(separator);
    tree.fill(parts.value(0), parts.value(1), parts.value(2));
    LocalPackageAccessor accessor(tree.root());
    accessor.load();
    require(accessor.packageCount() == 1, "There is one package, whatever its manifest");
    require(accessor.keywordCount() == 1 && accessor.linkCount() == 1, "A file was not found");
    require(accessor.packageInfo(0).id == "nora", "The directory names the package");
    readAll(accessor);
}

QVector<Seed> seeds()
{
    const QByteArray chair = R"({"name":"Nora","size":[1.5,2],"tags":{"new":true}})";
    const QByteArray link = R"({"type":"is_a","from":"nora","to":"seat"})";
    return {
        {"noun",
         joined(chair, R"({"type":"noun","strings":{"en":[{"sg":"seat","pl":"seats"}]}})", link)},
        {"adjective", joined("{}", R"({"type":"adjective","strings":{"de":["rot"]}})", link)},
        {"literal", joined("{}", R"({"type":"literal","string":"M8"})", "{}")},
        {"wrong types", joined("[]", R"({"type":1,"strings":[],"string":{}})", R"({"from":null})")},
        {"binary", joined("qbjs\x01", "\xd9\xd9\xf7", "\xff\xfe")},
        {"empty", joined({}, {}, {})},
    };
}

} // namespace nk::pm::fuzz
