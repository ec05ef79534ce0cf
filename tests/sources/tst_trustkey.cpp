// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/trustkey.h"

#include <norvakcrypto/ed25519.h>

#include <QFile>
#include <QtTest>

using namespace nk::crypto;

class tst_TrustKey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void developmentPairFits();
};

void tst_TrustKey::developmentPairFits()
{
    QVERIFY(ed25519::PublicKey::fromPEM(nk::pm::ledger::trustKeyPem()).isValid());
    QFile publicFile(NKPM_KEYS_DIR "/development-trust.pem");
    QFile privateFile(NKPM_KEYS_DIR "/development-trust-private.pem");
    QVERIFY(publicFile.open(QIODevice::ReadOnly) && privateFile.open(QIODevice::ReadOnly));
    const auto privateKey = ed25519::PrivateKey::fromPEM(privateFile.readAll());
    QCOMPARE(privateKey.publicKey().toPEM(), publicFile.readAll());
}

QTEST_APPLESS_MAIN(tst_TrustKey)
#include "tst_trustkey.moc"
