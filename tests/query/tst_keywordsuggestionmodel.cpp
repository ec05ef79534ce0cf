// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "modeltools.h"
#include "query/keywordsuggestionmodel.h"
#include "support/scopeddatalocation.h"
#include "support/testprovider.h"

#include <QAbstractItemModelTester>
#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrent>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

using Log = QStringList;

void fill(MemoryCatalogue &catalogue)
{
    catalogue.word("oak", "Oak").word("oak2", "Oak").word("cork", "cork oak").word("elm", "Elm");
    catalogue.keyword(
        "tree", KeywordType::Noun,
        {{"en", "tree", "trees"}, {"en", "sheep", "sheep"}, {"en", "oak", "oaks"}});
    catalogue.word("html", "a<b & <B>").word("dots", "o(a)k.*");
    catalogue.package("p", "plant").link("p", IsA, "oak");
}

/// All threads of the global pool have something else to do until release().
class BusyPool
{
public:
    BusyPool()
    {
        for (int i = 0; i < m_threads; ++i)
            QtConcurrent::run([gate = m_gate] { gate->acquire(); });
    }
    void release() const { m_gate->release(m_threads); }

private:
    const int m_threads = QThreadPool::globalInstance()->maxThreadCount();
    const QSharedPointer<QSemaphore> m_gate = QSharedPointer<QSemaphore>::create();
};

} // namespace

class TestKeywordSuggestionModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale("en_GB")); }
    void init();
    void cleanup() { m_provider.reset(); }
    void suggestions_data();
    void suggestions();
    void richText_data();
    void richText();
    void emptySearch();
    void searchEmptiedDuringTask();
    void oneTaskPerTurn();
    void countFollowsReset();
    void newIndexUpdatesAtOnce();
    void wrongProvider();

private:
    ScopedDataLocation m_location;
    std::unique_ptr<TestProvider> m_provider;
};

void TestKeywordSuggestionModel::init()
{
    m_provider.reset(new TestProvider);
    fill(m_provider->source.catalogue);
    QVERIFY(m_provider->publish());
}

void TestKeywordSuggestionModel::suggestions_data()
{
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QStringList>("expected");

    const QStringList oaks{"Oak", "cork oak", "oak"};
    QTest::newRow("shared texts once, capitals first") << "oak"
                                                       << "" << oaks;
    QTest::newRow("case of the search ignored") << "OAK"
                                                << "" << oaks;
    QTest::newRow("plural if only that holds it") << "oaks"
                                                  << "" << QStringList{"oaks"};
    QTest::newRow("limited to a type") << "oak"
                                       << "plant" << QStringList{"Oak"};
    QTest::newRow("unknown type") << "oak"
                                  << "animal" << QStringList();
    QTest::newRow("inside of a word") << "lm"
                                      << "" << QStringList{"Elm"};
    QTest::newRow("literal") << "(a)k."
                             << "" << QStringList{"o(a)k.*"};
    QTest::newRow("nothing") << "zebra"
                             << "" << QStringList();
}

void TestKeywordSuggestionModel::suggestions()
{
    QFETCH(QString, search);
    QFETCH(QString, type);
    QFETCH(QStringList, expected);
    KeywordSuggestionModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setPackageProvider(m_provider.get());
    model.setPackageType(type);
    model.setSearchString(search);
    settle(model);
    QStringList found;
    for (int row = 0; row < model.count(); ++row)
        found.append(model.suggestionAt(row));
    QCOMPARE(found, expected);
    QCOMPARE(ids(model), expected.join(' '));
    QCOMPARE(model.suggestionAt(-1), QString());
    QCOMPARE(model.suggestionAt(expected.size()), QString());
}

void TestKeywordSuggestionModel::richText_data()
{
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("expected"); // of the first row

    QTest::newRow("case kept") << "OA"
                               << "<b>Oa</b>k";
    QTest::newRow("every occurrence") << "e"
                                      << "sh<b>e</b><b>e</b>p";
    QTest::newRow("markup is escaped") << "<b"
                                       << "a<b>&lt;b</b> &amp; <b>&lt;B</b>&gt;";
    QTest::newRow("no expression") << "(a)k.*"
                                   << "o<b>(a)k.*</b>";
}

