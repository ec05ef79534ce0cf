// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerloader.h"
#include "sources/signedcontent.h"
#include "sources/verifiedsignatures.h"
#include "support/ledgerbuilder.h"
#include "support/logrecorder.h"

#include <QCryptographicHash>
#include <QRandomGenerator>
#include <QtConcurrent>
#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace nk::pm;
using namespace nk::pm::test;
using nk::crypto::ed25519::PrivateKey;
using nk::crypto::ed25519::PublicKey;

namespace {

// A little of everything.
LedgerBuilder catalogue()
{
    LedgerBuilder builder;
    builder.addIssuer("Norvak", "models").addIssuer("Other", "parts");
    builder.addLanguage("de").addLanguage("en");
    builder.addKeyword(0, "k.tree", {{0, {QByteArray("Baum\0B\xc3\xa4ume", 11)}}, {1, {"tree"}}});
    builder.addKeyword(4, "k.green", {{1, {"green"}}});
    builder.addPackage(
        "pkg.alpha", "model", R"({"type":"model", "name":"Alpha","size":[10.0,2.5]})",
        {{"a.txt", "alpha"}, {"deep/b.txt", "beta"}});
    builder.addPackage("pkg.beta", "model:part", R"({"name":"B\u00e9ta"})", {}, 1);
    builder.addLink(6, 0x11, 0, 1).addLink(4, 0x01, 0, 0);
    return builder;
}

LedgerTables load(const QByteArray &ledger, const PublicKey &trustKey)
{
    VerifiedSignatures known;
    return loadLedger(ledger, trustKey, known);
}

int packagesOf(const LedgerBuilder &builder)
{
    return load(builder.build(), builder.trustKey()).packages.size();
}

QByteArray changed(QByteArray ledger, const QByteArray &before, const QByteArray &after)
{
    Q_ASSERT(ledger.count(before) == 1 && before.size() == after.size());
    return ledger.replace(before, after);
}

// Follows each view of the tables: under AddressSanitizer, a check that all lie within the ledger.
int touch(const LedgerTables &tables)
{
    int sum = 0;
    for (const LedgerKeyword &keyword : tables.keywords) {
        sum += keyword.id.text().size();
        for (const auto &strings : keyword.strings) {
            for (const LedgerString &string : strings)
                sum += string.text().size();
        }
    }
    for (const PackageEntry &package : tables.packages) {
        sum += signedContent(package, tables.types.at(package.typeIndex)).size();
        sum += package.id.text().size() + package.signature[63]
               + package.content[package.contentSize - 1];
    }
    return sum;
}

SignatureDigest digest(int number)
{
    SignatureDigest digest;
    const QByteArray bytes =
        QCryptographicHash::hash(QByteArray::number(number), QCryptographicHash::Sha3_256);
    std::copy(bytes.begin(), bytes.end(), digest.bytes.begin());
    return digest;
}

QVector<SignatureDigest> digests(int from, int to)
{
    QVector<SignatureDigest> list;
    for (int i = from; i < to; ++i)
        list.append(digest(i));
    return list;
}

} // namespace

class tst_LedgerLoader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_log.reset(new LogRecorder("norvak.packageserver.ledger")); }
    void cleanup() { m_log.reset(); }
    void writesEachStep();
    void recordLines_data();
    void refusedLedgerKeepsLanguagesAndTypes();
    void recordLines();
    void issuerLines();
    void whatIsSigned_data();
    void whatIsSigned();
    void namesThatAreOneAsTextAreRefused();
    void issuersCannotStandInForEachOther();
    void truncatedAnywhere();
    void mutatedAnyhow();
    void loadsOnAFullPool();
    void knownSignaturesChangeNoAnswer();
    void knownSignaturesOfAnotherKeyDontCount();
    void knownSignaturesAreBounded();
    void manyThreadsRemember();

private:
    QScopedPointer<LogRecorder> m_log;
};

