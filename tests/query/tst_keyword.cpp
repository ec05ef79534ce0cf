// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/keyword.h"
#include "support/scopeddatalocation.h"
#include "support/testprovider.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

class TestKeyword : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_provider.reset(); }
    void followsIdAndIndex();
    void missingKeywordIsSilent();
    void providerSignals();

private:
    ScopedDataLocation m_location;
    std::unique_ptr<TestProvider> m_provider;
};

void TestKeyword::init()
{
    m_provider.reset(new TestProvider);
    m_provider->source.catalogue.word("oak", "Oak", KeywordType::Noun).package("p");
    QVERIFY(m_provider->publish());
}

void TestKeyword::followsIdAndIndex()
{
    Keyword keyword;
    QSignalSpy changed(&keyword, &Keyword::keywordChanged);
    keyword.setPackageProvider(m_provider.get());
    QCOMPARE(changed.count(), 0);
    keyword.setKeywordId("oak");
    QCOMPARE(changed.count(), 1);
    QCOMPARE(keyword.type(), Keyword::Noun);
    QCOMPARE(keyword.displayString(), QString("Oak"));

    QVERIFY(m_provider->publish());
    QCOMPARE(changed.count(), 2); // the same keyword, another node
    m_provider->source.catalogue.keywords.clear();
    QVERIFY(m_provider->publish());
    QCOMPARE(changed.count(), 3);
    QCOMPARE(keyword.type(), Keyword::Invalid);
    m_provider->source.catalogue.word("oak", "Oak", KeywordType::Category);
    QVERIFY(m_provider->publish());
    QCOMPARE(keyword.type(), Keyword::Category);
    QCOMPARE(keyword.type(), Keyword::typeFromString("category"));
    keyword.setKeywordId("");
    QCOMPARE(changed.count(), 5);
    QCOMPARE(keyword.displayString(), QString());
}

void TestKeyword::missingKeywordIsSilent()
{
    Keyword keyword;
    QSignalSpy changed(&keyword, &Keyword::keywordChanged);
    QSignalSpy idChanged(&keyword, &Keyword::keywordIdChanged);
    keyword.setPackageProvider(m_provider.get());
    for (const char *id : {"elm", "elm", "p", "Oak"})
        keyword.setKeywordId(id);
    QVERIFY(m_provider->publish());
    QCOMPARE(idChanged.count(), 3);
    QCOMPARE(changed.count(), 0);
}

void TestKeyword::providerSignals()
{
    Keyword keyword;
    QSignalSpy changed(&keyword, &Keyword::keywordChanged);
    QSignalSpy providerChanged(&keyword, &Keyword::packageProviderChanged);
    keyword.setKeywordId("oak");
    keyword.setPackageProvider(m_provider.get());
    QCOMPARE(changed.count(), 1);
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("^Object .* does not implement"));
    keyword.setPackageProvider(this);
    QCOMPARE(keyword.packageProvider(), nullptr);
    QCOMPARE(keyword.type(), Keyword::Invalid);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(providerChanged.count(), 0);
    QVERIFY(m_provider->publish()); // no longer ours
    QCOMPARE(changed.count(), 2);
}

QTEST_GUILESS_MAIN(TestKeyword)
#include "tst_keyword.moc"
