// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "support/columns.h"
#include "support/logrecorder.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QSignalSpy>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// One index of a catalogue, with the trees that its packages make.
struct Fixture
{
    explicit Fixture(const MemoryCatalogue &catalogue)
    {
        source.catalogue = catalogue;
        index = buildIndex({&source});
    }
    std::unique_ptr<PackageInstaller> installer(const QString &id, const InstallLocation &root = {})
    {
        return packageOf(index, id)->createInstaller(root);
    }
    QList<QPointer<MemoryInstaller>> made() { return source.log().installers; }
    /// Where \a id is being installed, seen from \a root.
    QString pathOf(const QString &id, const InstallLocation &root)
    {
        const QString path = QDir::cleanPath(source.installer(id)->directory());
        return root.directory(false).relativeFilePath(path);
    }

    MemorySource source;
    QSharedPointer<PackageIndex> index;
};

/// The tree in brackets: a(b(c),d).
QString shape(const PackageInstaller &installer)
{
    QStringList children;
    for (const QObject *child : installer.children()) {
        if (const auto *below = qobject_cast<const MemoryInstaller *>(child))
            children.append(shape(*below));
    }
    const QString id = static_cast<const MemoryInstaller &>(installer).packageId();
    return children.isEmpty() ? id : id + '(' + children.join(',') + ')';
}

QStringList messages(const PackageInstaller &installer)
{
    QStringList messages;
    for (const InstallError &error : installer.errors())
        messages.append(error.message);
    return messages;
}

/// Packages "0" to "<length - 1>", each requiring the next.
MemoryCatalogue chain(int length)
{
    MemoryCatalogue catalogue;
    for (int i = 0; i < length; ++i) {
        catalogue.package(QString::number(i));
        if (i > 0)
            catalogue.link(QString::number(i - 1), Requires, QString::number(i));
    }
    return catalogue;
}

} // namespace

class TestInstallerTree : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shapes_data();
    void shapes();
    void installsBelowTheIndexOrAnotherRoot();
    void statusRisesToTheRoot();
    void longChainKeepsItsShape();
    void manyRepetitionsAreCut();
    void accessorWithoutInstallers();

private:
    ScopedDataLocation m_data;
};

void TestInstallerTree::shapes_data()
{
    Columns<QString, QString>("requirements", "expected")
        .row("alone", "", "a")
        .row("in the links' order", "ac ab ad", "a(c,b,d)")
        .row("chain", "ab bc cd", "a(b(c(d)))")
        .row("needed twice, there twice", "ab ac bd cd", "a(b(d),c(d))")
        .row("doubled link", "ab ab", "a(b,b)")
        .row("requires itself", "aa ab", "a(b)")
        .row("cycle of two", "ab ba bc", "a(b(c))")
        .row("cycle below the root", "ab bc cd db ac", "a(b(c(d)),c(d(b)))")
        .row("a keyword is passed over", "ak ab", "a(b)");
}

void TestInstallerTree::shapes()
{
    QFETCH(QString, requirements);
    MemoryCatalogue catalogue;
    for (const QString id : {"a", "b", "c", "d"})
        catalogue.package(id);
    catalogue.word("k", "k").linked("a is_a d, a uses b");
    for (const QString &pair : requirements.split(' ', Qt::SkipEmptyParts))
        catalogue.link(pair.left(1), Requires, pair.right(1));
    Fixture fixture(catalogue);
    const auto root = fixture.installer("a");
    QTEST(shape(*root), "expected");
}

void TestInstallerTree::installsBelowTheIndexOrAnotherRoot()
{
    MemoryCatalogue catalogue;
    catalogue.package("p", "a:b").package("q", "c").linked("p requires q");
    Fixture fixture(catalogue);
    const InstallLocation location = fixture.index->installLocation();
    const auto tree = fixture.installer("p");
    QCOMPARE(fixture.pathOf("p", location), QString("a/b/p"));
    QCOMPARE(fixture.pathOf("q", location), QString("c/q"));

    const auto other = buildIndex(MemoryCatalogue());
    const InstallLocation below = other->installLocation().subLocation("sub");
    const auto otherTree = fixture.installer("p", below);
    QCOMPARE(fixture.pathOf("q", other->installLocation()), QString("sub/c/q"));
}

