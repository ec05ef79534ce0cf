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
    void doublesUpToItsLimit();
    void startsAnewAfterSuccess();
};

void tst_PollBackoff::doublesUpToItsLimit()
{
    PollBackoff backoff;
    for (const auto delay : {5s, 10s, 20s, 40s, 80s, 160s, 320s, 320s, 320s})
        QCOMPARE(backoff.afterFailure().count(), delay.count());
    for (int i = 0; i < 100; ++i)
        backoff.afterFailure();
    QCOMPARE(backoff.afterFailure().count(), (320s).count());
}

void tst_PollBackoff::startsAnewAfterSuccess()
{
    PollBackoff backoff;
    QCOMPARE(backoff.afterSuccess().count(), (120s).count());
    for (int i = 0; i < 7; ++i)
        backoff.afterFailure();
    QCOMPARE(backoff.afterSuccess().count(), (120s).count());
    QCOMPARE(backoff.afterFailure().count(), (5s).count());
}

QTEST_APPLESS_MAIN(tst_PollBackoff)
#include "tst_pollbackoff.moc"