void TestKeywordSuggestionModel::richText()
{
    QFETCH(QString, search);
    QFETCH(QString, expected);
    KeywordSuggestionModel model;
    model.setPackageProvider(m_provider.get());
    model.setSearchString(search);
    settle(model);
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.data(model.index(row, 0), 1).toString());
    QVERIFY2(texts.contains(expected), qPrintable(texts.join('|')));
    QVERIFY(!model.data(model.index(0, 0), 2).isValid());
    QVERIFY(!model.data(QModelIndex(), 0).isValid());
    QCOMPARE(model.roleNames(), (QHash<int, QByteArray>{{0, "suggestion"}, {1, "displayString"}}));
}

void TestKeywordSuggestionModel::emptySearch()
{
    KeywordSuggestionModel model;
    ModelLog log(model);
    log.add(model, &KeywordSuggestionModel::countChanged, "count");
    model.setPackageProvider(m_provider.get());
    QSignalSpy tasks(model.findChild<QFutureWatcherBase *>(), &QFutureWatcherBase::started);
    settle(model);
    QCOMPARE(log.take(), Log());
    QCOMPARE(tasks.count(), 0);
    model.setSearchString("oak");
    settle(model);
    QCOMPARE(log.take(), (Log{"reset", "count"}));
    QCOMPARE(tasks.count(), 1);
    model.setSearchString("");
    QCoreApplication::processEvents();
    QCOMPARE(log.take(), (Log{"reset", "count"}));
    QCOMPARE(model.count(), 0);
    QCOMPARE(tasks.count(), 1);
}

void TestKeywordSuggestionModel::searchEmptiedDuringTask()
{
    KeywordSuggestionModel model;
    model.setPackageProvider(m_provider.get());
    model.setSearchString("elm");
    const BusyPool pool;
    QCoreApplication::processEvents(); // starts the task, which waits for a thread
    model.setSearchString("");
    QCoreApplication::processEvents(); // clears the list
    pool.release();
    settle(model);
    QCOMPARE(ids(model), QString("Elm")); // its result still arrives
    model.setPackageType("plant");
    settle(model);
    QCOMPARE(model.count(), 0);
}

void TestKeywordSuggestionModel::oneTaskPerTurn()
{
    KeywordSuggestionModel model;
    ModelLog log(model);
    log.add(model, &KeywordSuggestionModel::searchStringChanged, "search");
    log.add(model, &KeywordSuggestionModel::packageTypeChanged, "type");
    log.add(model, &KeywordSuggestionModel::packageProviderChanged, "provider");
    for (int round = 0; round < 2; ++round) {
        model.setSearchString("oak");
        model.setPackageType("plant");
        model.setPackageProvider(m_provider.get());
    }
    QCOMPARE(log.take(), (Log{"search", "type", "provider"}));
    settle(model);
    QCOMPARE(log.take(), Log{"reset"});
}

void TestKeywordSuggestionModel::countFollowsReset()
{
    KeywordSuggestionModel model;
    ModelLog log(model);
    log.add(model, &KeywordSuggestionModel::countChanged, "count");
    model.setPackageProvider(m_provider.get());
    model.setSearchString("elm");
    settle(model);
    QCOMPARE(log.take(), (Log{"reset", "count"}));
    model.setSearchString("cork");
    settle(model);
    QCOMPARE(log.take(), Log{"reset"}); // another row, as many as before
}

void TestKeywordSuggestionModel::newIndexUpdatesAtOnce()
{
    KeywordSuggestionModel model;
    model.setPackageProvider(m_provider.get());
    model.setSearchString("maple");
    settle(model);
    QCOMPARE(model.count(), 0);
    m_provider->source.catalogue.word("maple", "Maple");
    QVERIFY(m_provider->publish());
    settle(model);
    QCOMPARE(ids(model), QString("Maple"));
}

void TestKeywordSuggestionModel::wrongProvider()
{
    KeywordSuggestionModel model;
    model.setPackageProvider(m_provider.get());
    model.setSearchString("oak");
    settle(model);
    QSignalSpy changed(&model, &KeywordSuggestionModel::packageProviderChanged);
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("^Object .* does not implement"));
    model.setPackageProvider(this);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(model.packageProvider(), nullptr);
    settle(model);
    QCOMPARE(model.count(), 0);
}

QTEST_GUILESS_MAIN(TestKeywordSuggestionModel)
#include "tst_keywordsuggestionmodel.moc"
