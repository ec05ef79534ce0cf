// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordtypes.h"
#include "install/packageinstaller.h"
#include "sources/localmanifests.h"
#include "sources/localpackageaccessor.h"
#include "sources/localpackagesource.h"
#include "support/testfiles.h"

#include <QBuffer>
#include <QJsonArray>
#include <QtConcurrent>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// A directory tree, and what an accessor reads of it.
struct Tree
{
    QString path(const QString &name) const { return directory.filePath(name); }
    void write(const QString &name, const QByteArray &content) { writeFile(path(name), content); }
    void package(const QString &name, const QByteArray &manifest = "{}")
    {
        write("packages/" + name + "/manifest.json", manifest);
    }
    LocalPackageAccessor &load()
    {
        accessor.reset(new LocalPackageAccessor(directory.path()));
        accessor->load();
        return *accessor;
    }
    /// All packages as "type/id", sorted.
    QStringList packages()
    {
        QStringList result;
        for (int i = 0; i < load().packageCount(); ++i) {
            const PackageInfo info = accessor->packageInfo(i);
            result << info.type + '/' + info.id;
        }
        result.sort();
        return result;
    }
    KeywordInfo keyword(const QByteArray &json)
    {
        write("dictionary/word.json", json);
        return load().keywordInfo(0);
    }
    LinkInfo link(const QByteArray &json)
    {
        write("links/link.json", json);
        return load().linkInfo(0);
    }

    QTemporaryDir directory;
    QScopedPointer<LocalPackageAccessor> accessor;
};

/// Texts as "language:string/plural".
QStringList texts(const KeywordInfo &keyword)
{
    QStringList result;
    for (const KeywordString &text : keyword.strings)
        result << text.language + ':' + text.string + '/' + text.plural;
    return result;
}

} // namespace

/// From a directory tree to the records that the index is built of.
class LocalPackageAccessorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sourceHandsOutUnreadSnapshots();
    void emptyRootIsEmpty();
    void packagesAreNamedByTheirDirectories();
    void manifestIsTheObject_data();
    void manifestIsTheObject();
    void manifestsOutliveTheTree();
    void longManifestIsCut();
    void manifestsPastTheCapacityAreEmpty();
    void manifestThatShrinksIsWhatIsLeft();
    void unusableManifestMeansATypeDirectory();
    void linksToDirectoriesAreFollowed();
    void linksThatLeadBackEndTheWalk();
    void linksThatMultiplyAreBounded();
    void deepTreeIsRead();
    void oddNames();
    void unreadableDirectoryIsPassedOver();
    void fileUrls();
    void installerReadsThePackageDirectory();
    void keywordTexts_data();
    void keywordTexts();
    void keywordFilesAreListedByBaseName();
    void keywordFileMayDisappear();
    void links_data();
    void links();
    void readsFromManyThreads();
};

void LocalPackageAccessorTest::sourceHandsOutUnreadSnapshots()
{
    Tree tree;
    tree.package("p");
    LocalPackageSource source(tree.directory.path());
    QCOMPARE(source.priority(), 3);
    QSignalSpy spy(&source, &PackageSource::updateRequired);
    const auto accessor = source.getAccessor();
    QCOMPARE(accessor->packageCount(), 0);
    QCOMPARE(accessor->languages(), (QStringList{"de", "en"}));
    tree.package("q");
    accessor->load();
    QCOMPARE(accessor->packageCount(), 2);
    source.update();
    source.persist();
    QCOMPARE(spy.count(), 0);
}

void LocalPackageAccessorTest::emptyRootIsEmpty()
{
    for (const QString &root : {QTemporaryDir().path(), QString("/nowhere/at/all")}) {
        LocalPackageAccessor accessor(root);
        accessor.load();
        QCOMPARE(accessor.packageCount(), 0);
        QCOMPARE(accessor.keywordCount(), 0);
        QCOMPARE(accessor.linkCount(), 0);
        QCOMPARE(accessor.languages(), (QStringList{"de", "en"}));
    }
}

