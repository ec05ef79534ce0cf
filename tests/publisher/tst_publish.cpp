// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/progress.h"
#include "cataloguetree.h"
#include "ledger/ledgerencoder.h"
#include "ledger/ledgerreading.h"
#include "publish/filehasher.h"
#include "publish/publication.h"
#include "publish/publish.h"
#include "sources/ledgerloader.h"
#include "sources/verifiedsignatures.h"
#include "support/filesizelimit.h"
#include "support/testfiles.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDirIterator>
#include <QTest>

#include <functional>

using namespace nk::pm;
using namespace nk::pm::publisher;
using nk::crypto::ed25519::PrivateKey;
using nk::pm::test::CatalogueTree;
using nk::pm::test::FileSizeLimit;
using nk::pm::test::numberedContent;

namespace {

const PrivateKey trustKey = PrivateKey::generate();

Issuer newIssuer(const QString &type = {}, const PrivateKey &signer = trustKey)
{
    const PrivateKey key = PrivateKey::generate();
    return {
        type, key, IssuerRecord::issue(key.publicKey(), "Studio", "studio@example.org", signer)};
}

/// Does something at the moment when a piece of work begins.
class Interruption : public Progress
{
public:
    Interruption(const QString &when, const std::function<void()> &what)
        : m_when(when)
        , m_what(what)
    {}

    void begin(const QString &what, int) override
    {
        if (what == m_when)
            m_what();
    }

private:
    QString m_when;
    std::function<void()> m_what;
};

/// A catalogue, and a directory to publish it in.
struct Shop
{
    CatalogueTree tree;
    QTemporaryDir directory;
    PublishOrder order{
        tree.path(), directory.path() + "/public", {newIssuer()}, trustKey.publicKey()};
    const Layout layout{order.target};

    PublishReport publish()
    {
        Progress progress;
        return nk::pm::publisher::publish(order, progress);
    }

    QByteArray ledger() const { return content(layout.ledgerFile()); }

    static QByteArray content(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Path, size, time and content of all that is served.
    QStringList served() const
    {
        QStringList list;
        QDirIterator it(order.target, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QFileInfo info(it.next());
            list.append(QString("%1 %2 %3 %4")
                            .arg(info.filePath().mid(order.target.size()))
                            .arg(info.size())
                            .arg(info.lastModified().toMSecsSinceEpoch())
                            .arg(QString(digestOf(content(info.filePath())).toHex())));
        }
        list.sort();
        return list;
    }
};

QString errors(const PublishReport &report)
{
    QStringList list;
    for (const Problem &problem : report.problems.sorted())
        list.append(problem.file + ": " + problem.text);
    return list.join('\n');
}

} // namespace

class tst_Publish : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void publishesForTheReader();
    void publishesNothing();
    void sameCatalogueSameTree();
    void reusesWhatIsUnchanged();
    void replacesDamagedFile();
    void keepsNoSignatureOfAForeignLedger();
    void chosenIssuersSign();
    void refuses_data();
    void refuses();
    void fullDisk();
    void errorLeavesOldPublication_data();
    void errorLeavesOldPublication();
    void twoPublishersAreKeptApart();
    void clearsAwayAfterKilledPublisher();
    void othersMayReadFilesButNotState();
};

