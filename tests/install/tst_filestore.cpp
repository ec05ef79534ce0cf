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
    QStringList filesInStore() const;
    FileStoreTarget *target(const QByteArray &content)
    {
        return m_store->createTarget(digestOf(content), QCryptographicHash::Sha224);
    }

    ScopedDataLocation m_data;
    QSharedPointer<FileStore> m_store;

private Q_SLOTS:
    void init();
    void cleanup();
    void digestsAreHexadecimal_data();
    void digestsAreHexadecimal();
    void layOut();
    void oneStoreForTheProcess();
    void lastHolderOnAnotherThread();
    void committedFileIsThere_data();
    void committedFileIsThere();
    void upperCaseNamesTheSameFile();
    void droppedTargetLeavesNothing();
    void wrongContentStaysInTheStore_data();
    void wrongContentStaysInTheStore();
    void seekingLeavesTheVerdictToTheDisk();
    void resetKeepsTheLag();
    void twoTargetsForOneDigest();
    void targetsAreForWritingOnly();
    void invalidDigestHasNoTarget();
    void obstacleMakesNoTarget();
    void obstacleFailsTheCommit();
    void fullDisk_data();
    void fullDisk();
};

QStringList FileStoreTest::filesInStore() const
{
    QStringList files;
    QDirIterator it(
        m_data.filePath("packages"), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    return files;
}

void FileStoreTest::init()
{
    m_store = FileStore::instance();
}

void FileStoreTest::cleanup()
{
    m_store.reset();
    for (const QString &file : filesInStore())
        QVERIFY(QFile::remove(file));
}

void FileStoreTest::digestsAreHexadecimal_data()
{
    QTest::addColumn<QString>("digest");
    QTest::addColumn<bool>("valid");
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("7 digits") << QString(7, '0') << false;
    QTest::newRow("8 digits") << QString(8, '0') << true;
    QTest::newRow("128 digits") << QString(128, 'f') << true;
    QTest::newRow("129 digits") << QString(129, 'f') << false;
    QTest::newRow("both cases") << "0123456789abcdefABCDEF" << true;
    QTest::newRow("g") << "0123456g" << false;
    QTest::newRow("G") << "G1234567" << false;
    QTest::newRow("way out") << "../../../etc/hostname" << false;
    QTest::newRow("separator") << "01/34567" << false;
    QTest::newRow("dot") << ".1234567" << false;
    QTest::newRow("NUL") << QString("0123456") + QChar(0) << false;
    QTest::newRow("digits of another script") << QString(8, QChar(0x0663)) << false;
}

void FileStoreTest::digestsAreHexadecimal()
{
    QFETCH(QString, digest);
    QFETCH(bool, valid);
    QCOMPARE(FileStore::isValidDigest(digest), valid);
    QCOMPARE(m_store->filePath(digest).isEmpty(), !valid);
    QVERIFY(!m_store->contains(digest));
}

void FileStoreTest::layOut()
{
    const QDir files(m_data.filePath("packages/files"));
    const QStringList directories =
        files.entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    QCOMPARE(directories.size(), 256);
    QCOMPARE(directories.first(), QString("00"));
    QCOMPARE(directories.at(0xab), QString("ab"));
    QCOMPARE(directories.last(), QString("ff"));
    QCOMPARE(m_store->filePath("ABCDEF0123"), files.filePath("ab/cdef0123"));
}

void FileStoreTest::oneStoreForTheProcess()
{
    QWeakPointer<FileStore> weak = m_store;
    QCOMPARE(FileStore::instance(), m_store);
    m_store.reset();
    QVERIFY(!weak);
    // Directories that are there already are no trouble.
    m_store = FileStore::instance();
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
    QTest::addColumn<int>("algorithm");
    QTest::addColumn<bool>("isPrepared");
    const auto add = [](const char *name, int size, int piece,
                        QCryptographicHash::Algorithm algorithm) {
        QTest::newRow(name) << size << piece << int(algorithm) << false;
        QTest::addRow("%s, prepared", name) << size << piece << int(algorithm) << true;
    };
    add("empty", 0, 1, QCryptographicHash::Sha224);
    add("byte by byte", 1000, 1, QCryptographicHash::Sha224);
    add("MD5", 1000, 100, QCryptographicHash::Md5);
    add("a block", 65536, 65536, QCryptographicHash::Sha224);
    add("a byte more than a block", 65537, 65537, QCryptographicHash::Sha224);
    add("many blocks in pieces", 1000000, 4096, QCryptographicHash::Sha224);
    add("many blocks in odd pieces", 1000000, 65535, QCryptographicHash::Sha224);
    add("many blocks at once", 1000000, 1000000, QCryptographicHash::Sha224);
}

void FileStoreTest::committedFileIsThere()
{
    QFETCH(int, size);
    QFETCH(int, piece);
    QFETCH(int, algorithm);
    QFETCH(bool, isPrepared);
    const QByteArray content = numberedContent(1, size);
    const QString digest = digestOf(content, QCryptographicHash::Algorithm(algorithm));
    std::unique_ptr<FileStoreTarget> target(
        m_store->createTarget(digest, QCryptographicHash::Algorithm(algorithm)));
    QVERIFY(target);
    QCOMPARE(target->parent(), m_store.data());
    for (int i = 0; i < size; i += piece)
        QCOMPARE(target->write(content.mid(i, piece)), qint64(content.mid(i, piece).size()));
    QCOMPARE(target->pos(), qint64(size));
    QVERIFY(!m_store->contains(digest));
    if (isPrepared)
        target->prepareCommit();
    QVERIFY(!m_store->contains(digest));
    QCOMPARE(target->commit(), FileStoreTarget::CommitOk);
    QVERIFY(m_store->contains(digest));
    QVERIFY(readFile(m_store->filePath(digest)) == content);
    QCOMPARE(filesInStore().size(), 1);
}

void FileStoreTest::upperCaseNamesTheSameFile()
{
    const QString digest = digestOf("content");
    std::unique_ptr<FileStoreTarget> target(
        m_store->createTarget(digest.toUpper(), QCryptographicHash::Sha224));
    target->write("content");
    QCOMPARE(target->commit(), FileStoreTarget::CommitOk);
    QVERIFY(m_store->contains(digest));
    QVERIFY(m_store->contains(digest.toUpper()));
}

void FileStoreTest::droppedTargetLeavesNothing()
{
    FileStoreTarget *dropped = target("content");
    dropped->write("content");
    delete dropped;
    QCOMPARE(filesInStore(), QStringList());
}

void FileStoreTest::wrongContentStaysInTheStore_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("shorter") << QByteArray("conten");
    QTest::newRow("longer") << QByteArray("content.");
    QTest::newRow("another bit") << QByteArray("contenu");
    QTest::newRow("much longer") << numberedContent(1, 300000);
}

