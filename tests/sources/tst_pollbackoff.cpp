// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/pollbackoff.h"

#include <QtTest>

using nk::pm::PollBackoff;
using namespace std::chrono_literals;

class tst_PollBackoff : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void doublesUpToItsLimitAndStartsAnew();
};

void tst_PollBackoff::doublesUpToItsLimitAndStartsAnew()
{
    PollBackoff backoff;
    for (int round = 0; round < 2; ++round) {
        for (const auto delay : {5s, 10s, 20s, 40s, 80s, 160s, 320s, 320s})
            QCOMPARE(backoff.afterFailure().count(), delay.count());
        for (int i = 0; i < 100; ++i)
            QCOMPARE(backoff.afterFailure().count(), (320s).count());
        QCOMPARE(backoff.afterSuccess().count(), (120s).count());
    }
}

QTEST_APPLESS_MAIN(tst_PollBackoff)
#include "tst_pollbackoff.moc"
