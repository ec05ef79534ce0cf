// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogueprovider.h"
#include "collectionactions.h"
#include "collectiondocument.h"
#include "installs.h"
#include "preferences.h"

#include "references/packagereference.h"

#include <norvak/locations.h>

#include <QAbstractItemModelTester>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::app;

namespace {

constexpr int patience = 30000; // milliseconds

void write(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    file.write(content);
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What a running application has of a collection.
struct Desk
{
    Preferences preferences{Preferences::Lifetime::Passing};
    CatalogueProvider provider;
    Installs installs{provider, preferences};
    CollectionDocument document{provider, installs};
    CollectionActions actions{document};
    QAbstractItemModelTester tester{
        document.packages(), QAbstractItemModelTester::FailureReportingMode::Fatal};

    QVariant data(int row, CollectionModel::Role role)
    {
        return document.packages()->index(row, 0).data(role);
    }
    PackageReference::Status status(int row)
    {
        return PackageReference::Status(data(row, CollectionModel::StatusRole).toInt());
    }
    QStringList ids()
    {
        QStringList ids;
        for (int row = 0; row < document.count(); ++row)
            ids.append(data(row, CollectionModel::IdRole).toString());
        return ids;
    }
};

} // namespace

/// The collection of norvak-catalogue: its rows, its file, and that nothing is lost unasked.
class tst_CollectionDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void keepsTheOrderOfAdding();
    void installsWhatAFileHolds();
    void bringsPackagesToLifeWithTheirSource();
    void keepsEntriesThatItCannotRead();
    void refusesFiles_data();
    void refusesFiles();
    void refusesAnIdentifier();
    void survivesAFailedSave();
    void remembersNoInstallOfACollection();
    void asksBeforeChangesAreLost_data();
    void asksBeforeChangesAreLost();
    void savesBeforeGoingOn();
    void forgetsAStepThatWasCancelled();
    void doesNotOverwriteForeignChanges();

private:
    QString path(const QString &name) const { return m_directory->filePath(name); }
    void addSource() const
    {
        QCOMPARE(m_desk->provider.addSource({SourceKind::Local, path("catalogue")}), QString());
    }

    QScopedPointer<QTemporaryDir> m_directory;
    QScopedPointer<Desk> m_desk;
};

void tst_CollectionDocument::init()
{
    m_directory.reset(new QTemporaryDir);
    nk::Locations::setDataLocation(path("data"));
    write(path("catalogue/packages/things/ball/manifest.json"), R"({"name": "Ball"})");
    write(path("catalogue/packages/things/ball/ball.txt"), "round");
    write(path("catalogue/packages/things/box/manifest.json"), R"({"name": "Box"})");
    m_desk.reset(new Desk);
}

void tst_CollectionDocument::cleanup()
{
    m_desk.reset();
    m_directory.reset();
}

void tst_CollectionDocument::keepsTheOrderOfAdding()
{
    addSource();
    for (const QString id : {"lamp", "box", "ball", "box", "apple"})
        QCOMPARE(m_desk->document.add(id), QString());
    QCOMPARE(m_desk->ids(), (QStringList{"lamp", "box", "ball", "apple"}));
    m_desk->document.remove("box");
    m_desk->document.remove("box");
    m_desk->document.add("box");
    QCOMPARE(m_desk->document.save(path("room.json")), QString());
    m_desk->document.clear();
    QCOMPARE(m_desk->document.count(), 0);
    QCOMPARE(m_desk->document.open(path("room.json")), QString());
    QCOMPARE(m_desk->ids(), (QStringList{"lamp", "ball", "apple", "box"}));
    QVERIFY(!m_desk->document.isModified());
}

void tst_CollectionDocument::installsWhatAFileHolds()
{
    addSource();
    write(path("room.json"), R"({"structs": {"ball": {"package": "ref:1:ball"}}})");
    QCOMPARE(m_desk->document.open(path("room.json")), QString());
    QTRY_COMPARE_WITH_TIMEOUT(m_desk->status(0), PackageReference::Installed, patience);
    const PackageReference *ball = m_desk->provider.packageReference("ball");
    QCOMPARE(read(ball->fileUrl("ball.txt").toLocalFile()), QByteArray("round"));
    QCOMPARE(m_desk->installs.statusOf("ball"), int(PackageReference::Installed));
    QCOMPARE(m_desk->installs.statusOf("box"), int(PackageReference::Unknown)); // nobody asked
}

