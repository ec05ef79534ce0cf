// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestore.h"
#include "support/filesizelimit.h"
#include "support/logrecorder.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

QString digestOf(
    const QByteArray &content, QCryptographicHash::Algorithm algorithm = QCryptographicHash::Sha224)
{
    return QString::fromLatin1(QCryptographicHash::hash(content, algorithm).toHex());
}

} // namespace

/// Content on its way into the store, and what stands there afterwards.
class FileStoreTest : public QObject
{
    Q_OBJECT

private:
    QStringList filesInStore() const { return filesBelow(m_data.filePath("packages/files")); }
    FileStoreTarget *target(const QByteArray &content)
    {
        return m_store->createTarget(digestOf(content), QCryptographicHash::Sha224);
    }
    /// What stands in the store under the name of \a content.
    QByteArray stored(const QByteArray &content) const
    {
        return readFile(m_store->filePath(digestOf(content)));
    }

    ScopedDataLocation m_data;
    QSharedPointer<FileStore> m_store;

private Q_SLOTS:
    void init();
    void cleanup();
    void digestsAreHexadecimal();
    void layOut();
    void oneStoreForTheProcess();
    void lastHolderOnAnotherThread();
    void committedFileIsThere_data();
    void committedFileIsThere();
    void droppedTargetLeavesNothing();
    void wrongContentStaysInTheStore();
    void strictStoreHoldsWhatItsNamesSay();
    void seekingLeavesTheVerdictToTheDisk();
    void resetKeepsTheLag();
    void twoTargetsForOneDigest();
    void targetsAreForWritingOnly();
    void obstacleMakesNoTarget();
    void obstacleFailsTheCommit();
    void fullDisk();
};

void FileStoreTest::init()
{
    m_store = FileStore::instance();
}

void FileStoreTest::cleanup()
{
    setStorePolicy(StorePolicy::Lenient);
    m_store.reset();
    for (const QString &file : filesInStore())
        QVERIFY(QFile::remove(file));
}

void FileStoreTest::digestsAreHexadecimal()
{
    const QPair<QString, bool> digests[] = {
        {"", false},
        {QString(7, '0'), false},
        {QString(8, '0'), true},
        {QString(128, 'f'), true},
        {QString(129, 'f'), false},
        {"0123456789abcdefABCDEF", true},
        {"0123456g", false},
        {"../../../etc/hostname", false},
        {"01/34567", false},
        {QString("0123456") + QChar(0), false},
        {QString(8, QChar(0x0663)), false}, // digits of another script
    };
    for (const auto &[digest, isValid] : digests) {
        QVERIFY2(FileStore::isValidDigest(digest) == isValid, qPrintable(digest));
        QCOMPARE(m_store->filePath(digest).isEmpty(), !isValid);
        QVERIFY(!m_store->contains(digest));
        if (!isValid)
            QVERIFY(!m_store->createTarget(digest, QCryptographicHash::Md5));
    }
}

void FileStoreTest::layOut()
{
    const QDir files(m_data.filePath("packages/files"));
    const QStringList directories =
        files.entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    QCOMPARE(directories.size(), 256);
    QCOMPARE(directories.first(), QString("00"));
    QCOMPARE(directories.at(0xab), QString("ab"));
    QCOMPARE(m_store->filePath("ABCDEF0123"), files.filePath("ab/cdef0123"));
}

void FileStoreTest::oneStoreForTheProcess()
{
    QWeakPointer<FileStore> weak = m_store;
    QCOMPARE(FileStore::instance(), m_store);
    m_store.reset();
    QVERIFY(!weak);
    m_store = FileStore::instance(); // its directories are there already
    QVERIFY(m_store);
}

void FileStoreTest::lastHolderOnAnotherThread()
{
    QPointer<FileStore> store = m_store.data();
    target("dropped together with the store");
    auto holder = std::make_unique<QSharedPointer<FileStore>>(std::move(m_store));
    std::unique_ptr<QThread> thread(QThread::create([&] { holder.reset(); }));
    thread->start();
    QVERIFY(thread->wait());
    QTRY_VERIFY(!store);
    QCOMPARE(filesInStore(), QStringList());
}

void FileStoreTest::committedFileIsThere_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("piece");
    QTest::newRow("empty") << 0 << 1;
    QTest::newRow("byte by byte") << 1000 << 1;
    QTest::newRow("a block") << 65536 << 65536;
    QTest::newRow("a byte more than a block") << 65537 << 65537;
    QTest::newRow("many blocks in odd pieces") << 1000000 << 65535;
    QTest::newRow("many blocks at once") << 1000000 << 1000000;
}

