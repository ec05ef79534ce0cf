// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/couchdbpackageinstaller.h"
#include "install/filestore.h"
#include "install/installlocationroot.h"
#include "support/httptestserver.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QNetworkAccessManager>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

QByteArray md5(const QByteArray &content)
{
    return QCryptographicHash::hash(content, QCryptographicHash::Md5);
}

QJsonObject stub(const QByteArray &content)
{
    return {{"digest", "md5-" + QString(md5(content).toBase64())}, {"stub", true}};
}

} // namespace

/// What installing a document's attachments adds to the course of all network installers.
class CouchDBPackageInstallerTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<CouchDBPackageInstaller> install(const QJsonObject &attachments)
    {
        return std::make_unique<CouchDBPackageInstaller>(
            documentUrl(), &m_manager, QJsonObject{{"_attachments", attachments}}, m_store,
            m_location);
    }
    QUrl documentUrl() const
    {
        QUrl url = m_server->url("/db/pkg/");
        url.setUserInfo("user:secret"); // which no message shows
        return url;
    }
    static QStringList errorsOf(const PackageInstaller &installer)
    {
        QStringList result;
        for (const InstallError &error : installer.errors())
            result.append(QString("%1 %2").arg(error.code).arg(error.message));
        return result;
    }
    QList<QByteArray> requestedTargets() const
    {
        QList<QByteArray> targets;
        for (const HttpTestRequest &request : m_server->requests())
            targets.append(request.target);
        std::sort(targets.begin(), targets.end());
        return targets;
    }

    ScopedDataLocation m_data;
    QNetworkAccessManager m_manager;
    std::unique_ptr<HttpTestServer> m_server;
    QSharedPointer<FileStore> m_store;
    InstallLocation m_location;

private Q_SLOTS:
    void init();
    void attachmentsBecomeFiles();
    void oneContentUnderTwoNames();
    void errorsHaveTheirOwnCodes();
    void digestsOfAnyForm();
    void namesThatAreUrls();
    void managerDiesOnTheWay();
};

void CouchDBPackageInstallerTest::init()
{
    m_server = std::make_unique<HttpTestServer>([](const HttpTestRequest &request) {
        const QByteArray name = request.target.mid(request.target.lastIndexOf('/') + 1);
        return HttpTestAnswer::ok("content of " + QByteArray::fromPercentEncoding(name));
    });
    m_store = FileStore::instance();
    m_location = InstallLocationRoot::createLocation().subLocation("type/id");
    for (const QString &file : filesBelow(m_data.filePath("packages/files")))
        QVERIFY(QFile::remove(file));
}

void CouchDBPackageInstallerTest::attachmentsBecomeFiles()
{
    const QJsonObject attachments{
        {"a", stub("content of a")},
        {"b c", stub("content of b c")},
        {QString::fromUtf8("grün"), stub("content of grün")}};
    auto installer = install(attachments);
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
    QCOMPARE(
        requestedTargets(), (QList<QByteArray>{"/db/pkg/a", "/db/pkg/b%20c", "/db/pkg/gr%C3%BCn"}));
    QCOMPARE(readFile(m_location.pathToFile("b c")), QByteArray("content of b c"));
    const QString hex = md5("content of a").toHex();
    QCOMPARE(
        readFile(m_data.filePath("packages/files/" + hex.left(2) + "/" + hex.mid(2))),
        QByteArray("content of a"));

    m_location = InstallLocationRoot::createLocation();
    installer = install(attachments);
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
    QCOMPARE(m_server->requestCount(), 3); // all were in the store
    QVERIFY(m_location.contains("a"));
}

void CouchDBPackageInstallerTest::oneContentUnderTwoNames()
{
    m_server->setHandler([](const HttpTestRequest &) { return HttpTestAnswer::ok("same"); });
    const auto installer = install({{"b", stub("same")}, {"a", stub("same")}});
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
    QCOMPARE(requestedTargets(), (QList<QByteArray>{"/db/pkg/a", "/db/pkg/b"}));
    QVERIFY(!m_location.contains("a"));
    QCOMPARE(readFile(m_location.pathToFile("b")), QByteArray("same"));
}

