// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "modeltools.h"
#include "query/categorylistmodel.h"
#include "query/keyword.h"
#include "query/keywordsuggestionmodel.h"
#include "query/manifeststringfield.h"
#include "query/packagedata.h"
#include "query/packagelistmodel.h"
#include "query/packagematchergroup.h"
#include "query/sortbyintegerfield.h"
#include "support/scopeddatalocation.h"
#include "support/testprovider.h"

#include <QThreadPool>
#include <QtTest>

#include <algorithm>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// What QML declares on top of a provider.
struct Consumers
{
    PackageListModel packages;
    CategoryListModel categories;
    KeywordSuggestionModel suggestions;
    Keyword keyword;
    PackageData data;
};

/// What a PackageListModel refers to.
struct Parts
{
    IdMatcher matcher;
    PackageMatcherGroup group;
    SortByIntegerField sorter;
    ManifestStringField field;
};

} // namespace

/// Destroys provider, repository, consumers and the objects that they refer to in every order,
/// while worker tasks run.
class TestDestruction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyOrder_data();
    void anyOrder();
    void taskOutlivesAll();

private:
    ScopedDataLocation m_location;
};

void TestDestruction::anyOrder_data()
{
    QTest::addColumn<QStringList>("order");
    QStringList order{"consumers", "parts", "provider", "repository"};
    do {
        QTest::newRow(qPrintable(order.join(", "))) << order;
    } while (std::next_permutation(order.begin(), order.end()));
}

void TestDestruction::anyOrder()
{
    auto provider = std::make_unique<TestProvider>();
    std::unique_ptr<PackageRepository> repository(provider->repository);
    repository->setParent(nullptr);
    provider->source.catalogue.package("p", "t", {{"title", "Oak"}}).package("q", "t");
    provider->source.catalogue.word("oak", "Oak", KeywordType::Category).linked("p is_a oak");
    QVERIFY(provider->publish());

    auto parts = std::make_unique<Parts>();
    parts->field.setName("title");
    parts->sorter.setName("rank");
    parts->group.addMatcher(&parts->matcher);
    const auto gate = QSharedPointer<QSemaphore>::create();
    parts->matcher.gate = gate;
    parts->matcher.accept("p");

    auto consumers = std::make_unique<Consumers>();
    addFields(consumers->packages, {&parts->field});
    addFields(consumers->data, {&parts->field});
    consumers->packages.setMatcher(&parts->group);
    consumers->packages.setSorter(&parts->sorter);
    consumers->packages.setPackageProvider(provider.get());
    consumers->categories.setPackageProvider(provider.get());
    consumers->suggestions.setPackageProvider(provider.get());
    consumers->suggestions.setSearchString("oak");
    consumers->keyword.setPackageProvider(provider.get());
    consumers->keyword.setKeywordId("oak");
    consumers->data.setPackageReference(provider->packageReference("p"));

    QFETCH(QStringList, order);
    for (const QString &next : order) {
        if (next == "consumers")
            consumers.reset();
        else if (next == "parts")
            parts.reset();
        else if (next == "provider")
            provider.reset();
        else
            repository.reset();
        QCoreApplication::processEvents();
        if (!consumers)
            continue;
        consumers->packages.setPackageType(next); // an update with what is left
        consumers->categories.setPackageType(next);
        consumers->suggestions.setSearchString(next);
        consumers->keyword.setKeywordId(next);
        consumers->data.componentComplete();
        if (consumers->packages.rowCount() > 0)
            consumers->packages.data(consumers->packages.index(0, 0), 32);
    }
    gate->release();
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
}

/// The last index dies on a pool thread, with the task that held it.
void TestDestruction::taskOutlivesAll()
{
    const auto gate = QSharedPointer<QSemaphore>::create();
    {
        TestProvider provider;
        provider.source.catalogue.package("p", "t", {{"title", "Oak"}});
        QVERIFY(provider.publish());
        IdMatcher matcher;
        matcher.gate = gate;
        PackageListModel model;
        model.setMatcher(&matcher);
        model.setPackageProvider(&provider);
        QCOMPARE(matcher.functionsMade, 1);
    }
    gate->release();
    QVERIFY(QThreadPool::globalInstance()->waitForDone(60'000));
}

QTEST_GUILESS_MAIN(TestDestruction)
#include "tst_destruction.moc"
