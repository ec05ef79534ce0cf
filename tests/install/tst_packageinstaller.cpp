// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/packageinstaller.h"

#include <QPointer>
#include <QtTest>

using namespace nk::pm;

namespace {

class TestInstaller : public PackageInstaller
{
public:
    explicit TestInstaller(const QString &name = QString())
        : PackageInstaller(InstallLocation())
    {
        setObjectName(name);
    }

    using PackageInstaller::addError;
    using PackageInstaller::finish;

    TestInstaller *add(const QString &name)
    {
        auto child = std::make_unique<TestInstaller>(name);
        TestInstaller *pointer = child.get();
        addChild(std::move(child));
        return pointer;
    }
    void fail(const QString &message)
    {
        addError(7, message);
        finish();
    }
};

QStringList messages(const PackageInstaller &installer)
{
    QStringList result;
    for (const InstallError &error : installer.errors())
        result << error.message;
    return result;
}

} // namespace

/// How a tree of installers adds up to one status, one list of errors and one signal.
class PackageInstallerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void singleInstallerEndsOnce_data();
    void singleInstallerEndsOnce();
    void finishedBeforeAnybodyListened();
    void treeStatus_data();
    void treeStatus();
    void parentWaitsForItsChild();
    void failureShowsWhenEverythingStopped();
    void errorsComeInOrderOfTheTree();
    void lateChildCountsFromItsFirstChange();
    void everyListenerSeesASettledTree();
    void treeMayBeDestroyedByItsListener_data();
    void treeMayBeDestroyedByItsListener();
    void childMayBeDestroyedAlone();
    void longChainDoesNotExhaustTheStack();
    void wideTreeEndsOnce();
};

void PackageInstallerTest::singleInstallerEndsOnce_data()
{
    QTest::addColumn<bool>("withError");
    QTest::addColumn<PackageInstaller::Status>("status");
    QTest::newRow("well") << false << PackageInstaller::Succeeded;
    QTest::newRow("badly") << true << PackageInstaller::Failed;
}

void PackageInstallerTest::singleInstallerEndsOnce()
{
    QFETCH(bool, withError);
    QFETCH(PackageInstaller::Status, status);
    TestInstaller installer;
    QSignalSpy spy(&installer, &PackageInstaller::statusChanged);
    if (withError)
        installer.addError(InstallError{3, "broken"});
    QCOMPARE(installer.status(), PackageInstaller::InProgress);
    QVERIFY(!installer.isFinished());
    QCOMPARE(spy.count(), 0);

    installer.finish();
    installer.finish();
    QCOMPARE(installer.status(), status);
    QVERIFY(installer.isFinished());
    QCOMPARE(spy.count(), 1);
}

void PackageInstallerTest::finishedBeforeAnybodyListened()
{
    struct Hasty : PackageInstaller
    {
        Hasty()
            : PackageInstaller(InstallLocation())
        {
            addError(1, "no service");
            finish();
        }
    };
    Hasty installer;
    QSignalSpy spy(&installer, &PackageInstaller::statusChanged);
    QCoreApplication::processEvents();
    QCOMPARE(spy.count(), 0);
    QCOMPARE(installer.status(), PackageInstaller::Failed);
}

// Each letter is the end of one part: the root itself, then its two children. s ends well, f
// fails, - still works.
void PackageInstallerTest::treeStatus_data()
{
    QTest::addColumn<QString>("ends");
    QTest::addColumn<PackageInstaller::Status>("status");
    const QString letters = "sf-";
    for (int i = 0; i < 27; ++i) {
        const QString ends = QString(letters.at(i / 9)) + letters.at(i / 3 % 3) + letters.at(i % 3);
        const PackageInstaller::Status status = ends == "sss"        ? PackageInstaller::Succeeded
                                                : ends.contains('-') ? PackageInstaller::InProgress
                                                                     : PackageInstaller::Failed;
        QTest::newRow(qPrintable(ends)) << ends << status;
    }
}

void PackageInstallerTest::treeStatus()
{
    QFETCH(QString, ends);
    QFETCH(PackageInstaller::Status, status);
    TestInstaller root;
    TestInstaller *parts[] = {&root, root.add("one"), root.add("two")};
    QSignalSpy spy(&root, &PackageInstaller::statusChanged);
    // In every order of the ends.
    const int start = QRandomGenerator::global()->bounded(3);
    for (int i = 0; i < 3; ++i) {
        const int part = (start + i) % 3;
        if (ends.at(part) == 's')
            parts[part]->finish();
        else if (ends.at(part) == 'f')
            parts[part]->fail("failed");
    }
    QCOMPARE(root.status(), status);
    QCOMPARE(root.isFinished(), !ends.contains('-'));
    QCOMPARE(spy.count(), ends.contains('-') ? 0 : 1);
}

void PackageInstallerTest::parentWaitsForItsChild()
{
    TestInstaller root;
    TestInstaller *child = root.add("child");
    root.finish();
    QCOMPARE(root.status(), PackageInstaller::InProgress);
    QVERIFY(!root.isFinished());
    child->finish();
    QCOMPARE(root.status(), PackageInstaller::Succeeded);
    QVERIFY(root.isFinished());
}