void LocalPackageAccessorTest::packagesAreNamedByTheirDirectories()
{
    Tree tree;
    tree.package("top");
    tree.package("a/one");
    tree.package("a/b/two");
    tree.package("a/b/two/inner");
    tree.package("a/b/c/three");
    tree.write("packages/manifest.json", "{}");
    tree.write("packages/a/.hidden/p/manifest.json", "{}");
    tree.write("packages/nothing/readme", "");
    QCOMPARE(tree.packages(), (QStringList{"/top", "a/one", "a:b/two", "a:b:c/three"}));
    QCOMPARE(tree.accessor->packageInfo(0).revision, QString());
}

void LocalPackageAccessorTest::manifestIsTheObject_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QJsonObject>("manifest");
    QTest::newRow("object") << QByteArray(R"({"a": {"b": [1]}})")
                            << QJsonObject{{"a", QJsonObject{{"b", QJsonArray{1}}}}};
    QTest::newRow("empty") << QByteArray() << QJsonObject();
    QTest::newRow("array") << QByteArray("[1]") << QJsonObject();
    QTest::newRow("broken") << QByteArray(R"({"a": 1)") << QJsonObject();
    QTest::newRow("nested without end") << QByteArray(1000000, '[') << QJsonObject();
}

void LocalPackageAccessorTest::manifestIsTheObject()
{
    QFETCH(QByteArray, file);
    QFETCH(QJsonObject, manifest);
    Tree tree;
    tree.package("p", file);
    tree.package("q", R"({"q": true})");
    QCOMPARE(tree.packages(), (QStringList{"/p", "/q"}));
    for (int i = 0; i < 2; ++i) {
        const bool isP = tree.accessor->packageInfo(i).id == "p";
        QCOMPARE(tree.accessor->manifest(i), isP ? manifest : (QJsonObject{{"q", true}}));
    }
}

void LocalPackageAccessorTest::manifestsOutliveTheTree()
{
    Tree tree;
    tree.package("p", R"({"a": 1})");
    tree.load();
    tree.directory.remove();
    QCOMPARE(tree.accessor->manifest(0), (QJsonObject{{"a", 1}}));
}

void LocalPackageAccessorTest::longManifestIsCut()
{
    Tree tree;
    const QByteArray start = R"({"a": ")";
    const QByteArray end = "\"}";
    const int room = LocalManifests::longestManifest - start.size() - end.size();
    tree.package("fits", start + QByteArray(room, 'x') + end);
    tree.package("long", start + QByteArray(5 * 1024 * 1024, 'x') + end);
    QCOMPARE(tree.packages(), (QStringList{"/fits", "/long"}));
    for (int i = 0; i < 2; ++i) {
        const int size = tree.accessor->packageInfo(i).id == "fits" ? 1 : 0;
        QCOMPARE(tree.accessor->manifest(i).size(), size);
    }
}

void LocalPackageAccessorTest::manifestsPastTheCapacityAreEmpty()
{
    LocalManifests manifests(10);
    const auto append = [&](QByteArray content) {
        QBuffer buffer(&content);
        buffer.open(QIODevice::ReadOnly);
        return manifests.append(buffer);
    };
    const auto first = append("1234567");
    const auto tooLong = append("89ab");
    const auto last = append("89a");
    const auto none = append("b");
    QCOMPARE(manifests.view(first), QByteArray("1234567"));
    QCOMPARE(manifests.view(tooLong), QByteArray());
    QCOMPARE(manifests.view(last), QByteArray("89a"));
    QCOMPARE(manifests.view(none), QByteArray());
}

