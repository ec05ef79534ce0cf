// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogueprovider.h"
#include "collectionactions.h"
#include "collectiondocument.h"
#include "installs.h"
#include "preferences.h"
#include "support/columns.h"
#include "support/testfiles.h"

#include "references/packagereference.h"

#include <norvak/locations.h>

#include <QAbstractItemModelTester>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::app;
using namespace nk::pm::test;

namespace {

constexpr int patience = 30000; // milliseconds

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
    void failuresChangeNothing();
    void asksBeforeChangesAreLost_data();
    void asksBeforeChangesAreLost();
    void savesBeforeGoingOn();
    void forgetsAStepThatWasCancelled();
    void doesNotOverwriteForeignChanges();

private:
    QString path(const QString &name) const { return m_directory->filePath(name); }
    QString room() const { return path("room.json"); }
    QStringList rememberedInstalls() const
    {
        return m_desk->preferences.value("installs", QStringList()).toStringList();
    }
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
    writeFile(path("catalogue/packages/things/ball/manifest.json"), R"({"name": "Ball"})");
    writeFile(path("catalogue/packages/things/ball/ball.txt"), "round");
    writeFile(path("catalogue/packages/things/box/manifest.json"), R"({"name": "Box"})");
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
    QCOMPARE(m_desk->document.save(room()), QString());
    m_desk->document.clear();
    QCOMPARE(m_desk->document.count(), 0);
    QCOMPARE(m_desk->document.open(room()), QString());
    QCOMPARE(m_desk->ids(), (QStringList{"lamp", "ball", "apple", "box"}));
    QVERIFY(!m_desk->document.isModified());
}

void tst_CollectionDocument::installsWhatAFileHolds()
{
    addSource();
    writeFile(room(), R"({"structs": {"ball": {"package": "ref:1:ball"}}})");
    QCOMPARE(m_desk->document.open(room()), QString());
    QTRY_COMPARE_WITH_TIMEOUT(m_desk->status(0), PackageReference::Installed, patience);
    const PackageReference *ball = m_desk->provider.packageReference("ball");
    QCOMPARE(readFile(ball->fileUrl("ball.txt").toLocalFile()), QByteArray("round"));
    QCOMPARE(m_desk->installs.statusOf("box"), int(PackageReference::Unknown)); // nobody asked

    // The file remembers what is in the collection; the application the rest.
    m_desk->installs.install("box");
    QCOMPARE(rememberedInstalls(), QStringList{"box"});
    m_desk->installs.install("ball");
    QCOMPARE(rememberedInstalls(), (QStringList{"box", "ball"}));
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
    writeFile(room(), R"({"author": "me", "structs": {
        "odd": {"package": "ref:99:odd"}, "other": {"package": "ref:1:ball"},
        "number": {"package": 5}, "view": {"zoom": 3}}})");
    QCOMPARE(m_desk->document.open(room()), QString());
    QCOMPARE(m_desk->ids(), (QStringList{"number", "odd", "other"}));
    for (int row = 0; row < 3; ++row)
        QCOMPARE(m_desk->status(row), PackageReference::Unknown);
    m_desk->document.remove("other");
    QCOMPARE(m_desk->document.save(room()), QString());
    const QJsonObject saved = QJsonDocument::fromJson(readFile(room())).object();
    QCOMPARE(saved["author"].toString(), QString("me"));
    QCOMPARE(saved["structs"]["odd"]["package"].toString(), QString("ref:99:odd"));
    QCOMPARE(saved["structs"]["view"]["zoom"].toInt(), 3);
    QVERIFY(saved["structs"]["other"].isUndefined());
}

void tst_CollectionDocument::refusesFiles_data()
{
    Columns<QByteArray, QString>("content", "says")
        .row("missing", "", "is there")
        .row("broken JSON", R"({"structs": {)", "Choose another")
        .row("something else", R"({"rooms": []})", "not a collection")
        .row("newer", R"({"version": 2, "structs": {}})", "Update")
        .row("version in words", R"({"version": "two", "structs": {}})", "Update")
        .row("too large", QByteArray(17 * 1024 * 1024, ' '), "not a collection")
        .row("directory", "/", "not a collection");
}