void tst_CollectionDocument::bringsPackagesToLifeWithTheirSource()
{
    QCOMPARE(m_desk->document.add("ball"), QString());
    QCOMPARE(m_desk->status(0), PackageReference::Unavailable);
    QCOMPARE(m_desk->data(0, CollectionModel::NameRole).toString(), QString("ball"));
    QSignalSpy changed(m_desk->document.packages(), &QAbstractItemModel::dataChanged);
    addSource();
    QTRY_COMPARE_WITH_TIMEOUT(m_desk->status(0), PackageReference::Installed, patience);
    QCOMPARE(m_desk->data(0, CollectionModel::NameRole).toString(), QString("Ball"));
    QVERIFY(!changed.isEmpty());

    m_desk->provider.removeSource(0);
    QTRY_COMPARE_WITH_TIMEOUT(m_desk->status(0), PackageReference::Unavailable, patience);
    QCOMPARE(m_desk->ids(), QStringList{"ball"});
}

void tst_CollectionDocument::keepsEntriesThatItCannotRead()
{
    write(path("room.json"), R"({"author": "me", "structs": {
        "odd": {"package": "ref:99:odd"}, "other": {"package": "ref:1:ball"},
        "number": {"package": 5}, "view": {"zoom": 3}}})");
    QCOMPARE(m_desk->document.open(path("room.json")), QString());
    QCOMPARE(m_desk->ids(), (QStringList{"number", "odd", "other"}));
    for (int row = 0; row < 3; ++row)
        QCOMPARE(m_desk->status(row), PackageReference::Unknown);
    m_desk->document.remove("other");
    QCOMPARE(m_desk->document.save(path("room.json")), QString());
    const QJsonObject saved = QJsonDocument::fromJson(read(path("room.json"))).object();
    QCOMPARE(saved["author"].toString(), QString("me"));
    QCOMPARE(saved["structs"]["odd"]["package"].toString(), QString("ref:99:odd"));
    QCOMPARE(saved["structs"]["view"]["zoom"].toInt(), 3);
    QVERIFY(saved["structs"]["other"].isUndefined());
}

void tst_CollectionDocument::refusesFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("says");
    QTest::newRow("missing") << QByteArray() << "is there";
    QTest::newRow("broken JSON") << QByteArray(R"({"structs": {)") << "Choose another";
    QTest::newRow("something else") << QByteArray(R"({"rooms": []})") << "not a collection";
    QTest::newRow("newer") << QByteArray(R"({"version": 2, "structs": {}})") << "Update";
    QTest::newRow("version in words")
        << QByteArray(R"({"version": "two", "structs": {}})") << "Update";
    QTest::newRow("too large") << QByteArray(17 * 1024 * 1024, ' ') << "not a collection";
    QTest::newRow("directory") << QByteArray("/") << "not a collection";
}

void tst_CollectionDocument::refusesFiles()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, says);
    const QString file = path("wrong.json");
    if (content == "/")
        QVERIFY(QDir().mkdir(file));
    else if (!content.isEmpty())
        write(file, content);
    QCOMPARE(m_desk->document.add("ball"), QString());
    QCOMPARE(m_desk->document.save(path("room.json")), QString());
    m_desk->document.add("box");

    const QString fault = m_desk->document.open(file);
    QVERIFY2(fault.contains(file) && fault.contains(says), qPrintable(fault));
    QCOMPARE(m_desk->ids(), (QStringList{"ball", "box"}));
    QCOMPARE(m_desk->document.path(), path("room.json"));
    QVERIFY(m_desk->document.isModified());
}

void tst_CollectionDocument::refusesAnIdentifier()
{
    QSignalSpy failed(&m_desk->actions, &CollectionActions::failed);
    m_desk->actions.add(QString::fromUtf8("日本"));
    QCOMPARE(failed.count(), 1);
    QCOMPARE(m_desk->document.count(), 0);
    QVERIFY(!m_desk->document.isModified());
}

void tst_CollectionDocument::survivesAFailedSave()
{
    m_desk->document.add("ball");
    const QString file = path("nowhere/room.json");
    QSignalSpy failed(&m_desk->actions, &CollectionActions::failed);
    m_desk->actions.saveFile(file);
    QCOMPARE(failed.count(), 1);
    QVERIFY(failed.first().first().toString().contains(file));
    QCOMPARE(m_desk->document.path(), QString());
    QVERIFY(m_desk->document.isModified());
}

void tst_CollectionDocument::remembersNoInstallOfACollection()
{
    addSource();
    m_desk->document.add("ball");
    m_desk->installs.install("box");
    QCOMPARE(
        m_desk->preferences.value("installs", QStringList()).toStringList(), QStringList{"box"});
    m_desk->installs.install("ball");
    QCOMPARE(
        m_desk->preferences.value("installs", QStringList()).toStringList(),
        (QStringList{"box", "ball"}));
}