void tst_Publish::publishesForTheReader()
{
    Shop shop;
    shop.tree.fillWithGoods();
    const PublishReport report = shop.publish();
    QVERIFY2(report.published, qPrintable(errors(report)));
    QCOMPARE(report.newSignatures, 3);

    const QByteArray ledger = shop.ledger();
    QCOMPARE(report.ledgerDigest, digestOf(ledger));
    VerifiedSignatures known;
    const LedgerTables tables = loadLedger(ledger, trustKey.publicKey(), known);
    QCOMPARE(tables.packages.size(), 3);
    QCOMPARE(tables.keywords.size(), 5);
    QCOMPARE(tables.links.size(), 4);

    const PackageEntry &stool = tables.packages[2];
    QCOMPARE(stool.id.text(), "stool");
    QCOMPARE(tables.types[stool.typeIndex].text(), "furniture:chairs");
    QCOMPARE(stool.files.sorted().size(), 2);
    const QByteArray digest = QCryptographicHash::hash("v 0 0 0\n", QCryptographicHash::Sha224);
    QCOMPARE(QByteArray(stool.files.hashOf("stool.obj"), 28), digest);
    QCOMPARE(Shop::content(shop.layout.contentFile(digest)), "v 0 0 0\n");

    const LedgerKeyword &chair = tables.keywords[0];
    QCOMPARE(chair.strings.size(), 2);
    QCOMPARE(tables.languages[chair.strings.firstKey()].text(), "de");
    QCOMPARE(chair.strings.first()[0].bytes(), QByteArray("Stuhl\0St\xc3\xbchle", 13));
    QCOMPARE(
        chair.strings.first()[1].bytes(), QByteArray(
                                              "\0Sitzm\xc3\xb6"
                                              "bel",
                                              11));
    QCOMPARE(chair.strings.last()[1].bytes(), QByteArray("seat"));

    QStringList links;
    for (const LedgerLink &link : tables.links)
        links.append(linkStart(tables, link).text() + " " + linkEnd(tables, link).text());
    QCOMPARE(links, QStringList({"chair wooden", "rooms stool", "stool chair", "stool oak"}));
}

void tst_Publish::publishesNothing()
{
    Shop shop;
    shop.order.issuers.clear();
    QVERIFY(shop.publish().published);
    QByteArray expected = QByteArray::fromHex(
        "6c64677201002e697373260000002e6b7764300000002e706b673e0000002e6c6e6b4c000000");
    expected += QByteArray::fromHex("2e69737302000000"
                                    "0000");
    expected += QByteArray::fromHex("2e6b776406000000"
                                    "000000000000");
    expected += QByteArray::fromHex("2e706b6706000000"
                                    "000000000000");
    expected += QByteArray::fromHex("2e6c6e6b04000000"
                                    "00000000");
    QCOMPARE(shop.ledger().toHex(), expected.toHex());
}

void tst_Publish::sameCatalogueSameTree()
{
    Shop one;
    one.tree.fillWithGoods();
    Shop other;
    other.order.issuers = one.order.issuers;
    // Other file times, another order of directory entries, other white space.
    other.tree.link("stool-needs-oak", "stool", "requires", "oak");
    other.tree.package("materials/oak", "{}");
    other.tree.fillWithGoods();
    other.tree.package("loose", "\n{\n}\n");
    QVERIFY(one.publish().published);
    QVERIFY(other.publish().published);
    QCOMPARE(one.served().size(), 4);
    QCOMPARE(other.served(), one.served());
}

void tst_Publish::reusesWhatIsUnchanged()
{
    Shop shop;
    shop.tree.fillWithGoods();
    QVERIFY(shop.publish().published);
    const QStringList served = shop.served();

    PublishReport report = shop.publish();
    QVERIFY(report.published);
    QVERIFY(!report.ledgerChanged);
    QCOMPARE(report.newFiles, 0);
    QCOMPARE(report.keptFiles, 3);
    QCOMPARE(report.newSignatures, 0);
    QCOMPARE(report.keptSignatures, 3);
    QCOMPARE(shop.served(), served);

    shop.tree.package("loose", R"({"new":true})");
    shop.tree.file("packages/materials/oak/bark.png", "bark");
    report = shop.publish();
    QVERIFY(report.ledgerChanged);
    QCOMPARE(report.newFiles, 1);
    QCOMPARE(report.newBytes, 4);
    QCOMPARE(report.newSignatures, 2);
    QCOMPARE(report.keptSignatures, 1);
    VerifiedSignatures known;
    QCOMPARE(loadLedger(shop.ledger(), trustKey.publicKey(), known).packages.size(), 3);

    // The same content under another type or from another issuer isn't the same to the signature.
    shop.order.issuers.append(newIssuer("materials"));
    QDir().mkpath(shop.tree.path() + "/packages/odd");
    QVERIFY(QFile::rename(
        shop.tree.path() + "/packages/loose", shop.tree.path() + "/packages/odd/loose"));
    report = shop.publish();
    QCOMPARE(report.newSignatures, 2);
    QCOMPARE(report.keptSignatures, 1);
    QCOMPARE(loadLedger(shop.ledger(), trustKey.publicKey(), known).packages.size(), 3);
}