void TestInstallerTree::statusRisesToTheRoot()
{
    MemoryCatalogue catalogue;
    catalogue.package("p").package("q").package("r").linked("p requires q, q requires r");
    Fixture fixture(catalogue);
    const auto root = fixture.installer("p");
    QSignalSpy changes(root.get(), &PackageInstaller::statusChanged);
    fixture.source.installer("p")->succeed();
    fixture.source.installer("q")->fail(7, "no room");
    QCOMPARE(root->status(), PackageInstaller::InProgress);
    QVERIFY(!root->isFinished());
    fixture.source.installer("r")->succeed();
    QCOMPARE(root->status(), PackageInstaller::Failed);
    QVERIFY(root->isFinished());
    QCOMPARE(changes.count(), 1);
    QCOMPARE(messages(*root), QStringList("no room"));
}

/// Neither making the tree nor its status nor its end may take stack by the length of the chain.
void TestInstallerTree::longChainKeepsItsShape()
{
    constexpr int length = 50000;
    Fixture fixture(chain(length));
    auto root = fixture.installer("0");
    const auto made = fixture.made();
    QCOMPARE(made.size(), length);
    for (int i = 1; i < length; ++i) {
        if (made.at(i)->parent() != made.at(i - 1))
            QFAIL(qPrintable(QString("installer %1 hangs elsewhere").arg(i)));
    }

    QSignalSpy changes(root.get(), &PackageInstaller::statusChanged);
    for (const auto &installer : made.mid(0, length - 1))
        installer->succeed();
    QCOMPARE(root->status(), PackageInstaller::InProgress);
    made.last()->fail(1, "last");
    QCOMPARE(root->status(), PackageInstaller::Failed);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(messages(*root), QStringList("last"));

    root.reset();
    QVERIFY(made.last().isNull());
}

void TestInstallerTree::manyRepetitionsAreCut()
{
    // Forty levels, each requiring the next one twice, and a package that only the first requires,
    // at its end.
    MemoryCatalogue catalogue = chain(40);
    for (int i = 1; i < 40; ++i)
        catalogue.link(QString::number(i - 1), Requires, QString::number(i));
    catalogue.package("last").linked("0 requires last, 0 requires last");
    Fixture fixture(catalogue);
    LogRecorder log("norvak.package.index");
    const auto root = fixture.installer("0");
    QCOMPARE(fixture.made().size(), 4096 + 1);
    QCOMPARE(fixture.made().last()->packageId(), QString("last"));
    QCOMPARE(log.lines("warning").size(), 1);

    fixture.installer("1");
    QCOMPARE(log.lines("warning").size(), 1);
}

void TestInstallerTree::accessorWithoutInstallers()
{
    struct NoInstallers : MemoryAccessor
    {
        using MemoryAccessor::MemoryAccessor;
        std::unique_ptr<PackageInstaller> createInstaller(
            int, const InstallLocation &) const override
        {
            return nullptr;
        }
    };
    MemorySource lower;
    lower.catalogue.package("q").package("r");
    lower.accessorMaker = [&] { return std::make_unique<NoInstallers>(lower.catalogue); };
    MemorySource source;
    source.catalogue.package("p").linked("p requires q, q requires r");
    const auto index = buildIndex({&lower, &source});
    const auto root = packageOf(index, "p")->createInstaller({});
    source.installer("p")->succeed();
    QCOMPARE(root->status(), PackageInstaller::Failed);
    QCOMPARE(
        messages(*root), (QStringList{"No installer for package q", "No installer for package r"}));
}

QTEST_GUILESS_MAIN(TestInstallerTree)

#include "tst_installertree.moc"