void tst_CollectionDocument::asksBeforeChangesAreLost_data()
{
    QTest::addColumn<QByteArray>("wish");
    QTest::addColumn<QByteArray>("granted");
    const QByteArray cleared = SIGNAL(changed());
    QTest::newRow("new") << QByteArray("create") << cleared;
    QTest::newRow("open") << QByteArray("open") << QByteArray(SIGNAL(fileToOpenWanted()));
    QTest::newRow("close") << QByteArray("close") << QByteArray(SIGNAL(closeGranted()));
}

void tst_CollectionDocument::asksBeforeChangesAreLost()
{
    QFETCH(const QByteArray, wish);
    QFETCH(const QByteArray, granted);
    m_desk->document.add("ball");
    QSignalSpy asked(&m_desk->actions, &CollectionActions::unsavedChangesFound);
    const bool isDocument = granted == SIGNAL(changed());
    QObject *sender = isDocument ? static_cast<QObject *>(&m_desk->document) : &m_desk->actions;
    QSignalSpy done(sender, granted.constData());

    QVERIFY(QMetaObject::invokeMethod(&m_desk->actions, wish.constData()));
    QCOMPARE(asked.count(), 1);
    m_desk->actions.cancel();
    QCOMPARE(done.count(), 0);
    QCOMPARE(m_desk->ids(), QStringList{"ball"});

    QVERIFY(QMetaObject::invokeMethod(&m_desk->actions, wish.constData()));
    m_desk->actions.discardChanges();
    QCOMPARE(done.count(), 1);
    QCOMPARE(m_desk->document.count(), isDocument ? 0 : 1); // open may still be cancelled
}

void tst_CollectionDocument::savesBeforeGoingOn()
{
    m_desk->document.add("ball");
    QSignalSpy wanted(&m_desk->actions, &CollectionActions::fileToSaveWanted);
    QSignalSpy granted(&m_desk->actions, &CollectionActions::closeGranted);
    m_desk->actions.close();
    m_desk->actions.saveChanges();
    QCOMPARE(wanted.count(), 1);
    QCOMPARE(granted.count(), 0);
    m_desk->actions.saveFile(path("room.json"));
    QCOMPARE(granted.count(), 1);

    m_desk->document.add("box");
    m_desk->actions.create();
    m_desk->actions.saveChanges(); // has a file by now
    QCOMPARE(wanted.count(), 1);
    QCOMPARE(m_desk->document.count(), 0);
    QCOMPARE(m_desk->document.open(path("room.json")), QString());
    QCOMPARE(m_desk->ids(), (QStringList{"ball", "box"}));
}

/// A save that comes later must not close the window or throw the collection away.
void tst_CollectionDocument::forgetsAStepThatWasCancelled()
{
    m_desk->document.add("ball");
    QSignalSpy granted(&m_desk->actions, &CollectionActions::closeGranted);
    m_desk->actions.close();
    m_desk->actions.saveChanges();
    m_desk->actions.cancel(); // of the choice of a file
    m_desk->actions.saveAs();
    m_desk->actions.saveFile(path("room.json"));

    m_desk->document.add("box");
    m_desk->actions.close();
    m_desk->actions.saveFile(path("nowhere/room.json")); // fails
    m_desk->actions.saveFile(path("room.json"));
    QCOMPARE(granted.count(), 0);
    QVERIFY(!m_desk->document.isModified());
}

void tst_CollectionDocument::doesNotOverwriteForeignChanges()
{
    m_desk->document.add("ball");
    m_desk->actions.saveFile(path("room.json"));
    const QByteArray foreign = R"({"structs": {}, "note": "of another program"})";
    write(path("room.json"), foreign);
    m_desk->document.add("box");
    QSignalSpy found(&m_desk->actions, &CollectionActions::foreignChangesFound);
    m_desk->actions.save();
    QCOMPARE(found.count(), 1);
    QCOMPARE(read(path("room.json")), foreign);
    m_desk->actions.overwrite();
    QVERIFY(read(path("room.json")).contains("ref:1:box"));

    m_desk->document.add("lamp");
    m_desk->actions.save(); // its own writing is no foreign change
    QCOMPARE(found.count(), 1);
    QVERIFY(QFile::remove(path("room.json")));
    m_desk->document.remove("lamp");
    m_desk->actions.save(); // nothing there to be lost
    QCOMPARE(found.count(), 1);
    QVERIFY(QFile::exists(path("room.json")));
}

QTEST_GUILESS_MAIN(tst_CollectionDocument)
#include "tst_collectiondocument.moc"
