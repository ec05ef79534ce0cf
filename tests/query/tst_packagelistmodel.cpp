// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "modeltools.h"
#include "query/manifestsizefield.h"
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

/// A provider with the packages a to f of type "letter", ranked by \a ranks, and x of type "other".
std::unique_ptr<TestProvider> letters(const QVector<int> &ranks = {1, 2, 3, 4, 5, 6})
{
    auto provider = std::make_unique<TestProvider>();
    for (int i = 0; i < 6; ++i)
        provider->source.catalogue.package(
            QString(QChar('a' + i)), "letter", {{"rank", ranks.at(i)}});
    provider->source.catalogue.package("x", "other", {{"title", "Xylophone"}});
    provider->publish();
    return provider;
}

/// A model with everything that a test looks at.
struct Fixture
{
    PackageListModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    ModelLog log{model};
    std::unique_ptr<TestProvider> provider = letters();

    Fixture() { log.add(model, &PackageListModel::countChanged, "count"); }
    /// Shows the letters, all of them or those that \a matcher accepts, and forgets how that came.
    void show(IdMatcher *matcher = nullptr)
    {
        model.setMatcher(matcher);
        model.setPackageType("letter");
        model.setPackageProvider(provider.get());
        settle(model);
        log.take();
        if (matcher)
            matcher->functionsMade = 0;
    }
};

QTimer *timerOf(const PackageListModel &model)
{
    return model.findChild<QTimer *>();
}

} // namespace

class TestPackageListModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutProvider();
    void wrongProvider();
    void providerWithoutIndex();
    void firstLoad();
    void changesAreGathered();
    void unknownType();
    void providerTakenAway();
    void filterGivesRowChanges();
    void unchangedResultIsSilent();
    void newIndexResets();
    void settingMatcherIsSilent();
    void settingSorterIsSilent();
    void sortGivesMoves();
    void stuckRowsStay();
    void stuckRowsReset();
    void manyEditsReset();
    void invokables();
    void rolesAndData();
    void fieldsRebuildRolesOnce();
    void componentCompleteRebuildsAtOnce();
    void nullAndDeadFields();
    void newerTaskWins();
    void lateEditsDoNothing();
    void lateResetFills();
    void deadMatcherIsNone();
    void deadProviderCanBeTakenAway();
    void repositoryDiesFirst();

private:
    ScopedDataLocation m_location;
};

void TestPackageListModel::withoutProvider()
{
    Fixture f;
    f.model.setPackageType("letter");
    QVERIFY(timerOf(f.model)->isActive());
    QCOMPARE(timerOf(f.model)->interval(), 30);
    settle(f.model);
    QCOMPARE(f.log.take(), silence);
    QCOMPARE(f.model.count(), 0);
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

void TestPackageListModel::providerWithoutIndex()
{
    PackageListModel model;
    TestProvider provider;
    QSignalSpy changed(&model, &PackageListModel::packageProviderChanged);
    model.setPackageProvider(&provider);
    model.setPackageProvider(&provider);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(model.packageProvider(), &provider);
    provider.source.catalogue.package("a", "letter");
    QVERIFY(provider.publish());
    QVERIFY(timerOf(model)->isActive());
    settle(model);
    QCOMPARE(ids(model), QString("a"));
}

void TestPackageListModel::firstLoad()
{
    Fixture f;
    IdMatcher matcher;
    matcher.accepted = QStringList{"b", "e", "x"};
    f.model.setMatcher(&matcher);
    f.model.setPackageProvider(f.provider.get());
    QCOMPARE(matcher.functionsMade, 1); // at once, not by the timer
    settle(f.model);
    QCOMPARE(ids(f.model), QString("b e x"));
    QCOMPARE(f.log.take(), (Log{"reset", "count"}));
    QVERIFY(!f.model.index(0, 0).parent().isValid());
    QCOMPARE(f.model.rowCount(f.model.index(0, 0)), 0);
}

void TestPackageListModel::changesAreGathered()
{
    Fixture f;
    IdMatcher matcher;
    f.show(&matcher);
    QSignalSpy changed(&f.model, &PackageListModel::packageTypeChanged);
    for (int i = 0; i < 10; ++i) {
        f.model.setPackageType(QString::number(i));
        f.model.setPackageType(QString::number(i));
        matcher.change();
    }
    settle(f.model);
    QCOMPARE(changed.count(), 10);
    QCOMPARE(matcher.functionsMade, 1);
}

void TestPackageListModel::unknownType()
{
    Fixture f;
    f.show();
    f.model.setPackageType("digit");
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"reset", "count"}));
    f.model.setPackageType("numeral");
    settle(f.model);
    QCOMPARE(f.log.take(), silence); // from no index to no index
}

