// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/progress.h"
#include "cataloguetree.h"
#include "publish/filehasher.h"
#include "publish/layout.h"
#include "publish/publish.h"
#include "sources/ledgerloader.h"
#include "sources/verifiedsignatures.h"
#include "support/columns.h"
#include "support/filesizelimit.h"
#include "support/testfiles.h"

#include <QDateTime>
#include <QDirIterator>
#include <QTest>

#include <functional>

using namespace nk::pm;
using namespace nk::pm::publisher;
using nk::crypto::ed25519::PrivateKey;
using namespace nk::pm::test;

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

/// What a reader that verifies everything has of \a ledger, which has to stay.
LedgerTables tablesOf(const QByteArray &ledger)
{
    VerifiedSignatures known;
    return loadLedger(ledger, trustKey.publicKey(), known);
}

/// A catalogue, and a directory to publish it in.
struct Shop
{
    Shop() { tree.fillWithGoods(); }

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

    QByteArray ledger() const { return readFile(layout.ledgerFile()); }

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
                            .arg(QString(digestOf(readFile(info.filePath())).toHex())));
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

/// How a catalogue becomes a publication. What its ledger says is compared by tst_roundtrip.
class tst_Publish : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void othersMayReadFilesButNotState();
    void sameCatalogueSameTree();
    void reusesWhatIsUnchanged();
    void mendsWhatWasDamaged();
    void chosenIssuersSign();
    void refuses_data();
    void refuses();
    void publishesWhatWasAskedForTwice();
    void fullDisk();
    void errorLeavesOldPublication_data();
    void errorLeavesOldPublication();
    void twoPublishersAreKeptApart();
};

/// The web server's user reads what is served, and nothing else.
void tst_Publish::othersMayReadFilesButNotState()
{
    Shop shop;
    QVERIFY(shop.publish().published);
    const auto others = QFile::ReadOther | QFile::ReadGroup;
    for (const QString &path :
         {shop.layout.contentFile(digestOf(QByteArray("<svg/>"))), shop.layout.ledgerFile()}) {
        QCOMPARE(QFile::permissions(path) & others, others);
        QVERIFY(!(QFile::permissions(path) & (QFile::WriteGroup | QFile::WriteOther)));
    }
    QVERIFY(
        !(QFile::permissions(shop.layout.stateDirectory())
          & (others | QFile::ExeOther | QFile::ExeGroup)));
}

void tst_Publish::sameCatalogueSameTree()
{
    Shop one;
    Shop other;
    other.order.issuers = one.order.issuers;
    // Other file times, another order of directory entries, other white space.
    other.tree.remove("packages/furniture");
    other.tree.remove("links/chair-is-wooden.json");
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
    QCOMPARE(tablesOf(shop.ledger()).packages.size(), 3);

    // The same content under another type or from another issuer isn't the same to the signature.
    shop.order.issuers.append(newIssuer("materials"));
    QDir().mkpath(shop.tree.path() + "/packages/odd");
    QVERIFY(QFile::rename(
        shop.tree.path() + "/packages/loose", shop.tree.path() + "/packages/odd/loose"));
    report = shop.publish();
    QCOMPARE(report.newSignatures, 2);
    QCOMPARE(report.keptSignatures, 1);
    QCOMPARE(tablesOf(shop.ledger()).packages.size(), 3);
}

void tst_Publish::mendsWhatWasDamaged()
{
    Shop shop;
    QVERIFY(shop.publish().published);
    const QStringList served = shop.served();
    QFile file(shop.layout.contentFile(digestOf(QByteArray("<svg/>"))));
    const QDateTime time = file.fileTime(QFile::FileModificationTime);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.resize(3));
    QVERIFY(file.setFileTime(time, QFile::FileModificationTime));
    file.close();
    const QByteArray ledger = shop.ledger();
    QByteArray damaged = ledger;
    const auto offset = int(tablesOf(ledger).packages[1].signature - ledger.constData());
    damaged[offset] = char(~damaged[offset]);
    writeFile(shop.layout.ledgerFile(), damaged);

    const PublishReport report = shop.publish();
    QCOMPARE(report.newFiles, 1);
    QCOMPARE(report.keptSignatures, 0);
    QVERIFY(report.ledgerChanged);
    QCOMPARE(shop.served(), served);
}

