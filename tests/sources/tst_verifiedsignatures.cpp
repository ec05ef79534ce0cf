// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/verifiedsignatures.h"

#include <QCryptographicHash>
#include <QtTest>

#include <thread>
#include <vector>

using namespace nk::pm;

namespace {

SignatureDigest digest(int number)
{
    SignatureDigest digest;
    const QByteArray bytes =
        QCryptographicHash::hash(QByteArray::number(number), QCryptographicHash::Sha3_256);
    std::copy(bytes.begin(), bytes.end(), digest.bytes.begin());
    return digest;
}

QVector<SignatureDigest> digests(int from, int to)
{
    QVector<SignatureDigest> list;
    for (int i = from; i < to; ++i)
        list.append(digest(i));
    return list;
}

} // namespace

class tst_VerifiedSignatures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void staysWithinItsCapacity();
    void snapshotsStayAsTheyAre();
    void manyThreads();
};

void tst_VerifiedSignatures::snapshotsStayAsTheyAre()
{
    VerifiedSignatures signatures;
    const auto nothing = signatures.snapshot();
    signatures.remember(digests(0, 3));
    const auto three = signatures.snapshot();
    signatures.remember(digests(2, 5));
    QCOMPARE(signatures.snapshot()->size(), 5);
    QVERIFY(signatures.snapshot()->contains(digest(4)));
    signatures.clear();
    QVERIFY(signatures.snapshot()->isEmpty());
    QVERIFY(nothing->isEmpty());
    QCOMPARE(three->size(), 3);
    QVERIFY(three->contains(digest(2)));
}

void tst_VerifiedSignatures::staysWithinItsCapacity()
{
    VerifiedSignatures signatures(10);
    signatures.remember(digests(0, 6));
    signatures.remember(digests(6, 12));
    QVERIFY(signatures.snapshot()->size() <= 10);
    QVERIFY(signatures.snapshot()->contains(digest(11)));
    signatures.remember(digests(100, 200));
    QCOMPARE(signatures.snapshot()->size(), 10);
}

void tst_VerifiedSignatures::manyThreads()
{
    VerifiedSignatures signatures;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([&signatures, number] {
            for (int start = number * 100; start < number * 100 + 100; start += 10) {
                signatures.remember(digests(start, start + 10));
                QVERIFY(signatures.snapshot()->contains(digest(start + 9)));
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(signatures.snapshot()->size(), 400);
}

QTEST_APPLESS_MAIN(tst_VerifiedSignatures)
#include "tst_verifiedsignatures.moc"