void TestPackageListModel::providerTakenAway()
{
    Fixture f;
    f.show();
    f.model.setPackageProvider(nullptr);
    QCOMPARE(f.log.take(), Log{"reset"});
    QCOMPARE(f.model.count(), 0);
    f.provider->repository->packageIndexChanged();
    QVERIFY(!timerOf(f.model)->isActive());
}

void TestPackageListModel::filterGivesRowChanges()
{
    Fixture f;
    IdMatcher matcher;
    matcher.accepted = QStringList{"a", "b", "c", "d", "e", "f"};
    f.show(&matcher);
    QCOMPARE(ids(f.model), QString("a b c d e f"));

    matcher.accepted = QStringList{"a", "d", "e"};
    matcher.change();
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"remove 5 5", "remove 1 2", "count"}));
    QCOMPARE(ids(f.model), QString("a d e"));

    matcher.accepted = QStringList{"a", "b", "c", "d", "e", "f"};
    matcher.change();
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"insert 1 2", "insert 5 5", "count"}));
    QCOMPARE(ids(f.model), QString("a b c d e f"));

    matcher.accepted = QStringList{"b", "c", "d", "e", "f"};
    matcher.change();
    settle(f.model);
    matcher.accepted = QStringList{"a", "b", "c", "d", "e"};
    f.log.take();
    matcher.change();
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"remove 4 4", "insert 0 0"})); // as many rows as before
}

void TestPackageListModel::unchangedResultIsSilent()
{
    Fixture f;
    IdMatcher matcher;
    matcher.accepted = QStringList{"a", "b"};
    f.show(&matcher);
    matcher.change();
    settle(f.model);
    QCOMPARE(matcher.functionsMade, 1);
    QCOMPARE(f.log.take(), silence);
}

void TestPackageListModel::newIndexResets()
{
    Fixture f;
    f.show();
    QVERIFY(f.provider->publish());
    settle(f.model);
    QCOMPARE(f.log.take(), Log{"reset"}); // the same rows of another index
    f.provider->source.catalogue.package("g", "letter");
    QVERIFY(f.provider->publish());
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"reset", "count"}));
    QCOMPARE(ids(f.model), QString("a b c d e f g"));
}

void TestPackageListModel::settingMatcherIsSilent()
{
    Fixture f;
    f.show();
    f.log.add(f.model, &PackageListModel::matcherChanged, "matcher");
    IdMatcher matcher;
    f.model.setMatcher(&matcher);
    QCOMPARE(f.model.matcher(), &matcher);
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"remove 0 5", "count"}));
    f.model.setMatcher(&matcher);
    QVERIFY(!timerOf(f.model)->isActive());
    f.model.setMatcher(nullptr);
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"insert 0 5", "count"}));
    matcher.change(); // no longer ours
    QVERIFY(!timerOf(f.model)->isActive());
}

void TestPackageListModel::settingSorterIsSilent()
{
    Fixture f;
    f.show();
    f.log.add(f.model, &PackageListModel::sorterChanged, "sorter");
    SortByIntegerField sorter;
    sorter.setName("rank");
    f.model.setSorter(&sorter);
    QCOMPARE(f.model.sorter(), &sorter);
    settle(f.model);
    QCOMPARE(f.log.take(), silence);
    sorter.setName("title"); // waits for another cause
    QVERIFY(!timerOf(f.model)->isActive());
    Q_EMIT sorter.updateRequested();
    QVERIFY(timerOf(f.model)->isActive());
    f.model.setSorter(nullptr);
    settle(f.model);
    Q_EMIT sorter.updateRequested();
    QVERIFY(!timerOf(f.model)->isActive());
}