void tst_LedgerLoader::writesEachStep()
{
    const LedgerBuilder builder = catalogue();
    const LedgerTables tables = load(builder.build(), builder.trustKey());
    QCOMPARE(tables.packages.size(), 2);
    QStringList lines = m_log->lines();
    const QString last = lines.takeLast();
    QCOMPARE(
        lines, QStringList({
                   "debug: Basic header verification OK",
                   "debug: Offset table parsing OK",
                   "debug: Ledger contains 2 issuers",
                   "debug: Ledger contains 2 languages",
                   "debug: Ledger contains 2 keywords",
                   "debug: Ledger contains 2 types",
                   "debug: Ledger contains 2 packages",
                   "debug: Ledger contains 2 links",
                   "debug: Issuer signature of \"Norvak\" \"models\" is valid",
                   "debug: Issuer signature of \"Other\" \"parts\" is valid",
               }));
    const QRegularExpression took("^debug: Ledger parsing took [0-9.e-]+ msecs$");
    QVERIFY2(took.match(last).hasMatch(), qPrintable(last));
}

void tst_LedgerLoader::recordLines_data()
{
    QTest::addColumn<int>("segment");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("line");
    QTest::newRow("issuer cut") << 0 << u16(1) << QString();
    QTest::newRow("keyword cut") << 1 << u16(0) + u32(1) << QString();
    QTest::newRow("package count cut") << 2 << u16(0) << QString();
    QTest::newRow("package cut") << 2 << u16(0) + u32(1) << "Package parsing failed";
    QTest::newRow("link count cut") << 3 << QByteArray() << QString();
    QTest::newRow("second link cut")
        << 3 << u32(2) + QByteArray(10, '\0') << "Failed to parse link with index 1";
}

void tst_LedgerLoader::recordLines()
{
    QFETCH(int, segment);
    QFETCH(QByteArray, payload);
    QFETCH(QString, line);
    QVector<LedgerSegment> segments = LedgerBuilder().segments();
    segments[segment].second = payload;
    load(ledgerFile(segments).leftJustified(88, 'x'), {});
    QStringList lines = m_log->lines("critical");
    QVERIFY(!lines.isEmpty());
    QCOMPARE(lines.takeLast(), QString("Parsing of package ledger failed"));
    QCOMPARE(lines.join('\n'), line);
}

void tst_LedgerLoader::issuerLines()
{
    LedgerBuilder builder;
    builder.addIssuer("good", "one").addIssuerSignedBy(PrivateKey::generate(), "bad", "two");
    load(builder.build(), builder.trustKey());
    QCOMPARE(
        m_log->lines("critical").value(0),
        QString("Failed to verify issuer signature of \"bad\" \"two\""));
    QVERIFY(m_log->lines("debug").contains("Issuer signature of \"good\" \"one\" is valid"));

    LedgerBuilder unusable;
    unusable.addIssuerWithKeyField("not a key", "odd", "three");
    m_log->clear();
    load(unusable.build(), unusable.trustKey());
    QVERIFY(m_log->lines("debug").contains("Issuer signature of \"odd\" \"three\" is valid"));
    QCOMPARE(
        m_log->lines("critical").value(0), QString("Public key of \"odd\" \"three\" is not valid"));
}

void tst_LedgerLoader::refusedLedgerKeepsLanguagesAndTypes()
{
    const LedgerBuilder builder = catalogue();
    const LedgerTables tables =
        load(changed(builder.build(), "\"Alpha\"", "\"Omega\""), builder.trustKey());
    QCOMPARE(m_log->lines("critical"), QStringList({"Parsing of package ledger failed"}));
    QCOMPARE(tables.packages.size() + tables.keywords.size() + tables.links.size(), 0);
    QCOMPARE(tables.languages.size(), 2);
    QCOMPARE(tables.types.size(), 2);
}

