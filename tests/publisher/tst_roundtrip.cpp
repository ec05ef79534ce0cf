// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "accessorcontents.h"
#include "cataloguetree.h"
#include "nkledgerprocess.h"
#include "publish/layout.h"
#include "sources/localpackageaccessor.h"
#include "sources/packageserveraccessor.h"
#include "support/scopeddatalocation.h"
#include "support/syntheticcatalogue.h"
#include "support/testfiles.h"

#include <QTest>

using namespace nk::pm;
using namespace nk::pm::test;

/// A catalogue looks the same to the index whether it is read as a directory or published and read
/// as a ledger. That installs are the same too is shown by tst_tour.
class tst_RoundTrip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheSame_data();
    void readsTheSame();

private:
    CatalogueTree m_goods;
    QTemporaryDir m_synthetic;
};

void tst_RoundTrip::readsTheSame_data()
{
    m_goods.fillWithGoods();
    QVERIFY(SyntheticCatalogue({300, 200, 1500}, 7).writeTo(m_synthetic.path()));
    QTest::addColumn<QString>("catalogue");
    QTest::newRow("a shop's goods") << m_goods.path();
    QTest::newRow("the example catalogue") << NKPM_EXAMPLE_CATALOGUE;
    QTest::newRow("a made-up catalogue") << m_synthetic.path();
}

void tst_RoundTrip::readsTheSame()
{
    QFETCH(QString, catalogue);
    const ScopedDataLocation data;
    makeKeys(data.path());
    publishWithKeys(data.path(), catalogue);
    PackageServerAccessor server(
        nullptr, readFile(publisher::Layout(data.filePath("public")).ledgerFile()),
        nk::crypto::ed25519::PublicKey::fromPEM(readFile(data.filePath("trust.pem"))));
    LocalPackageAccessor local(catalogue);
    const QStringList contents = contentsOf(local);
    QVERIFY(local.packageCount() > 0);
    QCOMPARE(contentsOf(server), contents);
}

QTEST_GUILESS_MAIN(tst_RoundTrip)
#include "tst_roundtrip.moc"
