// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "modeltools.h"
#include "query/manifeststringfield.h"
#include "query/packagelistmodel.h"
#include "query/sortbyintegerfield.h"
#include "support/scopeddatalocation.h"
#include "support/testprovider.h"

#include <QAbstractItemModelTester>
#include <QTimer>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

using Log = QStringList;
const Log silence;

/// A model with everything that a test looks at, and a provider with the packages a to f of type
/// "letter" and x of type "other".
struct Fixture
{
    std::unique_ptr<TestProvider> provider = std::make_unique<TestProvider>();
    IdMatcher matcher;
    SortByIntegerField sorter;
    PackageListModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    ModelLog log{model};

    /// \a ranks are what the letters are sorted by.
    explicit Fixture(const QVector<int> &ranks = {1, 2, 3, 4, 5, 6})
    {
        MemoryCatalogue &catalogue = provider->source.catalogue;
        for (int i = 0; i < ranks.size(); ++i)
            catalogue.package(QString(QChar('a' + i)), "letter", {{"rank", ranks.at(i)}});
        catalogue.package("x", "other", {{"title", "Xylophone"}});
        provider->publish();
        sorter.setName("rank");
        log.add(model, &PackageListModel::countChanged, "count");
    }

    /// Shows all letters, and forgets how that came.
    void show()
    {
        model.setPackageType("letter");
        model.setPackageProvider(provider.get());
        settled();
    }
    /// Shows the letters \a accepted.
    void show(const QString &accepted)
    {
        matcher.accept(accepted);
        model.setMatcher(&matcher);
        show();
        matcher.functionsMade = 0;
    }
    /// What comes of changing the matcher, of setting the sorter, of all that is due.
    Log accept(const QString &ids)
    {
        matcher.accept(ids);
        return settled();
    }
    Log sort(PackageSorter *by)
    {
        model.setSorter(by);
        return settled();
    }
    Log settled()
    {
        settle(model);
        return log.take();
    }
    QTimer *timer() const { return model.findChild<QTimer *>(); }
};

} // namespace

class TestPackageListModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void waitsForItsFirstIndex();
    void wrongProvider();
    void firstLoad();
    void changesAreGathered();
    void unknownType();
    void filterGivesRowChanges();
    void newIndexResets();
    void settingMatcherIsSilent();
    void settingSorterIsSilent();
    void sortGivesMoves();
    void stuckRowsStayOrReset_data();
    void stuckRowsStayOrReset();
    void manyEditsReset();
    void invokables();
    void rolesAndData();
    void fieldsRebuildRolesOnce();
    void nullAndDeadFields();
    void newerTaskWins();
    void lateEditsDoNothing();
    void lateResetFills();
    void deadMatcherAndSorterAreNone();
    void deadProviderCanBeTakenAway();
    void repositoryDiesFirst();

private:
    ScopedDataLocation m_location;
};

void TestPackageListModel::waitsForItsFirstIndex()
{
    Fixture f;
    f.model.setPackageType("letter");
    QCOMPARE(f.settled(), silence);
    TestProvider provider;
    QSignalSpy changed(&f.model, &PackageListModel::packageProviderChanged);
    f.model.setPackageProvider(&provider);
    f.model.setPackageProvider(&provider);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(f.settled(), silence);
    provider.source.catalogue.package("a", "letter");
    QVERIFY(provider.publish());
    QVERIFY(f.timer()->isActive());
    QCOMPARE(f.timer()->interval(), 30);
    QCOMPARE(f.settled(), (Log{"reset", "count"}));
    QCOMPARE(ids(f.model), QString("a"));
}

void TestPackageListModel::wrongProvider()
{
    Fixture f;
    f.show();
    QSignalSpy changed(&f.model, &PackageListModel::packageProviderChanged);
    QObject stranger;
    stranger.setObjectName("stranger");
    QTest::ignoreMessage(
        QtCriticalMsg,
        QRegularExpression("^Object QObject\\(0x\\w+, name = \"stranger\"\\) does not "
                           "implement the IPackageProvider interface$"));
    f.model.setPackageProvider(&stranger);
    QCOMPARE(f.model.packageProvider(), nullptr);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(f.log.take(), Log{"reset"}); // rows go, and the count's change isn't told
    QCOMPARE(f.model.count(), 0);
}

