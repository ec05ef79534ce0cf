// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// Requests per second of the file proxy beside those of nginx with one worker: the same files,
// asked for by wrk over persistent connections. The servers take turns, and the medians count,
// since other work on the machine disturbs single rounds.
//
//   bench_fileproxy [rounds [seconds a round]]

#include "support/directoryproxy.h"
#include "support/nginxserver.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTextStream>

#include <unistd.h>

#include <algorithm>
#include <cstdio>

using nk::pm::test::DirectoryProxy;
using nk::pm::test::NginxServer;

namespace {

constexpr int fileCount = 64; // different files, as a page of a catalogue shows

QByteArray randomBytes(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return char(generator.generate()); });
    return bytes;
}

/// A wrk script that asks for the files of the directory \a url in turn.
void writeScript(QTemporaryFile &file, const QUrl &url, const QString &prefix)
{
    if (!file.open())
        qFatal("Can't write %s", qPrintable(file.fileName()));
    QTextStream(&file) << "local n = 0\n"
                       << "request = function()\n"
                       << "  n = n % " << fileCount << " + 1\n"
                       << "  return wrk.format('GET', '" << url.path() << prefix << "-' .. n)\n"
                       << "end\n";
    file.close();
}

/// The processor time that a process has used, in seconds.
double processorTime(qint64 processId)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(processId));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    // Fields 14 and 15, counted behind the name in brackets, which is the second.
    const QByteArray stat = file.readAll();
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    return (fields.value(11).toDouble() + fields.value(12).toDouble()) / ::sysconf(_SC_CLK_TCK);
}

struct Round
{
    double rate; ///< requests per second
    double cost; ///< microseconds of the server's processor time for a request
};

/// One round of wrk, on this thread's event loop.
Round measure(qint64 processId, const QUrl &url, const QString &prefix, int seconds)
{
    const double before = processorTime(processId);
    QTemporaryFile script;
    writeScript(script, url, prefix);
    QProcess wrk;
    QEventLoop loop;
    QObject::connect(
        &wrk, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), &loop,
        &QEventLoop::quit);
    wrk.start(
        QStringLiteral("wrk"),
        {QStringLiteral("-t1"), QStringLiteral("-c16"), QStringLiteral("-d%1s").arg(seconds),
         QStringLiteral("-s"), script.fileName(), url.toString()});
    if (!wrk.waitForStarted())
        qFatal("wrk doesn't start");
    loop.exec();
    const QString output = QString::fromUtf8(wrk.readAllStandardOutput());
    const auto rate =
        QRegularExpression(QStringLiteral("Requests/sec:\\s+([0-9.]+)")).match(output);
    if (!rate.hasMatch() || output.contains(QStringLiteral("Non-2xx"))
        || output.contains(QStringLiteral("Socket errors")))
        qFatal("wrk failed:\n%s", qPrintable(output));
    const double count = QRegularExpression(QStringLiteral("(\\d+) requests in"))
                             .match(output)
                             .captured(1)
                             .toDouble();
    return {rate.captured(1).toDouble(), (processorTime(processId) - before) / count * 1e6};
}

double median(QVector<Round> rounds, double Round::*field)
{
    std::sort(rounds.begin(), rounds.end(), [field](const Round &left, const Round &right) {
        return left.*field < right.*field;
    });
    return rounds[rounds.size() / 2].*field;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    const int rounds = std::max(1, arguments.value(1, QStringLiteral("5")).toInt());
    const int seconds = std::max(1, arguments.value(2, QStringLiteral("2")).toInt());
    if (!NginxServer::isInstalled())
        qFatal("nginx and openssl are needed");

    NginxServer nginx;
    DirectoryProxy proxy(nginx.root());
    // By address, so that wrk is spared the look-up of a name here too.
    QUrl proxyUrl = proxy.url(QString());
    proxyUrl.setHost(QStringLiteral("127.0.0.1"));
    std::printf("                requests a second          microseconds of processor a request\n");
    std::printf("    file     nginx     proxy   ratio        nginx     proxy   ratio\n");
    for (const int size : {4 * 1024, 1024 * 1024}) {
        const QString prefix = QString::number(size);
        const QByteArray bytes = randomBytes(size);
        for (int i = 1; i <= fileCount; ++i)
            nginx.addFile(QStringLiteral("%1-%2").arg(prefix).arg(i), bytes.mid(i) + bytes.left(i));
        QVector<Round> nginxRounds, proxyRounds;
        for (int i = 0; i < rounds; ++i) {
            nginxRounds +=
                measure(nginx.processId(), nginx.url(QStringLiteral("/quiet/")), prefix, seconds);
            proxyRounds += measure(application.applicationPid(), proxyUrl, prefix, seconds);
        }
        std::printf("%4d KiB", size / 1024);
        for (const auto field : {&Round::rate, &Round::cost}) {
            const double theirs = median(nginxRounds, field);
            const double ours = median(proxyRounds, field);
            std::printf("%10.0f%10.0f%7.0f%%   ", theirs, ours, 100 * ours / theirs);
        }
        std::printf("\n");
        std::fflush(stdout);
    }
    return 0;
}
