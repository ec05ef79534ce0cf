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
    void packagesAreNamedByTheirDirectories();
    void manifestIsTheObject_data();
    void manifestIsTheObject();
    void manifestsPastTheCapacityAreEmpty();
    void manifestThatShrinksIsWhatIsLeft();
    void unusableManifestMeansATypeDirectory();
    void linksToDirectoriesAreFollowed();
    void linksThatMultiplyAreBounded();
    void unreadableDirectoryIsPassedOver();
    void filesOfAPackage();
    void keywordTexts();
    void keywordFilesAreListedByBaseName();
    void keywordFileMayDisappear();
    void links();
    void readsFromManyThreads();
};

void LocalPackageAccessorTest::sourceHandsOutUnreadSnapshots()
{
    Tree tree;
    LocalPackageSource source(tree.directory.path());
    QSignalSpy spy(&source, &PackageSource::updateRequired);
    const auto accessor = source.getAccessor();
    const auto missing = LocalPackageSource("/nowhere/at/all").getAccessor();
    tree.package("p");
    QCOMPARE(accessor->packageCount(), 0);
    accessor->load();
    missing->load();
    QCOMPARE(accessor->packageCount(), 1);
    QCOMPARE(missing->packageCount() + missing->keywordCount() + missing->linkCount(), 0);
    QCOMPARE(missing->languages(), (QStringList{"de", "en"}));
    source.update();
    source.persist();
    QCOMPARE(spy.count(), 0);
}

void LocalPackageAccessorTest::packagesAreNamedByTheirDirectories()
{
    Tree tree;
    QStringList expected{"/top", "a/one", "a:b/two", "a:b:c/three"};
    for (const char *name : {"top", "a/one", "a/b/two", "a/b/two/inner", "a/b/c/three"})
        tree.package(name);
    for (const char *name :
         {"%1", "a b", "a:b", "manifest.json", "\u00e4\u6f22", "new\nline", "x.json"}) {
        tree.package("odd/" + QString(name));
        expected << "odd/" + QString(name);
    }
    QString deep;
    for (int level = 0; level < 400; ++level)
        deep += "level/";
    tree.package(deep + "p");
    expected << QString("level:").repeated(399) + "level/p";
    expected.sort();
    tree.write("packages/manifest.json", "{}");
    tree.write("packages/a/.hidden/p/manifest.json", "{}");
    tree.write("packages/nothing/readme", "");
    QCOMPARE(tree.packages(), expected);
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
    const int room = LocalManifests::longestManifest;
    const QByteArray object = R"({"a": 1})";
    QTest::newRow("as long as is read")
        << object + QByteArray(room - object.size(), ' ') << QJsonObject{{"a", 1}};
    QTest::newRow("longer") << R"({"a": ")" + QByteArray(room, 'x') + "\"}" << QJsonObject();
}