void LocalPackageAccessorTest::manifestThatShrinksIsWhatIsLeft()
{
    /// A file that became shorter after its size was asked for.
    struct Shrinking : QBuffer
    {
        qint64 size() const override { return 100; }
        qint64 readData(char *data, qint64) override
        {
            if (isRead)
                return -1;
            isRead = true;
            memcpy(data, "{}", 2);
            return 2;
        }
        bool isRead = false;
    };
    LocalManifests manifests;
    Shrinking file;
    file.open(QIODevice::ReadOnly);
    QCOMPARE(manifests.view(manifests.append(file)), QByteArray("{}"));
    QCOMPARE(manifests.view(manifests.append(file)), QByteArray());
}

void LocalPackageAccessorTest::unusableManifestMeansATypeDirectory()
{
    Tree tree;
    QDir().mkpath(tree.path("packages/directory/manifest.json/below"));
    tree.package("directory/p");
    tree.package("pipe/p");
    QCOMPARE(QProcess::execute("mkfifo", {tree.path("packages/pipe/manifest.json")}), 0);
    tree.package("device/p");
    makeLink(tree.path("packages/device/manifest.json"), "/dev/zero");
    tree.package("dangling/p");
    makeLink(tree.path("packages/dangling/manifest.json"), tree.path("nowhere"));
    QCOMPARE(tree.packages(), (QStringList{"dangling/p", "device/p", "directory/p", "pipe/p"}));
}

void LocalPackageAccessorTest::linksToDirectoriesAreFollowed()
{
    Tree tree;
    QTemporaryDir elsewhere;
    writeFile(elsewhere.filePath("p/manifest.json"), "{}");
    writeFile(elsewhere.filePath("sub/q/manifest.json"), "{}");
    makeLink(tree.path("packages/linked"), elsewhere.path());
    makeLink(tree.path("packages/alias"), elsewhere.filePath("p"));
    makeLink(tree.path("packages/again"), elsewhere.filePath("p"));
    QCOMPARE(tree.packages(), (QStringList{"/again", "/alias", "linked/p", "linked:sub/q"}));
}

void LocalPackageAccessorTest::linksThatLeadBackEndTheWalk()
{
    Tree tree;
    tree.package("a/p");
    tree.package("b/q");
    makeLink(tree.path("packages/self"), tree.path("packages/self"));
    makeLink(tree.path("packages/top"), tree.path("packages"));
    makeLink(tree.path("packages/a/up"), tree.path("packages/a"));
    makeLink(tree.path("packages/a/toB"), tree.path("packages/b"));
    makeLink(tree.path("packages/b/toA"), tree.path("packages/a"));
    QCOMPARE(tree.packages(), (QStringList{"a/p", "a:toB/q", "b/q", "b:toA/p"}));
}

void LocalPackageAccessorTest::linksThatMultiplyAreBounded()
{
    // Two links in each of 40 directories: 2^40 ways to the last one.
    Tree tree;
    for (int i = 0; i < 40; ++i) {
        const QString next = tree.path(QString("level/%1").arg(i + 1));
        makeLink(tree.path(QString("level/%1/left").arg(i)), next);
        makeLink(tree.path(QString("level/%1/right").arg(i)), next);
    }
    QDir().mkpath(tree.path("level/40"));
    makeLink(tree.path("packages/entry"), tree.path("level/0"));
    tree.package("honest/p");
    QVERIFY(tree.packages().contains("honest/p"));
}

void LocalPackageAccessorTest::deepTreeIsRead()
{
    Tree tree;
    QString name;
    QStringList type;
    for (int level = 0; level < 400; ++level) {
        name += "level/";
        type << "level";
    }
    tree.package(name + "p");
    QCOMPARE(tree.packages(), QStringList{type.join(':') + "/p"});
}

void LocalPackageAccessorTest::oddNames()
{
    Tree tree;
    const QStringList names{"%1",           "a b",       "a:b",   "manifest.json",
                            "\u00e4\u6f22", "new\nline", "x.json"};
    for (const QString &name : names)
        tree.package("type/" + name);
    QStringList expected;
    for (const QString &name : names)
        expected << "type/" + name;
    expected.sort();
    QCOMPARE(tree.packages(), expected);
}

