// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/couchdbpackageinstaller.h"
#include "install/filestore.h"
#include "install/installlocationroot.h"
#include "support/nginxserver.h"
#include "support/processinfo.h"
#include "support/scopeddatalocation.h"

#include <QNetworkAccessManager>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

// Freed memory that the sanitizer holds back would hide what the download needs itself.
extern "C" Q_DECL_EXPORT const char *__asan_default_options()
{
    return "quarantine_size_mb=1";
}

namespace {

constexpr qint64 mebibyte = 1024 * 1024;
constexpr qint64 fileSize = 2048 * mebibyte;

} // namespace

/// A file larger than memory needs to be.
class DownloadLargeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void twoGibibytesInFlatMemory();
};

void DownloadLargeTest::twoGibibytesInFlatMemory()
{
    if (!NginxServer::isInstalled() || peakMemory() == 0)
        QSKIP("nginx and a system that tells how much memory a process had are needed");
    NginxServer server;
    QFile file(server.root() + "/large");
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(fileSize) && file.seek(fileSize - 3) && file.write("end") == 3);
    file.close();

    ScopedDataLocation data;
    QNetworkAccessManager manager;
    const auto store = FileStore::instance();
    const InstallLocation location = InstallLocationRoot::createLocation();
    server.addFile("small", "small");
    const QByteArray smallDigest = QCryptographicHash::hash("small", QCryptographicHash::Md5);
    // What md5sum says of the large file.
    const QByteArray digest = QByteArray::fromHex("a8e44bedd8cd82c799e04b311567a2b0");

    const auto install = [&](const QString &name, const QByteArray &md5) {
        const QJsonObject stub{{"digest", QString("md5-" + md5.toBase64())}};
        CouchDBPackageInstaller installer(
            server.url("/"), &manager, {{"_attachments", QJsonObject{{name, stub}}}}, store,
            location);
        return QTest::qWaitFor([&] { return installer.isFinished(); }, 600000)
               && installer.errors().isEmpty();
    };
    QVERIFY(install("small", smallDigest)); // for what the first request of a process loads
    const qint64 before = peakMemory();
    QVERIFY(install("large", digest));
    const qint64 used = peakMemory() - before;
    QCOMPARE(QFileInfo(location.pathToFile("large")).size(), fileSize);
    QVERIFY2(used < 16 * mebibyte, QByteArray::number(used));
}

QTEST_GUILESS_MAIN(DownloadLargeTest)

#include "tst_downloadlarge.moc"