void TestPackageListModel::sortGivesMoves()
{
    Fixture f;
    f.provider = letters({1, 5, 3, 4, 2, 6});
    f.show();
    SortByIntegerField sorter;
    sorter.setName("rank");
    f.model.setSorter(&sorter);
    settle(f.model);
    QCOMPARE(ids(f.model), QString("a e c d b f"));
    QCOMPARE(f.log.take(), (Log{"move 1 4", "move 3 1"}));
}

void TestPackageListModel::stuckRowsStay()
{
    Fixture f;
    f.provider = letters({3, 1, 2, 4, 5, 6});
    f.show();
    SortByIntegerField sorter;
    sorter.setName("rank");
    f.model.setSorter(&sorter);
    settle(f.model);
    QCOMPARE(ids(f.model), QString("b c a d e f"));
    f.log.take();
    f.model.setSorter(nullptr); // a has to go to the top
    settle(f.model);
    QCOMPARE(f.log.take(), silence);
    QCOMPARE(ids(f.model), QString("b c a d e f"));
    QVERIFY(f.provider->publish());
    settle(f.model);
    QCOMPARE(ids(f.model), QString("a b c d e f"));
}

void TestPackageListModel::stuckRowsReset()
{
    Fixture f;
    f.provider = letters({3, 1, 2, 4, 5, 6});
    QVERIFY(!f.model.resetWhenStuck());
    f.model.setResetWhenStuck(true);
    f.show();
    SortByIntegerField sorter;
    sorter.setName("rank");
    f.model.setSorter(&sorter);
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"move 0 2"})); // where there is a way, it is taken
    f.model.setSorter(nullptr);
    settle(f.model);
    QCOMPARE(f.log.take(), Log{"reset"});
    QCOMPARE(ids(f.model), QString("a b c d e f"));
}

void TestPackageListModel::manyEditsReset()
{
    Fixture f;
    IdMatcher matcher;
    matcher.accepted = QStringList{"a", "b", "c", "d", "e", "f"};
    f.show(&matcher);
    f.model.setMaximumEdits(2);
    matcher.accepted = QStringList{"a", "c", "e", "f"};
    matcher.change();
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"remove 3 3", "remove 1 1", "count"}));
    matcher.accepted = QStringList{"b", "c", "d"};
    matcher.change();
    settle(f.model);
    QCOMPARE(f.log.take(), (Log{"reset", "count"})); // would be four
    QCOMPARE(ids(f.model), QString("b c d"));
}

void TestPackageListModel::invokables()
{
    Fixture f;
    QCOMPARE(f.model.indexOf(""), 0);
    f.show();
    QCOMPARE(f.model.packageAt(0), QString("a"));
    QCOMPARE(f.model.packageAt(5), QString("f"));
    QCOMPARE(f.model.packageAt(-1), QString());
    QCOMPARE(f.model.packageAt(6), QString());
    QCOMPARE(f.model.indexOf(""), 0);
    QCOMPARE(f.model.indexOf("c"), 2);
    QCOMPARE(f.model.indexOf("x"), -1);
    QCOMPARE(f.model.manifestField(1, "rank"), QJsonValue(2));
    QVERIFY(f.model.manifestField(1, "title").isUndefined());
    QVERIFY(f.model.manifestField(-1, "rank").isUndefined());
    QVERIFY(f.model.manifestField(6, "rank").isUndefined());
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
    auto fields = f.model.manifestFields();
    fields.append(&fields, &title);
    fields.append(&fields, &rank);
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
    ManifestField one, two, three;
    auto fields = f.model.manifestFields();
    for (ManifestField *field : {&one, &two, &three})
        fields.append(&fields, field);
    QCOMPARE(order, silence);
    QCoreApplication::processEvents();
    QCOMPARE(order, (Log{"begin", "changed 4", "end"}));
    QCOMPARE(fields.count(&fields), 3);
    QCOMPARE(fields.at(&fields, 2), &three);
    QCOMPARE(fields.at(&fields, 3), nullptr);
    order.clear();
    one.setName("late"); // not watched
    QCoreApplication::processEvents();
    QCOMPARE(order, silence);
    fields.clear(&fields);
    fields.clear(&fields);
    QCoreApplication::processEvents();
    QCOMPARE(order, (Log{"begin", "changed 1", "end"}));
    order.clear();
    fields.clear(&fields); // empty: nothing to do
    QCoreApplication::processEvents();
    QCOMPARE(order, silence);
    QCOMPARE(f.model.count(), 6);
}