void PackageInstallerTest::failureShowsWhenEverythingStopped()
{
    TestInstaller root;
    TestInstaller *failing = root.add("failing");
    TestInstaller *slow = root.add("slow");
    QSignalSpy spy(&root, &PackageInstaller::statusChanged);
    root.finish();
    failing->fail("broken");
    QCOMPARE(root.status(), PackageInstaller::InProgress);
    QCOMPARE(spy.count(), 0);
    slow->finish();
    QCOMPARE(root.status(), PackageInstaller::Failed);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(messages(root), QStringList{"broken"});
}

void PackageInstallerTest::errorsComeInOrderOfTheTree()
{
    TestInstaller root;
    TestInstaller *first = root.add("first");
    TestInstaller *second = root.add("second");
    TestInstaller *below = first->add("below");
    second->fail("second");
    below->fail("below first");
    first->addError(1, "first, early");
    first->fail("first, late");
    root.fail("root");
    QCOMPARE(
        messages(root),
        (QStringList{"root", "first, early", "first, late", "below first", "second"}));
    QCOMPARE(root.errors().at(0).code, 7);
    QCOMPARE(root.errors().at(1).code, 1);
}

void PackageInstallerTest::lateChildCountsFromItsFirstChange()
{
    TestInstaller root;
    root.finish();
    QSignalSpy spy(&root, &PackageInstaller::statusChanged);
    TestInstaller *late = root.add("late");
    QCOMPARE(root.status(), PackageInstaller::Succeeded);
    QVERIFY(!root.isFinished());
    late->fail("late");
    QCOMPARE(root.status(), PackageInstaller::Failed);
    QCOMPARE(spy.count(), 1);

    // Whoever makes a child's signal arrive makes the parent look again.
    auto ended = std::make_unique<TestInstaller>("ended");
    TestInstaller *pointer = ended.get();
    ended->finish();
    TestInstaller other;
    other.finish();
    other.addChild(std::move(ended));
    TestInstaller *working = other.add("working");
    Q_EMIT pointer->statusChanged();
    QCOMPARE(other.status(), PackageInstaller::InProgress);
    working->finish();
    QCOMPARE(other.status(), PackageInstaller::Succeeded);
    other.addChild(nullptr);
    QVERIFY(other.isFinished());
}

void PackageInstallerTest::everyListenerSeesASettledTree()
{
    TestInstaller root("root");
    TestInstaller *middle = root.add("middle");
    TestInstaller *leaf = middle->add("leaf");
    QStringList log;
    for (TestInstaller *installer : {leaf, middle, &root}) {
        connect(installer, &PackageInstaller::statusChanged, this, [&log, installer] {
            log << installer->objectName() + QString::number(installer->status());
        });
    }
    root.finish();
    middle->finish();
    QCOMPARE(log, QStringList());
    leaf->finish();
    QCOMPARE(log, (QStringList{"leaf1", "middle1", "root1"}));
}

void PackageInstallerTest::treeMayBeDestroyedByItsListener_data()
{
    QTest::addColumn<int>("listener");
    QTest::newRow("at the leaf") << 0;
    QTest::newRow("in the middle") << 1;
    QTest::newRow("at the root") << 2;
}

void PackageInstallerTest::treeMayBeDestroyedByItsListener()
{
    QFETCH(int, listener);
    auto root = std::make_unique<TestInstaller>("root");
    TestInstaller *middle = root->add("middle");
    QPointer<TestInstaller> leaf = middle->add("leaf");
    PackageInstaller *emitters[] = {leaf, middle, root.get()};
    connect(emitters[listener], &PackageInstaller::statusChanged, this, [&root] { root.reset(); });
    root->finish();
    middle->finish();
    leaf->finish();
    QVERIFY(leaf.isNull());
    QVERIFY(!root);
}

void PackageInstallerTest::childMayBeDestroyedAlone()
{
    TestInstaller root;
    TestInstaller *child = root.add("child");
    root.finish();
    delete child;
    QVERIFY(root.isFinished());
    QCOMPARE(messages(root), QStringList());
}

void PackageInstallerTest::longChainDoesNotExhaustTheStack()
{
    const int length = 50000;
    auto root = std::make_unique<TestInstaller>("root");
    TestInstaller *last = root.get();
    QVector<TestInstaller *> all{last};
    for (int i = 1; i < length; ++i) {
        last = last->add(QString());
        all << last;
    }
    QPointer<TestInstaller> end(last);
    QSignalSpy spy(root.get(), &PackageInstaller::statusChanged);
    for (TestInstaller *installer : qAsConst(all)) {
        QVERIFY(!installer->isFinished());
        if (installer == last)
            installer->addError(1, "deep");
        installer->finish();
    }
    QCOMPARE(spy.count(), 1);
    QCOMPARE(root->status(), PackageInstaller::Failed);
    QVERIFY(root->isFinished());
    QCOMPARE(messages(*root), QStringList{"deep"});
    root.reset();
    QVERIFY(end.isNull());
}

void PackageInstallerTest::wideTreeEndsOnce()
{
    TestInstaller root;
    QVector<TestInstaller *> children;
    for (int i = 0; i < 4096; ++i)
        children << root.add(QString());
    QSignalSpy spy(&root, &PackageInstaller::statusChanged);
    root.finish();
    for (TestInstaller *child : qAsConst(children))
        child->finish();
    QCOMPARE(root.status(), PackageInstaller::Succeeded);
    QCOMPARE(spy.count(), 1);
}

QTEST_GUILESS_MAIN(PackageInstallerTest)
#include "tst_packageinstaller.moc"