void LocalPackageAccessorTest::unreadableDirectoryIsPassedOver()
{
    Tree tree;
    tree.package("open/p");
    tree.package("closed/q");
    const QString closed = tree.path("packages/closed");
    QVERIFY(QFile::setPermissions(closed, QFile::Permissions()));
    const bool isClosed = !QFileInfo(closed).isReadable();
    const QStringList packages = tree.packages();
    QFile::setPermissions(closed, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(packages, isClosed ? QStringList{"open/p"} : (QStringList{"closed/q", "open/p"}));
}

void LocalPackageAccessorTest::fileUrls()
{
    Tree tree;
    tree.package("top");
    tree.load();
    const QString packages = tree.path("packages");
    const auto url = [&](const QString &name) { return tree.accessor->fileUrl(0, name); };
    QCOMPARE(url("f"), QUrl::fromLocalFile(packages + "//top/f"));
    QCOMPARE(url("missing #1?.png"), QUrl::fromLocalFile(packages + "//top/missing #1?.png"));
    QCOMPARE(url("%1%2"), QUrl::fromLocalFile(packages + "//top/%1%2"));

    Tree deep;
    deep.package("a/b/c");
    QCOMPARE(deep.load().fileUrl(0, "f"), QUrl::fromLocalFile(deep.path("packages/a/b/c/f")));
}

void LocalPackageAccessorTest::installerReadsThePackageDirectory()
{
    Tree tree;
    tree.package("a/b/c");
    tree.write("packages/a/b/c/file", "content");
    const auto installer = tree.load().createInstaller(0, InstallLocation());
    QTRY_VERIFY(installer->isFinished());
    QCOMPARE(installer->errors().size(), 1);
    QCOMPARE(
        installer->errors().first().message,
        "Failed to install file " + tree.path("packages/a/b/c/file"));
}

void LocalPackageAccessorTest::keywordTexts_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("strings");
    const auto row = [](const char *name, const QByteArray &json, int type,
                        const QStringList &strings) {
        QTest::newRow(name) << json << type << strings;
    };
    const QByteArray nouns = R"({"en": [{"sg": "chair", "pl": "chairs"}, {"sg": "seat", "pl":
        "seats"}], "de": [{"pl": "St", "sg": "S"}, {"sg": "T"}]})";
    const QByteArray words = R"({"fr": ["r"], "de": ["rot", "rote"], "en": ["red"]})";
    row("noun", R"({"type": "noun", "strings": )" + nouns + "}", 0,
        {"de:S/St", "de:T/", "en:chair/chairs", "en:seat/seats"});
    const QStringList sorted{"de:rot/", "de:rote/", "en:red/", "fr:r/"};
    row("name", R"({"type": "name", "strings": )" + words + "}", 1, sorted);
    row("adjective", R"({"type": "adjective", "strings": )" + words + "}", 2, sorted);
    row("category", R"({"type": "category", "strings": )" + words + "}", 4, sorted);
    row("literal", R"({"type": "literal", "string": "M8", "strings": {"en": ["no"]}})", 3,
        {":M8/"});
    row("literal without text", R"({"type": "literal"})", 3, {":/"});
    row("unknown type", R"({"type": "Noun", "strings": {"en": [{"sg": "a"}]}})", -1, {});
    row("no type", R"({"strings": {"en": ["a"]}})", -1, {});
    row("strings of the wrong kind", R"({"type": "noun", "strings": ["a"]})", 0, {});
    row("language of the wrong kind", R"({"type": "name", "strings": {"en": "a"}})", 1, {});
    row("texts of the wrong kind", R"({"type": "name", "strings": {"en": [1, {}]}})", 1,
        {"en:/", "en:/"});
    row("forms of the wrong kind", R"({"type": "noun", "strings": {"en": ["a"]}})", 0, {"en:/"});
    row("broken", R"({"type": "noun")", -1, {});
    row("array", "[]", -1, {});
    row("longer than a mebibyte",
        R"({"type": "literal", "string": ")" + QByteArray(1024 * 1024, 'x') + "\"}", -1, {});
}

