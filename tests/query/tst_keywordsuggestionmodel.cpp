// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "modeltools.h"
#include "query/keywordsuggestionmodel.h"
#include "support/columns.h"
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
    void whenItUpdates();
    void searchEmptiedDuringTask();

private:
    ScopedDataLocation m_location;
    std::unique_ptr<TestProvider> m_provider;
};

void TestKeywordSuggestionModel::init()
{
    m_provider = std::make_unique<TestProvider>();
    MemoryCatalogue &catalogue = m_provider->source.catalogue;
    catalogue.word("oak", "Oak").word("oak2", "Oak").word("cork", "cork oak").word("elm", "Elm");
    catalogue.keyword(
        "tree", KeywordType::Noun,
        {{"en", "tree", "trees"}, {"en", "sheep", "sheep"}, {"en", "oak", "oaks"}});
    catalogue.word("html", "a<b & <B>").word("dots", "o(a)k.*");
    catalogue.package("p", "plant").linked("p is_a oak");
    QVERIFY(m_provider->publish());
}

void TestKeywordSuggestionModel::suggestions_data()
{
    Columns<QString, QString, QStringList>("search", "type", "expected")
        .row("shared texts once, capitals first", "oak", "", {"Oak", "cork oak", "oak"})
        .row("case of the search ignored", "OAK", "", {"Oak", "cork oak", "oak"})
        .row("plural if only that holds it", "oaks", "", {"oaks"})
        .row("limited to a type", "oak", "plant", {"Oak"})
        .row("unknown type", "oak", "animal", {})
        .row("inside of a word", "lm", "", {"Elm"})
        .row("literal", "(a)k.", "", {"o(a)k.*"})
        .row("nothing", "zebra", "", {});
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
    Columns<QString, QString>("search", "expected")
        .row("case kept", "OA", "<b>Oa</b>k")
        .row("every occurrence", "e", "sh<b>e</b><b>e</b>p")
        .row("markup is escaped", "<b", "a<b>&lt;b</b> &amp; <b>&lt;B</b>&gt;")
        .row("no expression", "(a)k.*", "o<b>(a)k.*</b>");
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

void TestKeywordSuggestionModel::whenItUpdates()
{
    KeywordSuggestionModel model;
    QSignalSpy tasks(model.findChild<QFutureWatcherBase *>(), &QFutureWatcherBase::started);
    ModelLog log(model);
    log.add(model, &KeywordSuggestionModel::countChanged, "count")
        .add(model, &KeywordSuggestionModel::searchStringChanged, "search")
        .add(model, &KeywordSuggestionModel::packageTypeChanged, "type")
        .add(model, &KeywordSuggestionModel::packageProviderChanged, "provider");
    const auto settled = [&] {
        settle(model);
        return log.take();
    };
    model.setPackageProvider(m_provider.get());
    QCOMPARE(settled(), Log{"provider"}); // nothing is searched for
    QCOMPARE(tasks.count(), 0);
    for (int round = 0; round < 2; ++round) {
        model.setSearchString("oak");
        model.setPackageType("plant");
    }
    QCOMPARE(settled(), (Log{"search", "type", "reset", "count"})); // one task per turn
    QCOMPARE(tasks.count(), 1);
    model.setPackageType("");
    model.setSearchString("elm");
    QCOMPARE(settled(), (Log{"type", "search", "reset"})); // another row, as many as before
    m_provider->source.catalogue.word("maple", "elm-leaved maple");
    QVERIFY(m_provider->publish());
    QCOMPARE(settled(), (Log{"reset", "count"}));
    QCOMPARE(ids(model), QString("Elm elm-leaved maple"));
    model.setSearchString("");
    QCOMPARE(settled(), (Log{"search", "reset", "count"}));
    QCOMPARE(model.count(), 0);
    QCOMPARE(tasks.count(), 3);

    model.setSearchString("elm");
    settled();
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("^Object .* does not implement"));
    model.setPackageProvider(this);
    QCOMPARE(model.packageProvider(), nullptr);
    QCOMPARE(settled(), (Log{"provider", "reset", "count"}));
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

QTEST_GUILESS_MAIN(TestKeywordSuggestionModel)
#include "tst_keywordsuggestionmodel.moc"