void FileStoreTest::committedFileIsThere()
{
    QFETCH(int, size);
    QFETCH(int, piece);
    const QByteArray content = numberedContent(1, size);
    for (const auto algorithm : {QCryptographicHash::Sha224, QCryptographicHash::Md5}) {
        for (const bool isPrepared : {false, true}) {
            const QString digest = digestOf(content, algorithm);
            std::unique_ptr<FileStoreTarget> target(
                m_store->createTarget(isPrepared ? digest.toUpper() : digest, algorithm));
            QVERIFY(target);
            for (int i = 0; i < size; i += piece)
                QCOMPARE(target->write(content.mid(i, piece)), qint64(qMin(piece, size - i)));
            QCOMPARE(target->pos(), qint64(size));
            if (isPrepared)
                target->prepareCommit();
            QVERIFY(!m_store->contains(digest));
            QCOMPARE(target->commit(), FileStoreTarget::CommitOk);
            QVERIFY(m_store->contains(digest));
            QVERIFY(readFile(m_store->filePath(digest)) == content);
            QCOMPARE(filesInStore().size(), 1);
            QVERIFY(QFile::remove(filesInStore().constFirst()));
        }
    }
}

void FileStoreTest::droppedTargetLeavesNothing()
{
    std::unique_ptr<FileStoreTarget> dropped(target("content"));
    dropped->write("content");
    dropped.reset();
    QCOMPARE(filesInStore(), QStringList());
}

void FileStoreTest::wrongContentStaysInTheStore()
{
    for (const QByteArray &written :
         {QByteArray(), QByteArray("conten"), QByteArray("content."), QByteArray("contenu"),
          numberedContent(1, 300000)}) {
        std::unique_ptr<FileStoreTarget> wrong(target("content"));
        wrong->write(written);
        QCOMPARE(wrong->commit(), FileStoreTarget::CommitHashMismatch);
        QVERIFY(m_store->contains(digestOf("content")));
        QCOMPARE(stored("content"), written);
    }
}

void FileStoreTest::strictStoreHoldsWhatItsNamesSay()
{
    setStorePolicy(StorePolicy::Strict);
    QVERIFY(!m_store->createTarget(digestOf("content"), QCryptographicHash::Md5));
    for (const char *wrong : {"", "conten", "content.", "contenu", "contentcontent"}) {
        std::unique_ptr<FileStoreTarget> refused(target("content"));
        refused->write(wrong);
        QCOMPARE(refused->commit(), FileStoreTarget::CommitHashMismatch);
        QCOMPARE(filesInStore(), QStringList());
    }
    // By the running digest the first is right and the second wrong.
    std::unique_ptr<FileStoreTarget> blind(target("abcabc"));
    blind->write("abc");
    QVERIFY(blind->seek(0));
    blind->write("abc");
    QCOMPARE(blind->commit(), FileStoreTarget::CommitHashMismatch);
    std::unique_ptr<FileStoreTarget> rewritten(target("content"));
    rewritten->write("xontent");
    QVERIFY(rewritten->seek(0));
    rewritten->write("c");
    QCOMPARE(rewritten->commit(), FileStoreTarget::CommitOk);
    // Another process may have been faster.
    std::unique_ptr<FileStoreTarget> again(target("content"));
    again->write("content");
    QCOMPARE(again->commit(), FileStoreTarget::CommitOk);
    QCOMPARE(stored("content"), QByteArray("content"));
    QCOMPARE(filesInStore().size(), 1);
    const auto changers =
        QFile::WriteOwner | QFile::WriteUser | QFile::WriteGroup | QFile::WriteOther;
    QVERIFY(!(QFileInfo(filesInStore().first()).permissions() & (changers & ~QFile::WriteUser)));
}

void FileStoreTest::seekingLeavesTheVerdictToTheDisk()
{
    std::unique_ptr<FileStoreTarget> good(target("content"));
    good->write("xontent");
    QVERIFY(good->seek(0));
    good->write("c");
    QCOMPARE(good->size(), qint64(7));
    QCOMPARE(good->commit(), FileStoreTarget::CommitOk);

    // The digest of what was written is right, and the file isn't: nobody reads it back.
    std::unique_ptr<FileStoreTarget> blind(target("abcabc"));
    blind->write("abc");
    QVERIFY(blind->seek(0));
    blind->write("abc");
    QCOMPARE(blind->commit(), FileStoreTarget::CommitOk);
    QCOMPARE(stored("abcabc"), QByteArray("abc"));
}