void CouchDBPackageInstallerTest::errorsHaveTheirOwnCodes()
{
    m_server->setHandler([](const HttpTestRequest &request) {
        return request.target.endsWith("gone") ? HttpTestAnswer::of(404)
                                               : HttpTestAnswer::ok("changed");
    });
    const QString hex = md5("old").toHex();
    const QString url = m_server->url("/db/pkg/").toString();
    auto installer = install({{"gone", stub("old")}});
    QTRY_COMPARE(installer->status(), PackageInstaller::Failed);
    QCOMPARE(
        errorsOf(*installer), (QStringList{
                                  "1 Download of " + url + "gone failed with code 404",
                                  "3 Failed to install file gone (" + hex + ")"}));

    installer = install({{"changed", stub("old")}});
    QTRY_COMPARE(installer->status(), PackageInstaller::Failed);
    QCOMPARE(
        errorsOf(*installer),
        QStringList("2 Commit of file " + hex + " (" + url + "changed) failed (code 1)"));
}

void CouchDBPackageInstallerTest::digestsOfAnyForm()
{
    const auto digest = [](const QJsonValue &value) { return QJsonObject{{"digest", value}}; };
    for (const QJsonValue &attachment : QJsonArray{
             "text", QJsonObject(), digest(""), digest(5), digest("md5-../../.."),
             digest("md5-" + QString(400, 'A')),
             // It would stand in the place of a file of a package server.
             digest("md5-" + QString(QByteArray(28, 'x').toBase64()))}) {
        const auto installer = install({{"a", attachment}});
        QTRY_COMPARE(installer->status(), PackageInstaller::Failed);
        QCOMPARE(installer->errors().size(), 2);
        QCOMPARE(m_server->requestCount(), 0);
    }
    // The name of the algorithm doesn't count.
    const auto installer =
        install({{"a", digest("abc-" + QString(md5("content of a").toBase64()))}});
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
}

void CouchDBPackageInstallerTest::namesThatAreUrls()
{
    const QPair<QString, QByteArray> names[] = {
        {"sub/a", "/db/pkg/sub/a"},
        {"../../../a", "/a"},
        {"file:///etc/hostname", {}},
        {"x:a", {}},
    };
    for (const auto &[name, target] : names) {
        init();
        const auto installer = install({{name, stub("content of a")}});
        QTRY_VERIFY(installer->isFinished());
        QCOMPARE(requestedTargets().value(0), target);
        QCOMPARE(installer->errors().last().code, int(CouchDBPackageInstaller::InstallFailed));
        const QDir directory = m_location.directory(false);
        QCOMPARE(directory.entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }
}

void CouchDBPackageInstallerTest::managerDiesOnTheWay()
{
    m_server->setHandler([](const HttpTestRequest &) { return HttpTestAnswer::silence(); });
    const QJsonObject document{{"_attachments", QJsonObject{{"a", stub("a")}}}};
    const QUrl url = m_server->url("/db/pkg/");
    auto manager = std::make_unique<QNetworkAccessManager>();
    CouchDBPackageInstaller installer(url, manager.get(), document, m_store, m_location);
    QTRY_COMPARE(m_server->heldCount(), 1);
    manager.reset();
    QTRY_COMPARE(installer.status(), PackageInstaller::Failed);
    QCOMPARE(installer.errors().first().code, int(CouchDBPackageInstaller::DownloadFailed));

    CouchDBPackageInstaller none(url, nullptr, document, m_store, m_location);
    QTRY_COMPARE(none.status(), PackageInstaller::Failed);
}

QTEST_GUILESS_MAIN(CouchDBPackageInstallerTest)

#include "tst_couchdbpackageinstaller.moc"