void tst_Publish::chosenIssuersSign()
{
    Shop shop;
    shop.tree.package("furniturelike/hook");
    shop.tree.package("furniture/table");
    shop.order.issuers = {
        newIssuer("furniture"), newIssuer(), newIssuer("furniture:chairs"), newIssuer("unused")};
    const PublishReport report = shop.publish();
    QVERIFY2(report.published, qPrintable(errors(report)));
    const QByteArray ledger = shop.ledger();
    const LedgerTables tables = tablesOf(ledger);
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
    Columns<QString, Break>("expected", "breakIt")
        .row(
            "two files of equal content", "packages/loose/b.png: holds the same as \"a.png\"",
            [](Shop &shop) {
                shop.tree.file("packages/loose/a.png", "png");
                shop.tree.file("packages/loose/b.png", "png");
            })
        .row(
            "package without an issuer",
            "packages/loose/manifest.json: no issuer signs packages of type \"\"",
            [](Shop &shop) { shop.order.issuers.first().type = "furniture"; })
        .row(
            "packages without any issuer", "somebody has to sign the packages: --issuer",
            [](Shop &shop) { shop.order.issuers.clear(); })
        .row(
            "issuer that the trust key didn't sign", "isn't signed by the trust key",
            [](Shop &shop) { shop.order.issuers = {newIssuer({}, PrivateKey::generate())}; })
        .row(
            "key of another issuer", "don't belong together",
            [](Shop &shop) { shop.order.issuers.first().key = PrivateKey::generate(); })
        .row(
            "target in the catalogue", "can't lie in the catalogue",
            [](Shop &shop) { shop.order.target = shop.tree.path() + "/packages/public"; })
        .row(
            "target that is a file", "is not a directory",
            [](Shop &shop) { QFile(shop.order.target).open(QIODevice::WriteOnly); })
        .row("target with other things in it", "holds other things", [](Shop &shop) {
            QDir().mkpath(shop.order.target + "/holiday pictures");
        });
}

void tst_Publish::refuses()
{
    QFETCH(Break, breakIt);
    QFETCH(QString, expected);
    Shop shop;
    breakIt(shop);
    const PublishReport report = shop.publish();
    QVERIFY(!report.published);
    QVERIFY2(errors(report).contains(expected), qPrintable(errors(report)));
    QCOMPARE(shop.served(), QStringList());
    QVERIFY(!QFileInfo::exists(shop.layout.stateDirectory()));
}

void tst_Publish::publishesWhatWasAskedForTwice()
{
    Shop shop;
    writeFile(shop.directory.filePath("outside"), "outside");
    makeLink(shop.tree.path() + "/packages/loose/in", shop.directory.filePath("outside"));
    writeFile(shop.order.target + "/robots.txt", "not ours");
    shop.order.links = Links::Anywhere;
    shop.order.force = true;
    const PublishReport report = shop.publish();
    QVERIFY2(report.published, qPrintable(errors(report)));
    QVERIFY(QFileInfo::exists(shop.layout.contentFile(digestOf(QByteArray("outside")))));
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
    QVERIFY(!QFileInfo::exists(shop.order.target)); // nothing was there before either
    QVERIFY(shop.publish().published);
}

void tst_Publish::errorLeavesOldPublication_data()
{
    const Break vanish = [](Shop &shop) { shop.tree.remove("packages/loose/new.png"); };
    const Break change = [](Shop &shop) { shop.tree.file("packages/loose/new.png", "newer"); };
    const Break occupy = [](Shop &shop) {
        QDir().mkpath(shop.layout.contentFile(digestOf(QByteArray("new"))) + "/x");
    };
    Columns<QString, Break, QString>("when", "breakIt", "expected")
        .row("file vanishes before it is hashed", "Hashing files", vanish, "can't be read")
        .row("file vanishes before it is copied", "Copying files", vanish, "can't be read")
        .row(
            "file changes before it is copied", "Copying files", change,
            "changed while it was being published")
        .row("file can't take its place", "Copying files", occupy, "can't replace");
}

void tst_Publish::errorLeavesOldPublication()
{
    QFETCH(QString, when);
    QFETCH(QString, expected);
    QFETCH(Break, breakIt);
    Shop shop;
    QVERIFY(shop.publish().published);
    const QStringList served = shop.served();

    shop.tree.file("packages/loose/new.png", "new");
    Interruption interruption(when, [&] { breakIt(shop); });
    const PublishReport report = nk::pm::publisher::publish(shop.order, interruption);
    QVERIFY(!report.published);
    QVERIFY2(
        errors(report).startsWith("packages/loose/new.png: " + expected),
        qPrintable(errors(report)));
    QCOMPARE(shop.served(), served);
}

void tst_Publish::twoPublishersAreKeptApart()
{
    Shop shop;
    PublishReport second;
    Interruption interruption("Signing packages", [&] { second = shop.publish(); });
    const PublishReport first = nk::pm::publisher::publish(shop.order, interruption);
    QVERIFY(first.published);
    QVERIFY(!second.published);
    QVERIFY2(errors(second).contains("another publisher is at work"), qPrintable(errors(second)));
    // What a publisher leaves that is killed between making its lock and writing into it.
    writeFile(shop.layout.lockFile(), {});
    QVERIFY(errors(shop.publish()).contains(shop.layout.lockFile()));
    makeOld(shop.layout.lockFile(), 10);
    QVERIFY(shop.publish().published);
}

QTEST_GUILESS_MAIN(tst_Publish)
#include "tst_publish.moc"
