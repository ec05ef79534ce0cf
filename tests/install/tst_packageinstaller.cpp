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
    void finishedBeforeAnybodyListened();
    void treeStatus();
    void errorsComeInOrderOfTheTree();
    void lateChildCountsFromItsFirstChange();
    void everyListenerSeesASettledTree();
    void treeMayBeDestroyedByItsListener();
    void childMayBeDestroyedAlone();
    void longChainDoesNotExhaustTheStack();
    void wideTreeEndsOnce();
};

void PackageInstallerTest::finishedBeforeAnybodyListened()
{
    struct Hasty : PackageInstaller
    {
        Hasty()
            : PackageInstaller(InstallLocation())
        {
            addError(1, "no service");
            QCOMPARE(status(), PackageInstaller::InProgress);
            finish();
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
void PackageInstallerTest::treeStatus()
{
    const QString letters = "sf-";
    for (int i = 0; i < 27; ++i) {
        const QString ends = QString(letters.at(i / 9)) + letters.at(i / 3 % 3) + letters.at(i % 3);
        const PackageInstaller::Status status = ends == "sss"        ? PackageInstaller::Succeeded
                                                : ends.contains('-') ? PackageInstaller::InProgress
                                                                     : PackageInstaller::Failed;
        for (int start = 0; start < 3; ++start) { // whoever is the first to end
            TestInstaller root;
            TestInstaller *parts[] = {&root, root.add("one"), root.add("two")};
            QSignalSpy spy(&root, &PackageInstaller::statusChanged);
            for (const int part : {start, (start + 1) % 3, (start + 2) % 3}) {
                if (ends.at(part) == 's')
                    parts[part]->finish();
                else if (ends.at(part) == 'f')
                    parts[part]->fail("failed");
            }
            QVERIFY2(root.status() == status, qPrintable(ends));
            QCOMPARE(root.isFinished(), !ends.contains('-'));
            QCOMPARE(spy.count(), ends.contains('-') ? 0 : 1);
        }
    }
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
    TestInstaller other;
    other.finish();
    TestInstaller *ended = other.add("ended");
    ended->finish();
    TestInstaller *working = other.add("working");
    Q_EMIT ended->statusChanged();
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

void PackageInstallerTest::treeMayBeDestroyedByItsListener()
{
    for (int listener = 0; listener < 3; ++listener) { // at the leaf, in the middle, at the root
        auto root = std::make_unique<TestInstaller>("root");
        TestInstaller *middle = root->add("middle");
        QPointer<TestInstaller> leaf = middle->add("leaf");
        PackageInstaller *emitters[] = {leaf, middle, root.get()};
        connect(emitters[listener], &PackageInstaller::statusChanged, [&root] { root.reset(); });
        root->finish();
        middle->finish();
        leaf->finish();
        QVERIFY(leaf.isNull());
        QVERIFY(!root);
    }
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
    auto root = std::make_unique<TestInstaller>("root");
    QVector<TestInstaller *> all{root.get()};
    while (all.size() < 50000)
        all << all.last()->add(QString());
    const QPointer<TestInstaller> end(all.last());
    QSignalSpy spy(root.get(), &PackageInstaller::statusChanged);
    end->addError(1, "deep");
    for (TestInstaller *installer : qAsConst(all))
        installer->finish();
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
    QVector<TestInstaller *> all{&root};
    while (all.size() < 4096)
        all << root.add(QString());
    QSignalSpy spy(&root, &PackageInstaller::statusChanged);
    for (TestInstaller *installer : qAsConst(all))
        installer->finish();
    QCOMPARE(root.status(), PackageInstaller::Succeeded);
    QCOMPARE(spy.count(), 1);
}

QTEST_GUILESS_MAIN(PackageInstallerTest)
#include "tst_packageinstaller.moc"