void LocalPackageAccessorTest::keywordTexts()
{
    QFETCH(QByteArray, json);
    Tree tree;
    const KeywordInfo keyword = tree.keyword(json);
    QCOMPARE(keyword.id, QString("word"));
    QTEST(keyword.type, "type");
    QTEST(texts(keyword), "strings");
}

void LocalPackageAccessorTest::keywordFilesAreListedByBaseName()
{
    Tree tree;
    tree.write("dictionary/plain.json", R"({"type": "literal", "string": "a"})");
    tree.write("dictionary/two.dots.json", R"({"type": "literal", "string": "a"})");
    tree.write("dictionary/readme.txt", "");
    tree.write("dictionary/sub/inner.json", "{}");
    QDir().mkpath(tree.path("dictionary/directory.json"));
    QMap<QString, int> types;
    for (int i = 0; i < tree.load().keywordCount(); ++i)
        types.insert(tree.accessor->keywordInfo(i).id, tree.accessor->keywordInfo(i).type);
    QCOMPARE(types, (QMap<QString, int>{{"plain", int(KeywordType::Literal)}, {"two", -1}}));
}

void LocalPackageAccessorTest::keywordFileMayDisappear()
{
    Tree tree;
    tree.keyword(R"({"type": "literal", "string": "a"})");
    tree.write("dictionary/word.json", R"({"type": "literal", "string": "b"})");
    QCOMPARE(texts(tree.accessor->keywordInfo(0)), QStringList{":b/"});
    QFile::remove(tree.path("dictionary/word.json"));
    QCOMPARE(QProcess::execute("mkfifo", {tree.path("dictionary/word.json")}), 0);
    QCOMPARE(tree.accessor->keywordInfo(0).id, QString("word"));
    QCOMPARE(tree.accessor->keywordInfo(0).type, -1);
    QVERIFY(tree.accessor->keywordInfo(0).strings.isEmpty());
}

void LocalPackageAccessorTest::links_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("ends");
    QTest::newRow("is_a") << QByteArray(R"({"from": "a", "to": "b", "type": "is_a"})") << 0
                          << "a>b";
    QTest::newRow("requires") << QByteArray(R"({"from": "a", "to": "b", "type": "requires"})") << 6
                              << "a>b";
    QTest::newRow("capitals") << QByteArray(R"({"from": "a", "to": "b", "type": "IS_A"})") << -1
                              << "a>b";
    QTest::newRow("wrong kinds") << QByteArray(R"({"from": 1, "to": [], "type": {}})") << -1 << ">";
    QTest::newRow("broken") << QByteArray("{") << -1 << ">";
}

void LocalPackageAccessorTest::links()
{
    QFETCH(QByteArray, json);
    Tree tree;
    const LinkInfo link = tree.link(json);
    QTEST(link.type, "type");
    QTEST(link.from + '>' + link.to, "ends");
}

void LocalPackageAccessorTest::readsFromManyThreads()
{
    Tree tree;
    tree.package("a/p", R"({"a": 1})");
    tree.write("dictionary/word.json", R"({"type": "literal", "string": "a"})");
    tree.load();
    QThreadPool pool;
    pool.setMaxThreadCount(4);
    QVector<QFuture<bool>> results;
    for (int i = 0; i < 4; ++i) {
        results << QtConcurrent::run(&pool, [&tree] {
            bool ok = true;
            for (int k = 0; k < 100; ++k) {
                ok &= tree.accessor->fileUrl(0, "f").path().endsWith("packages/a/p/f");
                ok &= tree.accessor->manifest(0).size() == 1;
                ok &= tree.accessor->keywordInfo(0).strings.size() == 1;
            }
            return ok;
        });
    }
    for (const QFuture<bool> &result : qAsConst(results))
        QVERIFY(result.result());
}

QTEST_GUILESS_MAIN(LocalPackageAccessorTest)
#include "tst_localpackageaccessor.moc"