void tst_Publish::replacesDamagedFile()
{
    Shop shop;
    shop.tree.fillWithGoods();
    QVERIFY(shop.publish().published);
    const QStringList served = shop.served();
    const QString path = shop.layout.contentFile(digestOf(QByteArray("<svg/>")));
    QVERIFY(QFile::resize(path, 3));
    const PublishReport report = shop.publish();
    QCOMPARE(report.newFiles, 1);
    QCOMPARE(shop.served(), served);
}

void tst_Publish::keepsNoSignatureOfAForeignLedger()
{
    Shop shop;
    shop.tree.fillWithGoods();
    QVERIFY(shop.publish().published);
    const QByteArray ledger = shop.ledger();
    QByteArray damaged = ledger;
    const LedgerReading reading = readLedger(ledger);
    char &signatureByte = damaged.data()[reading.tables.packages[1].signature - ledger.constData()];
    signatureByte = char(~signatureByte);
    QFile file(shop.layout.ledgerFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(damaged);
    file.close();

    const PublishReport report = shop.publish();
    QCOMPARE(report.keptSignatures, 0);
    QVERIFY(report.ledgerChanged);
    QCOMPARE(shop.ledger(), ledger);
}

void tst_Publish::chosenIssuersSign()
{
    Shop shop;
    shop.tree.fillWithGoods();
    shop.tree.package("furniturelike/hook");
    shop.tree.package("furniture/table");
    shop.order.issuers = {
        newIssuer("furniture"), newIssuer(), newIssuer("furniture:chairs"), newIssuer("unused")};
    const PublishReport report = shop.publish();
    QVERIFY2(report.published, qPrintable(errors(report)));
    VerifiedSignatures known;
    const LedgerTables tables = loadLedger(shop.ledger(), trustKey.publicKey(), known);
    QCOMPARE(tables.issuers.size(), 4);
    QMap<QString, int> signers;
    for (const PackageEntry &package : tables.packages)
        signers.insert(package.id.text(), package.issuerIndex);
    const QMap<QString, int> expected{
        {"hook", 1}, {"loose", 1}, {"oak", 1}, {"stool", 2}, {"table", 0}};
    QCOMPARE(signers, expected);
}

using Break = std::function<void(Shop &)>;
Q_DECLARE_METATYPE(Break)

void tst_Publish::refuses_data()
{
    QTest::addColumn<Break>("breakIt");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *expected, const Break &breakIt) {
        QTest::newRow(name) << breakIt << QString(expected);
    };

    row("two files of equal content", "packages/loose/b.png: holds the same as \"a.png\"",
        [](Shop &shop) {
            shop.tree.file("packages/loose/a.png", "png");
            shop.tree.file("packages/loose/b.png", "png");
        });
    row("error of the catalogue", "links/x.json: links to \"y\"",
        [](Shop &shop) { shop.tree.link("x", "loose", "is", "y"); });
    row("package without an issuer",
        "packages/loose/manifest.json: no issuer signs packages of type \"\"",
        [](Shop &shop) { shop.order.issuers.first().type = "furniture"; });
    row("packages without any issuer", "somebody has to sign the packages: --issuer",
        [](Shop &shop) { shop.order.issuers.clear(); });
    row("issuer that the trust key didn't sign", "isn't signed by the trust key",
        [](Shop &shop) { shop.order.issuers = {newIssuer({}, PrivateKey::generate())}; });
    row("key of another issuer", "don't belong together",
        [](Shop &shop) { shop.order.issuers.first().key = PrivateKey::generate(); });
    row("target in the catalogue", "can't lie in the catalogue",
        [](Shop &shop) { shop.order.target = shop.tree.path() + "/packages/public"; });
    row("target that is a file", "is not a directory",
        [](Shop &shop) { QFile(shop.order.target).open(QIODevice::WriteOnly); });
}

void tst_Publish::refuses()
{
    QFETCH(Break, breakIt);
    QFETCH(QString, expected);
    Shop shop;
    shop.tree.fillWithGoods();
    breakIt(shop);
    const PublishReport report = shop.publish();
    QVERIFY(!report.published);
    QVERIFY2(errors(report).contains(expected), qPrintable(errors(report)));
    QCOMPARE(shop.served(), QStringList());
}

