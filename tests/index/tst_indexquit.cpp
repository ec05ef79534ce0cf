// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QCoreApplication>
#include <QProcess>
#include <QtConcurrent>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

const QString quitDuring = "--quit-during";

/// Where an accessor goes on without end, so that only the end of the application ends the build.
class EndlessAccessor : public MemoryAccessor
{
public:
    EndlessAccessor(const QString &where, QSemaphore *reached)
        : MemoryAccessor(MemoryCatalogue(), QSharedPointer<MemoryLog>::create())
        , m_where(where)
        , m_reached(reached)
    {}

    int packageCount() const override { return countOf("packages"); }
    int keywordCount() const override { return countOf("keywords"); }
    int linkCount() const override { return countOf("links"); }
    PackageInfo packageInfo(int) const override { return note(PackageInfo()); }
    KeywordInfo keywordInfo(int) const override { return note(KeywordInfo()); }
    LinkInfo linkInfo(int) const override { return note(LinkInfo()); }

private:
    int countOf(const QString &what) const { return what == m_where ? INT_MAX : 0; }

    template<typename Info>
    Info note(Info info) const
    {
        m_reached->release();
        return info;
    }

    const QString m_where;
    QSemaphore *const m_reached;
};

class EndlessSource : public MemorySource
{
public:
    explicit EndlessSource(const QString &where)
        : m_where(where)
    {}
    std::unique_ptr<PackageAccessor> getAccessor() override
    {
        return std::make_unique<EndlessAccessor>(m_where, &m_reached);
    }
    void waitUntilReached() { m_reached.acquire(); }

private:
    const QString m_where;
    QSemaphore m_reached;
};

/// Leaves main() while a pool thread builds an index that never ends by itself.
int quit(int argc, char **argv, const QString &where)
{
    EndlessSource source(where);
    QCoreApplication application(argc, argv);
    auto index = QSharedPointer<PackageIndex>::create();
    index->addSource(&source);
    QtConcurrent::run([index] { index->build(); });
    source.waitUntilReached();
    return 17;
}

} // namespace

class TestIndexQuit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void processEndsDuringBuild_data();
    void processEndsDuringBuild();
};

void TestIndexQuit::processEndsDuringBuild_data()
{
    QTest::addColumn<QString>("where");
    for (const char *where : {"packages", "keywords", "links"})
        QTest::newRow(where) << where;
}

void TestIndexQuit::processEndsDuringBuild()
{
    QFETCH(QString, where);
    QTemporaryDir home;
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home.path());
    environment.remove("XDG_DATA_HOME");
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), {quitDuring, where});
    const bool ended = process.waitForFinished(120000);
    if (!ended)
        process.kill();
    QVERIFY(ended);
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 17);
    // A build that nobody will see makes no directory for itself.
    QCOMPARE(QDir(home.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList());
}

int main(int argc, char **argv)
{
    if (argc == 3 && argv[1] == quitDuring)
        return quit(argc, argv, argv[2]);
    QCoreApplication application(argc, argv);
    TestIndexQuit test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_indexquit.moc"