void TestPackageListModel::firstLoad()
{
    Fixture f;
    f.matcher.accept("b e x");
    f.model.setMatcher(&f.matcher);
    f.model.setPackageProvider(f.provider.get());
    QCOMPARE(f.matcher.functionsMade, 1); // at once, not by the timer
    QCOMPARE(f.settled(), (Log{"reset", "count"}));
    QCOMPARE(ids(f.model), QString("b e x"));
    QVERIFY(!f.model.index(0, 0).parent().isValid());
    QCOMPARE(f.model.rowCount(f.model.index(0, 0)), 0);
}

void TestPackageListModel::changesAreGathered()
{
    Fixture f;
    f.show("a");
    QSignalSpy changed(&f.model, &PackageListModel::packageTypeChanged);
    for (int i = 0; i < 10; ++i) {
        f.model.setPackageType(QString::number(i));
        f.model.setPackageType(QString::number(i));
        f.matcher.accept("b");
    }
    f.settled();
    QCOMPARE(changed.count(), 10);
    QCOMPARE(f.matcher.functionsMade, 1);
}

void TestPackageListModel::unknownType()
{
    Fixture f;
    f.show();
    f.model.setPackageType("digit");
    QCOMPARE(f.settled(), (Log{"reset", "count"}));
    f.model.setPackageType("numeral");
    QCOMPARE(f.settled(), silence); // from no index to no index
}

void TestPackageListModel::filterGivesRowChanges()
{
    Fixture f;
    f.show("a b c d e f");
    QCOMPARE(f.accept("a d e"), (Log{"remove 5 5", "remove 1 2", "count"}));
    QCOMPARE(ids(f.model), QString("a d e"));
    QCOMPARE(f.accept("b c d e f"), (Log{"remove 0 0", "insert 0 1", "insert 4 4", "count"}));
    QCOMPARE(ids(f.model), QString("b c d e f"));
    QCOMPARE(f.accept("a b c d e"), (Log{"remove 4 4", "insert 0 0"})); // as many as before
    f.matcher.functionsMade = 0;
    QCOMPARE(f.accept("e d c b a"), silence); // the same ones
    QCOMPARE(f.matcher.functionsMade, 1);
}

void TestPackageListModel::newIndexResets()
{
    Fixture f;
    f.show();
    QVERIFY(f.provider->publish());
    QCOMPARE(f.settled(), Log{"reset"}); // the same rows of another index
    f.provider->source.catalogue.package("g", "letter");
    QVERIFY(f.provider->publish());
    QCOMPARE(f.settled(), (Log{"reset", "count"}));
    QCOMPARE(ids(f.model), QString("a b c d e f g"));
}

void TestPackageListModel::settingMatcherIsSilent()
{
    Fixture f;
    f.show();
    f.log.add(f.model, &PackageListModel::matcherChanged, "matcher");
    f.model.setMatcher(&f.matcher);
    QCOMPARE(f.model.matcher(), &f.matcher);
    QCOMPARE(f.settled(), (Log{"remove 0 5", "count"}));
    f.model.setMatcher(&f.matcher);
    QVERIFY(!f.timer()->isActive());
    f.model.setMatcher(nullptr);
    QCOMPARE(f.settled(), (Log{"insert 0 5", "count"}));
    f.matcher.accept("a"); // no longer ours
    QVERIFY(!f.timer()->isActive());
}

void TestPackageListModel::settingSorterIsSilent()
{
    Fixture f;
    f.show();
    f.log.add(f.model, &PackageListModel::sorterChanged, "sorter");
    QCOMPARE(f.sort(&f.sorter), silence);
    QCOMPARE(f.model.sorter(), &f.sorter);
    f.sorter.setName("title"); // waits for another cause
    QVERIFY(!f.timer()->isActive());
    Q_EMIT f.sorter.updateRequested();
    QVERIFY(f.timer()->isActive());
    f.sort(nullptr);
    Q_EMIT f.sorter.updateRequested();
    QVERIFY(!f.timer()->isActive());
}

void TestPackageListModel::sortGivesMoves()
{
    Fixture f({1, 5, 3, 4, 2, 6});
    f.show();
    QCOMPARE(f.sort(&f.sorter), (Log{"move 1 4", "move 3 1"}));
    QCOMPARE(ids(f.model), QString("a e c d b f"));
}

void TestPackageListModel::stuckRowsStayOrReset_data()
{
    QTest::addColumn<bool>("reset");
    QTest::newRow("stay until a later reset") << false;
    QTest::newRow("reset when stuck") << true;
}