void FileStoreTest::resetKeepsTheLag()
{
    // What the lag holds is hashed ahead of the new data, so this is right by the digest alone.
    std::unique_ptr<FileStoreTarget> lagging(target("firstsecond"));
    lagging->write("first");
    QVERIFY(lagging->reset());
    QCOMPARE(lagging->pos(), qint64(0));
    lagging->write("second");
    QCOMPARE(lagging->commit(), FileStoreTarget::CommitOk);
    QCOMPARE(stored("firstsecond"), QByteArray("second"));

    std::unique_ptr<FileStoreTarget> rewritten(target("second"));
    rewritten->write("first");
    QVERIFY(rewritten->reset());
    rewritten->write("second");
    QCOMPARE(rewritten->commit(), FileStoreTarget::CommitOk); // by the disk

    // A whole block has left the lag and is forgotten, the byte behind it isn't.
    const QByteArray block(65536, 'x');
    std::unique_ptr<FileStoreTarget> longer(target("yz"));
    longer->write(block + "y");
    QVERIFY(longer->reset());
    longer->write("z");
    QCOMPARE(longer->commit(), FileStoreTarget::CommitOk);
    QCOMPARE(stored("yz"), "z" + block.mid(1) + "y");
}

void FileStoreTest::twoTargetsForOneDigest()
{
    std::unique_ptr<FileStoreTarget> first(target("content"));
    std::unique_ptr<FileStoreTarget> second(target("content"));
    first->write("content");
    second->write("cont");
    QCOMPARE(first->commit(), FileStoreTarget::CommitOk);
    second->write("ent");
    QCOMPARE(second->commit(), FileStoreTarget::CommitOk);
    QCOMPARE(stored("content"), QByteArray("content"));
    QCOMPARE(filesInStore().size(), 1);
}

void FileStoreTest::targetsAreForWritingOnly()
{
    const QString path = m_store->filePath(digestOf("content"));
    FileStoreTarget closed(
        digestOf("content"), QCryptographicHash::Sha224, path, storePolicy(), nullptr);
    for (const QIODevice::OpenMode mode :
         {QIODevice::ReadOnly, QIODevice::ReadWrite, QIODevice::Text})
        QVERIFY(!closed.open(mode));
    QVERIFY(closed.open(QIODevice::WriteOnly));
}

void FileStoreTest::obstacleMakesNoTarget()
{
    const QString path = m_store->filePath(digestOf("content"));
    const QString directory = QFileInfo(path).path();
    QVERIFY(QDir().rmdir(directory));
    writeFile(directory, "in the way");
    LogRecorder log("norvak.package.filestore");
    QVERIFY(!target("content"));
    const QString line = "Failed to open package storage file \"" + path + "\" 5 \"";
    QCOMPARE(log.lines("critical").size(), 1);
    QVERIFY2(log.lines("critical").first().startsWith(line), qPrintable(log.lines().first()));
    QTRY_COMPARE(m_store->children().size(), 0);
}

void FileStoreTest::obstacleFailsTheCommit()
{
    const QString path = m_store->filePath(digestOf("content"));
    for (const char *written : {"content", "other content"}) {
        std::unique_ptr<FileStoreTarget> blocked(target("content"));
        QVERIFY(blocked);
        blocked->write(written);
        writeFile(path + "/in the way", "");
        QCOMPARE(blocked->commit(), FileStoreTarget::CommitFailed);
        QVERIFY(QDir(path).removeRecursively());
        QCOMPARE(filesInStore(), QStringList());
    }
}

void FileStoreTest::fullDisk()
{
    for (const int size : {5000, 500000}) { // seen when the file is closed, and in a write
        const QByteArray content = numberedContent(1, size);
        std::unique_ptr<FileStoreTarget> full(target(content));
        {
            FileSizeLimit limit(rlim_t(size / 5));
            for (int i = 0; i < size; i += 65536)
                full->write(content.mid(i, 65536));
            QCOMPARE(full->commit(), FileStoreTarget::CommitFailed);
        }
        QCOMPARE(filesInStore(), QStringList());
        std::unique_ptr<FileStoreTarget> again(target(content));
        again->write(content);
        QCOMPARE(again->commit(), FileStoreTarget::CommitOk);
        QVERIFY(QFile::remove(m_store->filePath(digestOf(content))));
    }
}

QTEST_GUILESS_MAIN(FileStoreTest)

#include "tst_filestore.moc"