void TestPackageListModel::componentCompleteRebuildsAtOnce()
{
    Fixture f;
    ManifestField field;
    auto fields = f.model.manifestFields();
    f.model.classBegin();
    fields.append(&fields, &field);
    f.model.componentComplete();
    QCOMPARE(f.log.take(), Log{"reset"});
    QCoreApplication::processEvents(); // the queued call finds nothing left to do
    QCOMPARE(f.log.take(), silence);
    f.model.componentComplete();
    QCOMPARE(f.log.take(), silence);
}

void TestPackageListModel::nullAndDeadFields()
{
    Fixture f;
    ManifestField rank;
    rank.setName("rank");
    auto fields = f.model.manifestFields();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("null is no manifest field"));
    fields.append(&fields, nullptr);
    {
        ManifestField passing;
        fields.append(&fields, &passing);
    }
    fields.append(&fields, &rank);
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
    IdMatcher matcher;
    f.show(&matcher);
    auto gate = QSharedPointer<QSemaphore>::create();
    matcher.gate = gate;
    matcher.accepted = QStringList{"a"};
    matcher.change();
    QTRY_COMPARE(matcher.functionsMade, 1); // the older task hangs at its gate
    matcher.accepted = QStringList{"b"};
    matcher.change();
    QTRY_COMPARE(ids(f.model), QString("b"));
    f.log.take();
    gate->release();
    settle(f.model);
    QCOMPARE(f.log.take(), silence);
    QCOMPARE(ids(f.model), QString("b"));
}

void TestPackageListModel::lateEditsDoNothing()
{
    Fixture f;
    IdMatcher matcher;
    matcher.accepted = QStringList{"a", "b", "c"};
    f.show(&matcher);
    auto gate = QSharedPointer<QSemaphore>::create();
    matcher.gate = gate;
    matcher.accepted = QStringList{"d", "c", "b"};
    matcher.change();
    QTRY_COMPARE(matcher.functionsMade, 1);
    f.model.setPackageProvider(nullptr);
    QCOMPARE(f.log.take(), Log{"reset"});
    gate->release();
    settle(f.model);
    QCOMPARE(f.log.take(), silence);
    QCOMPARE(f.model.count(), 0);
}

void TestPackageListModel::lateResetFills()
{
    Fixture f;
    IdMatcher matcher;
    matcher.accepted = QStringList{"a"};
    auto gate = QSharedPointer<QSemaphore>::create();
    matcher.gate = gate;
    f.model.setMatcher(&matcher);
    settle(f.model);
    f.model.setPackageProvider(f.provider.get());
    f.model.setPackageProvider(nullptr); // stops no task
    gate->release();
    settle(f.model);
    QCOMPARE(ids(f.model), QString("a"));
}

void TestPackageListModel::deadMatcherIsNone()
{
    Fixture f;
    {
        IdMatcher matcher;
        SortByIntegerField sorter;
        sorter.setName("rank");
        f.model.setSorter(&sorter);
        f.show(&matcher);
        QCOMPARE(f.model.count(), 0);
    }
    QCOMPARE(f.model.matcher(), nullptr);
    QCOMPARE(f.model.sorter(), nullptr);
    f.model.setMatcher(nullptr); // a change all the same
    f.model.setSorter(nullptr);
    settle(f.model);
    QCOMPARE(f.model.count(), 6);
}

void TestPackageListModel::deadProviderCanBeTakenAway()
{
    Fixture f;
    auto *repository = f.provider->repository.data();
    repository->setParent(nullptr);
    std::unique_ptr<PackageRepository> owner(repository);
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
    delete f.provider->repository;
    QCOMPARE(ids(f.model), QString("a b c d e f")); // the rows hold their index
    QCOMPARE(f.model.manifestField(0, "rank"), QJsonValue(1));
    f.model.setPackageType("other");
    settle(f.model);
    QCOMPARE(f.model.count(), 0);
}

QTEST_GUILESS_MAIN(TestPackageListModel)
#include "tst_packagelistmodel.moc"