void TestPackageListModel::stuckRowsStayOrReset()
{
    QFETCH(bool, reset);
    Fixture f({3, 1, 2, 4, 5, 6});
    if (reset)
        f.model.setResetWhenStuck(true);
    f.show();
    QCOMPARE(f.sort(&f.sorter), Log{"move 0 2"}); // where there is a way, it is taken
    QCOMPARE(ids(f.model), QString("b c a d e f"));
    QCOMPARE(f.sort(nullptr), reset ? Log{"reset"} : silence); // a has to go to the top
    QCOMPARE(ids(f.model), QString(reset ? "a b c d e f" : "b c a d e f"));
    QVERIFY(f.provider->publish());
    QCOMPARE(f.settled(), Log{"reset"});
    QCOMPARE(ids(f.model), QString("a b c d e f"));
}

void TestPackageListModel::manyEditsReset()
{
    Fixture f;
    f.show("a b c d e f");
    f.model.setMaximumEdits(2);
    QCOMPARE(f.accept("a c e f"), (Log{"remove 3 3", "remove 1 1", "count"}));
    QCOMPARE(f.accept("b c d"), (Log{"reset", "count"})); // would be four
    QCOMPARE(ids(f.model), QString("b c d"));
}

void TestPackageListModel::invokables()
{
    Fixture f;
    QCOMPARE(f.model.indexOf(""), 0);
    f.show();
    QCOMPARE(f.model.packageAt(5), QString("f"));
    QCOMPARE(f.model.indexOf(""), 0);
    QCOMPARE(f.model.indexOf("c"), 2);
    QCOMPARE(f.model.indexOf("x"), -1);
    QCOMPARE(f.model.manifestField(1, "rank"), QJsonValue(2));
    QVERIFY(f.model.manifestField(1, "title").isUndefined());
    for (int outside : {-1, 6}) {
        QCOMPARE(f.model.packageAt(outside), QString());
        QVERIFY(f.model.manifestField(outside, "rank").isUndefined());
    }
}

void TestPackageListModel::rolesAndData()
{
    Fixture f;
    QCOMPARE(f.model.roleNames(), (QHash<int, QByteArray>{{0, "id"}}));
    ManifestStringField title;
    title.setName("title");
    title.setDefaultValue("untitled");
    ManifestField rank;
    rank.setName("rank");
    addFields(f.model, {&title, &rank});
    f.model.componentComplete();
    const QHash<int, QByteArray> roles{{0, "id"}, {32, "title"}, {33, "rank"}};
    QCOMPARE(f.model.roleNames(), roles);

    f.show();
    const QModelIndex b = f.model.index(1, 0);
    QCOMPARE(f.model.data(b, 0), QVariant("b"));
    QCOMPARE(f.model.data(b, 32), QVariant("untitled"));
    QCOMPARE(f.model.data(b, 33), QVariant(QJsonValue(2)));
    for (int role : {-1, 1, 5, 31, 34})
        QVERIFY(!f.model.data(b, role).isValid());
    QVERIFY(!f.model.data(QModelIndex(), 0).isValid());
    title.setDefaultValue("none"); // read at each call
    QCOMPARE(f.model.data(b, 32), QVariant("none"));
}

void TestPackageListModel::fieldsRebuildRolesOnce()
{
    Fixture f;
    f.show();
    QStringList order;
    connect(&f.model, &QAbstractItemModel::modelAboutToBeReset, this, [&] { order << "begin"; });
    connect(&f.model, &PackageListModel::manifestFieldsChanged, this, [&] {
        order << QString("changed %1").arg(f.model.roleNames().size());
    });
    connect(&f.model, &QAbstractItemModel::modelReset, this, [&] { order << "end"; });
    const auto nextTurn = [&order] {
        QCoreApplication::processEvents();
        return std::exchange(order, {});
    };
    ManifestField one, two, three;
    addFields(f.model, {&one, &two, &three});
    QCOMPARE(order, silence);
    QCOMPARE(nextTurn(), (Log{"begin", "changed 4", "end"}));
    auto fields = f.model.manifestFields();
    QCOMPARE(fields.count(&fields), 3);
    QCOMPARE(fields.at(&fields, 2), &three);
    QCOMPARE(fields.at(&fields, 3), nullptr);
    one.setName("late"); // not watched
    QCOMPARE(nextTurn(), silence);
    fields.clear(&fields);
    fields.clear(&fields);
    QCOMPARE(nextTurn(), (Log{"begin", "changed 1", "end"}));
    fields.clear(&fields); // empty: nothing to do
    QCOMPARE(nextTurn(), silence);
    QCOMPARE(f.model.count(), 6);

    addFields(f.model, {&one});
    f.model.componentComplete(); // doesn't wait for the next turn, which finds nothing left to do
    QCOMPARE(std::exchange(order, {}), (Log{"begin", "changed 2", "end"}));
    QCOMPARE(nextTurn(), silence);
    f.model.componentComplete();
    QCOMPARE(nextTurn(), silence);
}