void tst_LedgerLoader::whatIsSigned_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<bool>("accepted");
    const auto row = [](const char *name, const char *before, const QByteArray &after,
                        bool accepted) {
        QTest::newRow(name) << QByteArray(before) << after << accepted;
    };
    row("a manifest's value", "\"Alpha\"", "\"Omega\"", false);
    row("a number's value", "2.5", "2.6", false);
    row("a number's spelling", "10.0", "1e+1", true);
    row("a file's name", "a.txt", "b.txt", false);
    row("a package's id", "pkg.alpha", "pkg.gamma", true);
    row("a keyword's id", "k.tree", "k.bush", true);
    row("a keyword's text", "green", "brown", true);
    row("an issuer's label", "Norvak", "Kavron", true);
    row("the manifest's own type", R"({"type":"model")", R"({"type":"other")", true);
    row("white space", R"(, "name")", ",\n\"name\"", true);
    row("the escape of a character", "\\u00e9", "\\u00E9", true);
    QTest::newRow("a file's hash") << fileHash("alpha") << fileHash("gamma") << false;
}

void tst_LedgerLoader::whatIsSigned()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    QFETCH(bool, accepted);
    const LedgerBuilder builder = catalogue();
    const QByteArray ledger = builder.build();
    QVERIFY(ledger.contains(before));
    const LedgerTables tables = load(QByteArray(ledger).replace(before, after), builder.trustKey());
    QCOMPARE(tables.packages.size(), accepted ? 2 : 0);
}

void tst_LedgerLoader::namesThatAreOneAsTextAreRefused()
{
    // Both names read as U+FFFD; only one of the two hashes would be in the signed form.
    LedgerBuilder builder;
    builder.addIssuer("Norvak").addPackage(
        "pkg", "model", "{}", {{QString(QChar(0xfffd)), "good"}});
    QCOMPARE(packagesOf(builder), 1);
    QByteArray record =
        builder.packageRecord("pkg", "model", "{}", {{QString(QChar(0xfffd)), "good"}}, 0);
    record.replace(
        u16(1) + fileHash("good"),
        u16(2) + fileHash("evil") + ledgerString("\xff") + fileHash("good"));
    builder.addRawPackage(record);
    QCOMPARE(packagesOf(builder), 0);
}

void tst_LedgerLoader::issuersCannotStandInForEachOther()
{
    LedgerBuilder builder = catalogue();
    QByteArray record = builder.packageRecord("pkg.gamma", "model", "{}", {}, 1);
    record.replace(2, 2, u16(0));
    QCOMPARE(packagesOf(builder), 2);
    QCOMPARE(packagesOf(builder.addRawPackage(record)), 0);
}

void tst_LedgerLoader::truncatedAnywhere()
{
    const LedgerBuilder builder = catalogue();
    const QByteArray whole = builder.build();
    for (int size = 0; size < whole.size(); ++size) {
        // A copy of its own, so that a read behind the end is one behind the memory.
        const QByteArray ledger(whole.constData(), size);
        QCOMPARE(load(ledger, builder.trustKey()).packages.size(), 0);
    }
    QCOMPARE(m_log->lines("critical").count("Parsing of package ledger failed"), whole.size());
}

void tst_LedgerLoader::mutatedAnyhow()
{
    const LedgerBuilder builder = catalogue();
    const QByteArray whole = builder.build();
    const QVector<quint32> numbers{0, 1, 0x7f, 0xff, 0xffff, 0x7fffffff, 0x80000000, 0xffffffff};
    QRandomGenerator random(3405);
    VerifiedSignatures known;
    int accepted = 0;
    for (int round = 0; round < 10000; ++round) {
        QByteArray ledger = whole;
        for (quint32 i = 0; i <= random.bounded(3u); ++i) {
            const int at = random.bounded(ledger.size() - 4);
            if (random.bounded(2))
                ledger[at] = char(random.bounded(256));
            else
                ledger.replace(at, 4, u32(numbers.at(random.bounded(numbers.size()))));
        }
        const LedgerTables tables = loadLedger(ledger, builder.trustKey(), known);
        touch(tables);
        accepted += tables.packages.isEmpty() ? 0 : 1;
    }
    // What isn't signed may change; most mutations hit something that is.
    QVERIFY2(accepted > 100 && accepted < 5000, qPrintable(QString::number(accepted)));
}