void tst_CollectionDocument::refusesFiles()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, says);
    const QString file = path("wrong.json");
    if (content == "/")
        QVERIFY(QDir().mkdir(file));
    else if (!content.isEmpty())
        writeFile(file, content);
    QCOMPARE(m_desk->document.add("ball"), QString());
    QCOMPARE(m_desk->document.save(room()), QString());
    m_desk->document.add("box");

    const QString fault = m_desk->document.open(file);
    QVERIFY2(fault.contains(file) && fault.contains(says), qPrintable(fault));
    QCOMPARE(m_desk->ids(), (QStringList{"ball", "box"}));
    QCOMPARE(m_desk->document.path(), room());
    QVERIFY(m_desk->document.isModified());
}

void tst_CollectionDocument::failuresChangeNothing()
{
    QSignalSpy failed(&m_desk->actions, &CollectionActions::failed);
    m_desk->actions.add(QString::fromUtf8("日本"));
    QCOMPARE(failed.count(), 1);
    QCOMPARE(m_desk->document.count(), 0);
    QVERIFY(!m_desk->document.isModified());

    m_desk->document.add("ball");
    m_desk->actions.saveFile(path("nowhere/room.json"));
    QCOMPARE(failed.count(), 2);
    QVERIFY(failed.last().first().toString().contains(path("nowhere/room.json")));
    QCOMPARE(m_desk->document.path(), QString());
    QVERIFY(m_desk->document.isModified());
}

void tst_CollectionDocument::asksBeforeChangesAreLost_data()
{
    Columns<QByteArray, QByteArray>("wish", "granted")
        .row("new", "create", SIGNAL(fileToOpenWanted())) // which is not
        .row("open", "open", SIGNAL(fileToOpenWanted()))
        .row("close", "close", SIGNAL(closeGranted()));
}

void tst_CollectionDocument::asksBeforeChangesAreLost()
{
    QFETCH(const QByteArray, wish);
    QFETCH(const QByteArray, granted);
    m_desk->document.add("ball");
    QSignalSpy asked(&m_desk->actions, &CollectionActions::unsavedChangesFound);
    QSignalSpy signalled(&m_desk->actions, granted);
    for (const bool isDiscarded : {false, true}) {
        QVERIFY(QMetaObject::invokeMethod(&m_desk->actions, wish));
        if (!isDiscarded)
            m_desk->actions.cancel();
        m_desk->actions.discardChanges(); // which is too late after the other
        const bool isNew = wish == "create";
        QCOMPARE(signalled.count(), isDiscarded && !isNew ? 1 : 0);
        // To open a file may still be cancelled.
        QCOMPARE(m_desk->ids(), isDiscarded && isNew ? QStringList() : QStringList{"ball"});
    }
    QCOMPARE(asked.count(), 2);
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
    m_desk->actions.saveFile(room());
    QCOMPARE(granted.count(), 1);

    m_desk->document.add("box");
    m_desk->actions.create();
    m_desk->actions.saveChanges(); // has a file by now
    QCOMPARE(wanted.count(), 1);
    QCOMPARE(m_desk->document.count(), 0);
    QCOMPARE(m_desk->document.open(room()), QString());
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
    m_desk->actions.saveFile(room());

    m_desk->document.add("box");
    m_desk->actions.close();
    m_desk->actions.saveFile(path("nowhere/room.json")); // fails
    m_desk->actions.saveFile(room());
    QCOMPARE(granted.count(), 0);
    QVERIFY(!m_desk->document.isModified());
}

void tst_CollectionDocument::doesNotOverwriteForeignChanges()
{
    m_desk->document.add("ball");
    m_desk->actions.saveFile(room());
    const QByteArray foreign = R"({"structs": {}, "note": "of another program"})";
    writeFile(room(), foreign);
    m_desk->document.add("box");
    QSignalSpy found(&m_desk->actions, &CollectionActions::foreignChangesFound);
    m_desk->actions.save();
    QCOMPARE(found.count(), 1);
    QCOMPARE(readFile(room()), foreign);
    m_desk->actions.overwrite();
    QVERIFY(readFile(room()).contains("ref:1:box"));

    m_desk->document.add("lamp");
    m_desk->actions.save(); // its own writing is no foreign change
    QCOMPARE(found.count(), 1);
    QVERIFY(QFile::remove(room()));
    m_desk->document.remove("lamp");
    m_desk->actions.save(); // nothing there to be lost
    QCOMPARE(found.count(), 1);
    QVERIFY(QFile::exists(room()));
}

QTEST_GUILESS_MAIN(tst_CollectionDocument)
#include "tst_collectiondocument.moc"
