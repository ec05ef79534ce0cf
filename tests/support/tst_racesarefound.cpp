// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include <QCoreApplication>
#include <QtConcurrent>

// A race on purpose, with everything around it that the concurrent tests know to be in order. The
// test passes when ThreadSanitizer reports it: then the order that is told and the reports that are
// suppressed don't hide what goes wrong in our own code.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    int before = 1;
    int racy = 0;
    int after = 0;
    QFuture<int> job = QtConcurrent::run([&] {
        after = before;
        return ++racy;
    });
    ++racy;
    return job.result() + after;
}