void LocalPackageAccessorTest::manifestIsTheObject()
{
    QFETCH(QByteArray, file);
    QFETCH(QJsonObject, manifest);
    Tree tree;
    tree.package("p", file);
    tree.package("q", R"({"q": true})");
    QCOMPARE(tree.packages(), (QStringList{"/p", "/q"}));
    tree.directory.remove(); // read once, by then
    for (int i = 0; i < 2; ++i) {
        const bool isP = tree.accessor->packageInfo(i).id == "p";
        QCOMPARE(tree.accessor->manifest(i), isP ? manifest : (QJsonObject{{"q", true}}));
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
    // Until they lead back.
    tree.package("a/p");
    tree.package("b/q");
    makeLink(tree.path("packages/self"), tree.path("packages/self"));
    makeLink(tree.path("packages/top"), tree.path("packages"));
    makeLink(tree.path("packages/a/up"), tree.path("packages/a"));
    makeLink(tree.path("packages/a/toB"), tree.path("packages/b"));
    makeLink(tree.path("packages/b/toA"), tree.path("packages/a"));
    QCOMPARE(
        tree.packages(),
        (QStringList{
            "/again", "/alias", "a/p", "a:toB/q", "b/q", "b:toA/p", "linked/p", "linked:sub/q"}));
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

void LocalPackageAccessorTest::unreadableDirectoryIsPassedOver()
{
    Tree tree;
    tree.package("open/p");
    tree.package("closed/q");
    makeLink(tree.path("packages/gone"), "nowhere");
    QVERIFY(!tree.load().isRefused());
    makeLink(tree.path("packages/odd"), QString(300, 'x')); // longer than a name may be
    QVERIFY(tree.load().isRefused());
    QVERIFY(QFile::remove(tree.path("packages/odd")));
    const QString closed = tree.path("packages/closed");
    QVERIFY(QFile::setPermissions(closed, QFile::Permissions()));
    const bool isClosed = !QFileInfo(closed).isReadable();
    const QStringList packages = tree.packages();
    QCOMPARE(tree.accessor->isRefused(), isClosed);
    QFile::setPermissions(closed, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(packages, isClosed ? QStringList{"open/p"} : (QStringList{"closed/q", "open/p"}));
}

void LocalPackageAccessorTest::filesOfAPackage()
{
    Tree top;
    top.package("top");
    const QString path = top.path("packages//top/");
    for (const char *name : {"f", "missing #1?.png", "%1%2"})
        QCOMPARE(top.load().fileUrl(0, name), QUrl::fromLocalFile(path + name));

    Tree tree;
    tree.package("a/b/c");
    tree.write("packages/a/b/c/file", "content");
    const QString file = tree.path("packages/a/b/c/file");
    QCOMPARE(tree.load().fileUrl(0, "file"), QUrl::fromLocalFile(file));
    tree.write("packages/a/b/c/.hidden", "-");
    tree.write("packages/a/b/c/sub/x", "-");
    makeLink(tree.path("packages/a/b/c/gone"), "nowhere");
    const auto files = tree.accessor->files(0);
    QCOMPARE(files->size(), 1);
    QCOMPARE(files->first().name, "file");
    QCOMPARE(files->first().size, 7);
    const auto installer = tree.accessor->createInstaller(0, InstallLocation());
    QTRY_VERIFY(installer->isFinished());
    QCOMPARE(installer->errors().size(), 1);
    QCOMPARE(installer->errors().first().message, "Failed to install file " + file);
    QVERIFY(QDir(tree.path("packages/a/b/c")).removeRecursively());
    QVERIFY(!tree.accessor->files(0)); // not: none
}

void LocalPackageAccessorTest::keywordTexts()
{
    const QString nouns = R"({"en": [{"sg": "chair", "pl": "chairs"}, {"sg": "seat"}],)"
                          R"( "de": [{"pl": "St", "sg": "S"}, {"pl": "T"}]})";
    const QString words = R"({"fr": ["r"], "de": ["rot", "rote"], "en": ["red"]})";
    const QString sorted = "de:rot/ de:rote/ en:red/ fr:r/";
    const QPair<QString, QString> keywords[] = {
        {R"({"type": "noun", "strings": )" + nouns + "}",
         "0 de:S/St de:/T en:chair/chairs en:seat/"},
        {R"({"type": "name", "strings": )" + words + "}", "1 " + sorted},
        {R"({"type": "adjective", "strings": )" + words + "}", "2 " + sorted},
        {R"({"type": "category", "strings": )" + words + "}", "4 " + sorted},
        {R"({"type": "literal", "string": "M8", "strings": {"en": ["no"]}})", "3 :M8/"},
        {R"({"type": "literal"})", "3 :/"},
        {R"({"type": "Noun", "strings": {"en": [{"sg": "a"}]}})", "-1"},
        {R"({"strings": {"en": ["a"]}})", "-1"},
        {R"({"type": "noun", "strings": ["a"]})", "0"},
        {R"({"type": "name", "strings": {"en": "a"}})", "1"},
        {R"({"type": "name", "strings": {"en": [1, {}]}})", "1 en:/ en:/"},
        {R"({"type": "noun", "strings": {"en": ["a"]}})", "0 en:/"},
        {R"({"type": "noun")", "-1"},
        {"[]", "-1"},
        {R"({"type": "literal", "string": ")" + QString(1024 * 1024, 'x') + "\"}", "-1"},
    };
    for (const auto &[json, expected] : keywords) {
        Tree tree;
        const KeywordInfo keyword = tree.keyword(json.toUtf8());
        QCOMPARE(keyword.id, QString("word"));
        QCOMPARE((QStringList{QString::number(keyword.type)} + texts(keyword)).join(' '), expected);
    }
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

void LocalPackageAccessorTest::links()
{
    const QPair<QByteArray, QString> links[] = {
        {R"({"from": "a", "to": "b", "type": "is_a"})", "a 0 b"},
        {R"({"from": "a", "to": "b", "type": "requires"})", "a 6 b"},
        {R"({"from": "a", "to": "b", "type": "IS_A"})", "a -1 b"},
        {R"({"from": 1, "to": [], "type": {}})", " -1 "},
        {"{", " -1 "},
    };
    for (const auto &[json, expected] : links) {
        Tree tree;
        const LinkInfo link = tree.link(json);
        QCOMPARE(QString("%1 %2 %3").arg(link.from).arg(link.type).arg(link.to), expected);
    }
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