void FileStoreTest::wrongContentStaysInTheStore()
{
    QFETCH(QByteArray, written);
    std::unique_ptr<FileStoreTarget> wrong(target("content"));
    wrong->write(written);
    QCOMPARE(wrong->commit(), FileStoreTarget::CommitHashMismatch);
    QVERIFY(m_store->contains(digestOf("content")));
    QCOMPARE(readFile(m_store->filePath(digestOf("content"))), written);
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
    QCOMPARE(readFile(m_store->filePath(digestOf("abcabc"))), QByteArray("abc"));
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
    QCOMPARE(readFile(m_store->filePath(digestOf("firstsecond"))), QByteArray("second"));

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
    QCOMPARE(readFile(m_store->filePath(digestOf("yz"))), "z" + block.mid(1) + "y");
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
    QCOMPARE(readFile(m_store->filePath(digestOf("content"))), QByteArray("content"));
    QCOMPARE(filesInStore().size(), 1);
}

void FileStoreTest::targetsAreForWritingOnly()
{
    const QString path = m_store->filePath(digestOf("content"));
    FileStoreTarget closed(digestOf("content"), QCryptographicHash::Sha224, path, nullptr);
    QVERIFY(!closed.open(QIODevice::ReadOnly));
    QVERIFY(!closed.open(QIODevice::ReadWrite));
    QVERIFY(!closed.open(QIODevice::Text));
    QVERIFY(!closed.isOpen());
    QVERIFY(closed.open(QIODevice::WriteOnly));
    QVERIFY(!closed.isSequential());
    QTest::ignoreMessage(
        QtWarningMsg, "QIODevice::read (nk::pm::FileStoreTarget): WriteOnly device");
    char byte = 0;
    QCOMPARE(closed.read(&byte, 1), qint64(-1));
}

void FileStoreTest::invalidDigestHasNoTarget()
{
    QVERIFY(!m_store->createTarget("", QCryptographicHash::Md5));
    QVERIFY(!m_store->createTarget("../../escaped", QCryptographicHash::Md5));
    QCOMPARE(filesInStore(), QStringList());
}

void FileStoreTest::obstacleMakesNoTarget()
{
    const QString digest = digestOf("content");
    const QString directory = QFileInfo(m_store->filePath(digest)).path();
    QVERIFY(QDir().rmdir(directory));
    writeFile(directory, "in the way");
    LogRecorder log("norvak.package.filestore");
    QVERIFY(!m_store->createTarget(digest, QCryptographicHash::Sha224));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(
        log.lines().first().startsWith(
            QString("critical: Failed to open package storage file \"%1\" 5 \"")
                .arg(m_store->filePath(digest))),
        qPrintable(log.lines().first()));
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

void FileStoreTest::fullDisk_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("room");
    QTest::newRow("seen when the file is closed") << 5000 << 1000;
    QTest::newRow("seen in a write") << 500000 << 100000;
}

void FileStoreTest::fullDisk()
{
    QFETCH(int, size);
    QFETCH(int, room);
    const QByteArray content = numberedContent(1, size);
    {
        FileSizeLimit limit{rlim_t(room)};
        std::unique_ptr<FileStoreTarget> full(target(content));
        for (int i = 0; i < size; i += 65536)
            full->write(content.mid(i, 65536));
        QCOMPARE(full->commit(), FileStoreTarget::CommitFailed);
    }
    QVERIFY(!m_store->contains(digestOf(content)));
    QCOMPARE(filesInStore(), QStringList());
    std::unique_ptr<FileStoreTarget> again(target(content));
    again->write(content);
    QCOMPARE(again->commit(), FileStoreTarget::CommitOk);
}

QTEST_GUILESS_MAIN(FileStoreTest)

#include "tst_filestore.moc"