void tst_Publish::fullDisk()
{
    Shop shop;
    for (int i = 0; i < 200; ++i)
        shop.tree.file(QString("packages/loose/%1.bin").arg(i), numberedContent(i, 20000));
    shop.tree.package("loose");
    PublishReport report;
    {
        const FileSizeLimit limit(10000);
        report = shop.publish();
    }
    QVERIFY(!report.published);
    QVERIFY2(errors(report).contains(": can't write \""), qPrintable(errors(report)));
    QVERIFY(!errors(report).contains("can't be read"));
    // Those that were at it, and not each file.
    QVERIFY2(errors(report).count("can't write") < 100, qPrintable(errors(report)));
    QCOMPARE(shop.served(), QStringList());
    QVERIFY(shop.publish().published);
}

void tst_Publish::errorLeavesOldPublication_data()
{
    QTest::addColumn<QString>("when");
    QTest::addColumn<Break>("breakIt");
    QTest::addColumn<QString>("expected");

    QTest::newRow("file vanishes before it is hashed")
        << "Hashing files" << Break([](Shop &shop) { shop.tree.remove("packages/loose/new.png"); })
        << "packages/loose/new.png: can't be read";
    QTest::newRow("file vanishes before it is copied")
        << "Copying files" << Break([](Shop &shop) { shop.tree.remove("packages/loose/new.png"); })
        << "packages/loose/new.png: can't be read";
    QTest::newRow("file changes before it is copied") << "Copying files" << Break([](Shop &shop) {
        shop.tree.file("packages/loose/new.png", "newer");
    }) << "packages/loose/new.png: changed while it was being published";
    QTest::newRow("file can't take its place") << "Copying files" << Break([](Shop &shop) {
        QDir().mkpath(shop.layout.contentFile(digestOf(QByteArray("new"))) + "/x");
    }) << "packages/loose/new.png: can't replace";
}

void tst_Publish::errorLeavesOldPublication()
{
    QFETCH(QString, when);
    QFETCH(Break, breakIt);
    QFETCH(QString, expected);
    Shop shop;
    shop.tree.fillWithGoods();
    QVERIFY(shop.publish().published);
    const QStringList served = shop.served();

    shop.tree.file("packages/loose/new.png", "new");
    Interruption interruption(when, [&] { breakIt(shop); });
    const PublishReport report = nk::pm::publisher::publish(shop.order, interruption);
    QVERIFY(!report.published);
    QVERIFY2(errors(report).startsWith(expected), qPrintable(errors(report)));
    QCOMPARE(shop.served(), served);
}

void tst_Publish::twoPublishersAreKeptApart()
{
    Shop shop;
    shop.tree.fillWithGoods();
    PublishReport second;
    Interruption interruption("Signing packages", [&] { second = shop.publish(); });
    const PublishReport first = nk::pm::publisher::publish(shop.order, interruption);
    QVERIFY(first.published);
    QVERIFY(!second.published);
    QVERIFY2(errors(second).contains("another publisher is at work"), qPrintable(errors(second)));
    QVERIFY(shop.publish().published);
}

void tst_Publish::clearsAwayAfterKilledPublisher()
{
    Shop shop;
    QDir().mkpath(shop.layout.stagingDirectory() + "/x");
    QFile remains(shop.layout.stagedFile(QByteArray(28, 'x')));
    QVERIFY(remains.open(QIODevice::WriteOnly));
    remains.close();
    QVERIFY(shop.publish().published);
    QVERIFY(!QFileInfo::exists(shop.layout.stagingDirectory()));
}

void tst_Publish::othersMayReadFilesButNotState()
{
    Shop shop;
    shop.tree.fillWithGoods();
    QVERIFY(shop.publish().published);
    const auto others = QFile::ReadOther | QFile::ReadGroup;
    const QString file = shop.layout.contentFile(digestOf(QByteArray("<svg/>")));
    QCOMPARE(QFile::permissions(file) & others, others);
    QCOMPARE(QFile::permissions(shop.layout.ledgerFile()) & others, others);
    QVERIFY(!(QFile::permissions(file) & (QFile::WriteGroup | QFile::WriteOther)));
    QVERIFY(
        !(QFile::permissions(shop.layout.stateDirectory())
          & (QFile::ReadOther | QFile::ExeOther | QFile::ReadGroup | QFile::ExeGroup)));
}

QTEST_GUILESS_MAIN(tst_Publish)
#include "tst_publish.moc"