void tst_LedgerLoader::loadsOnAFullPool()
{
    // Every thread of the pool loads, so that none is free to help: each must finish all the same.
    LedgerBuilder builder;
    builder.addIssuer("Norvak");
    for (int i = 0; i < 50; ++i)
        builder.addPackage(
            "pkg." + QByteArray::number(i), "model", "{\"n\":" + QByteArray::number(i) + "}");
    const QByteArray ledger = builder.build();
    const int loads = 4 * QThreadPool::globalInstance()->maxThreadCount();
    std::atomic_int good{0};
    // New threads, which the race detector sees start behind what they read.
    QThreadPool::globalInstance()->waitForDone();
    for (int i = 0; i < loads; ++i) {
        QtConcurrent::run(
            [&] { good += load(ledger, builder.trustKey()).packages.size() == 50 ? 1 : 0; });
    }
    QTRY_COMPARE(good.load(), loads);
    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
}

void tst_LedgerLoader::knownSignaturesChangeNoAnswer()
{
    LedgerBuilder builder = catalogue();
    VerifiedSignatures known;
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(loadLedger(builder.build(), builder.trustKey(), known).packages.size(), 2);
        QCOMPARE(known.snapshot()->size(), 2);
    }
    builder.addPackage("pkg.gamma", "model", "{\"name\":\"Gamma\"}");
    const QByteArray ledger = builder.build();
    const QByteArray bad = changed(ledger, "\"Gamma\"", "\"Delta\"");
    QCOMPARE(loadLedger(bad, builder.trustKey(), known).packages.size(), 0);
    QCOMPARE(loadLedger(ledger, builder.trustKey(), known).packages.size(), 3);
    QCOMPARE(known.snapshot()->size(), 3);
    // Each byte of the package records changed, with the good ones known and with nothing known.
    const int start = ledger.indexOf(".pkg", 38);
    for (int at = start; at < ledger.indexOf(".lnk", 38); ++at) {
        QByteArray damaged = ledger;
        damaged[at] = char(damaged.at(at) ^ 0x04);
        VerifiedSignatures nothing;
        QCOMPARE(
            loadLedger(damaged, builder.trustKey(), known).packages.size(),
            loadLedger(damaged, builder.trustKey(), nothing).packages.size());
    }
}

void tst_LedgerLoader::knownSignaturesOfAnotherKeyDontCount()
{
    // The same record under another issuer, where its signature is none.
    LedgerBuilder first;
    first.addIssuer("first").addPackage("pkg", "model", "{\"a\":1}");
    const QByteArray record = first.packageRecord("pkg", "model", "{\"a\":1}", {}, 0);
    VerifiedSignatures known;
    QCOMPARE(loadLedger(first.build(), first.trustKey(), known).packages.size(), 1);
    LedgerBuilder second;
    second.addIssuer("second").addPackage("own").addRawPackage(record);
    QCOMPARE(loadLedger(second.build(), second.trustKey(), known).packages.size(), 0);
    // And a stranger's issuer isn't accepted because its packages are known.
    QCOMPARE(loadLedger(first.build(), second.trustKey(), known).packages.size(), 0);
}

void tst_LedgerLoader::knownSignaturesAreBounded()
{
    VerifiedSignatures signatures(10);
    signatures.remember(digests(0, 6));
    const auto six = signatures.snapshot();
    signatures.remember(digests(5, 12));
    QVERIFY(signatures.snapshot()->contains(digest(11)));
    // What fits stays, or a larger ledger would be checked anew at every second build.
    QVERIFY(signatures.snapshot()->size() >= 9 && signatures.snapshot()->size() <= 10);
    signatures.remember(digests(100, 200));
    QCOMPARE(signatures.snapshot()->size(), 10);
    signatures.clear();
    QVERIFY(signatures.snapshot()->isEmpty());
    QCOMPARE(six->size(), 6); // as it was
    QVERIFY(six->contains(digest(2)));
}

void tst_LedgerLoader::manyThreadsRemember()
{
    VerifiedSignatures signatures;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([&signatures, number] {
            for (int start = number * 100; start < number * 100 + 100; start += 10) {
                signatures.remember(digests(start, start + 10));
                QVERIFY(signatures.snapshot()->contains(digest(start + 9)));
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(signatures.snapshot()->size(), 400);
}

QTEST_GUILESS_MAIN(tst_LedgerLoader)
#include "tst_ledgerloader.moc"