void TestPackageListModel::nullAndDeadFields()
{
    Fixture f;
    ManifestField rank;
    rank.setName("rank");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("null is no manifest field"));
    {
        ManifestField passing;
        addFields(f.model, {nullptr, &passing, &rank});
    }
    f.model.componentComplete();
    f.show();
    QCOMPARE(f.model.roleNames(), (QHash<int, QByteArray>{{0, "id"}, {34, "rank"}}));
    QVERIFY(!f.model.data(f.model.index(0, 0), 32).isValid());
    QVERIFY(!f.model.data(f.model.index(0, 0), 33).isValid());
    QCOMPARE(f.model.data(f.model.index(0, 0), 34), QVariant(QJsonValue(1)));
}

void TestPackageListModel::newerTaskWins()
{
    Fixture f;
    f.show("c");
    const auto gate = QSharedPointer<QSemaphore>::create();
    f.matcher.gate = gate;
    f.matcher.accept("a");
    QTRY_COMPARE(f.matcher.functionsMade, 1); // the older task hangs at its gate
    f.matcher.accept("b");
    QTRY_COMPARE(ids(f.model), QString("b"));
    f.log.take();
    gate->release();
    QCOMPARE(f.settled(), silence);
    QCOMPARE(ids(f.model), QString("b"));
}

void TestPackageListModel::lateEditsDoNothing()
{
    Fixture f;
    f.show("b c");
    const auto gate = QSharedPointer<QSemaphore>::create();
    f.matcher.gate = gate;
    f.matcher.accept("a b c"); // a row that fits in an empty list
    QTRY_COMPARE(f.matcher.functionsMade, 1);
    f.model.setPackageProvider(nullptr);
    QCOMPARE(f.log.take(), Log{"reset"});
    gate->release();
    QCOMPARE(f.settled(), silence);
    QCOMPARE(f.model.count(), 0);
    f.provider->repository->packageIndexChanged(); // no longer ours
    QVERIFY(!f.timer()->isActive());
}

void TestPackageListModel::lateResetFills()
{
    Fixture f;
    f.matcher.accept("a");
    const auto gate = QSharedPointer<QSemaphore>::create();
    f.matcher.gate = gate;
    f.model.setMatcher(&f.matcher);
    f.settled();
    f.model.setPackageProvider(f.provider.get());
    f.model.setPackageProvider(nullptr); // stops no task
    gate->release();
    f.settled();
    QCOMPARE(ids(f.model), QString("a"));
}

void TestPackageListModel::deadMatcherAndSorterAreNone()
{
    Fixture f;
    {
        IdMatcher matcher;
        SortByIntegerField sorter;
        f.model.setMatcher(&matcher);
        f.model.setSorter(&sorter);
        f.show();
        QCOMPARE(f.model.count(), 0);
    }
    QCOMPARE(f.model.matcher(), nullptr);
    QCOMPARE(f.model.sorter(), nullptr);
    f.model.setMatcher(nullptr); // a change all the same
    f.model.setSorter(nullptr);
    QCOMPARE(f.settled(), (Log{"insert 0 5", "count"}));
}

void TestPackageListModel::deadProviderCanBeTakenAway()
{
    Fixture f;
    f.provider->repository->setParent(nullptr);
    const std::unique_ptr<PackageRepository> owner(f.provider->repository);
    f.show();
    f.provider.reset();
    QCOMPARE(f.model.packageProvider(), nullptr);
    QCOMPARE(f.model.count(), 6);
    f.model.setPackageProvider(nullptr);
    QCOMPARE(f.model.count(), 0);
}

void TestPackageListModel::repositoryDiesFirst()
{
    Fixture f;
    f.show();
    const QWeakPointer<PackageIndex> index = f.provider->repository->packageIndex();
    delete f.provider->repository;
    QCOMPARE(ids(f.model), QString("a b c d e f")); // the rows hold their index
    QCOMPARE(f.model.manifestField(0, "rank"), QJsonValue(1));
    f.model.setPackageType("other");
    f.settled();
    QCOMPARE(f.model.count(), 0);
    QVERIFY(index.isNull());
}

QTEST_GUILESS_MAIN(TestPackageListModel)
#include "tst_packagelistmodel.moc"
