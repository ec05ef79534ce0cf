// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "install/installlocationroot.h"
#include "install/packageinstaller.h"
#include "nkledgerprocess.h"
#include "publish/layout.h"
#include "publish/publish.h"
#include "sources/localpackageaccessor.h"
#include "sources/packageserveraccessor.h"
#include "support/scopeddatalocation.h"
#include "support/syntheticcatalogue.h"
#include "support/testfiles.h"

#include <norvakaccount/service.h>

#include <QDirIterator>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTest>

using namespace nk::pm;
using namespace nk::pm::publisher;
using namespace nk::pm::test;
using nk::crypto::ed25519::PrivateKey;

/// A catalogue looks the same to the index whether it is read as a directory or published and read
/// as a ledger.
class tst_RoundTrip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void readsTheSame_data();
    void readsTheSame();
    void installsTheSame();

private:
    QByteArray publish(const QString &catalogue, const QString &target) const;

    const PrivateKey m_trustKey = PrivateKey::generate();
    CatalogueTree m_goods;
    QTemporaryDir m_synthetic;
};

namespace {

QStringList packagesOf(const PackageAccessor &accessor)
{
    QStringList list;
    for (int i = 0; i < accessor.packageCount(); ++i) {
        const PackageInfo info = accessor.packageInfo(i);
        list.append(
            info.type + ' ' + info.id + ' '
            + QJsonDocument(accessor.manifest(i)).toJson(QJsonDocument::Compact));
    }
    list.sort();
    return list;
}

/// Texts in their order, which decides what is displayed.
QStringList keywordsOf(const PackageAccessor &accessor)
{
    QStringList list;
    for (int i = 0; i < accessor.keywordCount(); ++i) {
        const KeywordInfo info = accessor.keywordInfo(i);
        QString line = info.id + ' ' + QString::number(info.type);
        for (const KeywordString &string : info.strings)
            line += " [" + string.language + '|' + string.string + '|' + string.plural + ']';
        list.append(line);
    }
    list.sort();
    return list;
}

QStringList linksOf(const PackageAccessor &accessor)
{
    QStringList list;
    for (int i = 0; i < accessor.linkCount(); ++i) {
        const LinkInfo info = accessor.linkInfo(i);
        list.append(info.from + ' ' + QString::number(info.type) + ' ' + info.to);
    }
    list.sort();
    return list;
}

int indexOf(const PackageAccessor &accessor, const QString &id)
{
    int index = accessor.packageCount() - 1;
    while (index >= 0 && accessor.packageInfo(index).id != id)
        --index;
    return index;
}

/// What the installer of a package lays down.
QMap<QString, QByteArray> install(const PackageAccessor &accessor, const QString &id)
{
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation(id);
    const auto installer = accessor.createInstaller(indexOf(accessor, id), location);
    if (!QTest::qWaitFor(
            [&] { return installer->status() != PackageInstaller::InProgress; }, 60000))
        return {};
    QMap<QString, QByteArray> files;
    QDirIterator it(InstallLocation(location).directory(false).path(), QDir::Files);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(it.fileName(), readFile(path));
    }
    return files;
}

} // namespace

QByteArray tst_RoundTrip::publish(const QString &catalogue, const QString &target) const
{
    const PrivateKey key = PrivateKey::generate();
    const Issuer issuer{{}, key, IssuerRecord::issue(key.publicKey(), "Studio", {}, m_trustKey)};
    Progress progress;
    const PublishReport report =
        nk::pm::publisher::publish({catalogue, target, {issuer}, m_trustKey.publicKey()}, progress);
    for (const Problem &problem : report.problems.sorted()) {
        if (problem.severity == Problem::Error)
            qWarning("%s: %s", qPrintable(problem.file), qPrintable(problem.text));
    }
    return report.published ? readFile(Layout(target).ledgerFile()) : QByteArray();
}

void tst_RoundTrip::initTestCase()
{
    m_goods.fillWithGoods();
    QVERIFY(SyntheticCatalogue({300, 200, 1500}, 7).writeTo(m_synthetic.path()));
}

void tst_RoundTrip::readsTheSame_data()
{
    QTest::addColumn<QString>("catalogue");
    QTest::newRow("a shop's goods") << m_goods.path();
    QTest::newRow("the example catalogue") << NKPM_EXAMPLE_CATALOGUE;
    QTest::newRow("a made-up catalogue") << m_synthetic.path();
}

void tst_RoundTrip::readsTheSame()
{
    QFETCH(QString, catalogue);
    const ScopedDataLocation data;
    LocalPackageAccessor local(catalogue);
    local.load();
    QTemporaryDir target;
    PackageServerAccessor server(
        nullptr, publish(catalogue, target.path()), m_trustKey.publicKey());
    server.load();

    QVERIFY(server.packageCount() > 0);
    QCOMPARE(packagesOf(server), packagesOf(local));
    QCOMPARE(keywordsOf(server), keywordsOf(local));
    QCOMPARE(linksOf(server), linksOf(local));
}

void tst_RoundTrip::installsTheSame()
{
    const ScopedDataLocation data;
    LocalPackageAccessor local(m_goods.path());
    local.load();
    QTemporaryDir target;
    const QByteArray ledger = publish(m_goods.path(), target.path());
    const ServedPublication served(target.path());
    QNetworkAccessManager network;
    nk::account::Service service("roundtrip", served.url(), &network);
    service.enable();
    QTRY_COMPARE(service.status(), nk::account::Service::Available);
    PackageServerAccessor server(&service, ledger, m_trustKey.publicKey());
    server.load();

    for (const QString &id : {QString("stool"), QString("oak"), QString("loose")})
        QCOMPARE(install(server, id), install(local, id));
    QCOMPARE(install(server, "stool").size(), 2);
}

QTEST_GUILESS_MAIN(tst_RoundTrip)
#include "tst_roundtrip.moc"
