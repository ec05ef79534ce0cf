// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// What the network installers and the store cost beside the ordinary tools that do the same work,
// in turns in one run:
//
//   links      a package of 2,000 stored files into a location, against cp -al of such a directory
//   downloads  a package of 500 files of 64 KiB from a local nginx, with digest check and sync,
//   against
//              curl --parallel and sha224sum, once with and once without a sync of its files
//   verify     a store of 512 files of 1 MiB, against sha224sum, which has one core: so would ours
//              under taskset -c 0
//
// Prints the median and the best of each and their ratios. With --short it only runs everything
// once, on few files.

#include "install/filestore.h"
#include "install/installlocationroot.h"
#include "install/packageserverinstaller.h"
#include "install/storecare.h"
#include "support/nginxserver.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QProcess>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <norvakaccount/service.h>

using namespace nk::pm;
using namespace nk::pm::test;
using Files = QHash<QByteArray, QString>;

namespace {

double milliseconds(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

/// The times of one side; the best round tells the most where other work disturbs the machine.
struct Times
{
    QVector<double> values;

    double median()
    {
        std::sort(values.begin(), values.end());
        return values.at(values.size() / 2);
    }
    double best() const { return *std::min_element(values.begin(), values.end()); }
};

void run(const QString &program, const QStringList &arguments, const QString &directory)
{
    QProcess process;
    process.setWorkingDirectory(directory);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        qFatal("%s failed", qPrintable(program));
}

void install(const Files &files, nk::account::Service *service, const InstallLocation &location)
{
    PackageServerInstaller installer(files, service, FileStore::instance(), location);
    QEventLoop loop;
    QObject::connect(&installer, &PackageInstaller::statusChanged, &loop, &QEventLoop::quit);
    loop.exec();
    if (installer.status() != PackageInstaller::Succeeded)
        qFatal("%s", qPrintable(installer.errors().value(0).message));
    if (location.directory(false).count() < uint(files.size()))
        qFatal("Files are missing");
}

/// Installing files that the store holds.
class Links
{
public:
    explicit Links(int count)
        : m_store(FileStore::instance())
        , m_service(QStringLiteral("links"), QUrl(), nullptr)
    {
        for (int i = 0; i < count; ++i) {
            const QByteArray content = numberedContent(i, 1000);
            const QByteArray digest = QCryptographicHash::hash(content, QCryptographicHash::Sha224);
            m_files.insert(digest, QString::number(i));
            writeFile(m_store->filePath(QString::fromLatin1(digest.toHex())), content);
            writeFile(m_plain.filePath(QStringLiteral("from/%1").arg(i)), content);
        }
    }

    double ours()
    {
        const InstallLocation location =
            InstallLocationRoot::createLocation().subLocation(QStringLiteral("package"));
        return milliseconds([&] { install(m_files, &m_service, location); });
    }

    double theirs()
    {
        QDir(m_plain.filePath(QStringLiteral("to"))).removeRecursively();
        return milliseconds([&] {
            run(QStringLiteral("cp"),
                {QStringLiteral("-al"), QStringLiteral("from"), QStringLiteral("to")},
                m_plain.path());
        });
    }

private:
    ScopedDataLocation m_data;
    QSharedPointer<FileStore> m_store;
    nk::account::Service m_service;
    QTemporaryDir m_plain;
    Files m_files;
};

/// Downloading a package into an empty store.
class Downloads
{
public:
    explicit Downloads(int count)
    {
        QByteArray list;
        QByteArray sums;
        for (int i = 0; i < count; ++i) {
            const QByteArray content = numberedContent(i, 64 * 1024);
            const QByteArray digest = QCryptographicHash::hash(content, QCryptographicHash::Sha224);
            const QString path =
                QStringLiteral("api/v1/ledger/") + QString::fromLatin1(digest.toHex());
            m_server.addFile(path, content);
            m_files.insert(digest, QString::number(i));
            list += "url=" + m_server.url(QLatin1Char('/') + path).toEncoded()
                    + "\noutput=" + QByteArray::number(i) + '\n';
            sums += digest.toHex() + "  " + QByteArray::number(i) + '\n';
        }
        writeFile(m_plain.filePath(QStringLiteral("list")), list);
        writeFile(m_plain.filePath(QStringLiteral("sums")), sums);
    }

    double ours()
    {
        ScopedDataLocation data;
        const QSharedPointer<FileStore> store = FileStore::instance();
        QNetworkAccessManager manager;
        nk::account::Service service(
            QStringLiteral("downloads"), m_server.url(QStringLiteral("/")), &manager);
        const InstallLocation location =
            InstallLocationRoot::createLocation().subLocation(QStringLiteral("package"));
        return milliseconds([&] { install(m_files, &service, location); });
    }

    double theirs(const QString &script)
    {
        const QString to = m_plain.filePath(QStringLiteral("to"));
        QDir(to).removeRecursively();
        QDir().mkpath(to);
        return milliseconds([&] {
            run(QStringLiteral("sh"), {QStringLiteral("-ec"), script}, to);
        });
    }

private:
    NginxServer m_server;
    QTemporaryDir m_plain;
    Files m_files;
};

/// Reading what the store holds.
class Verification
{
public:
    explicit Verification(int count)
        : m_store(FileStore::instance())
    {
        for (int i = 0; i < count; ++i) {
            const QByteArray content = numberedContent(i, 1024 * 1024);
            const QByteArray digest = QCryptographicHash::hash(content, QCryptographicHash::Sha224);
            writeFile(m_store->filePath(QString::fromLatin1(digest.toHex())), content);
        }
    }

    double ours()
    {
        StoreCare care;
        QEventLoop loop;
        QObject::connect(&care, &StoreCare::finished, &loop, &QEventLoop::quit);
        return milliseconds([&] {
            care.verify();
            loop.exec();
            if (!care.report().isWhole())
                qFatal("The store isn't whole");
        });
    }

    double theirs()
    {
        return milliseconds([&] {
            run(QStringLiteral("sh"),
                {QStringLiteral("-c"), QStringLiteral("sha224sum */* >/dev/null")},
                m_store->directory());
        });
    }

private:
    ScopedDataLocation m_data;
    QSharedPointer<FileStore> m_store;
};

void compare(
    const char *what, int rounds, const std::function<double()> &ours,
    const std::function<double()> &theirs)
{
    Times mine;
    Times others;
    for (int i = 0; i < rounds; ++i) {
        mine.values.append(ours());
        others.values.append(theirs());
    }
    std::printf(
        "%-42s median %7.1f %7.1f ms, ratio %.2f   best %7.1f %7.1f ms, ratio %.2f\n", what,
        mine.median(), others.median(), mine.median() / others.median(), mine.best(), others.best(),
        mine.best() / others.best());
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption shortRun(
        QStringLiteral("short"), QStringLiteral("Run all once, on few files"));
    const QCommandLineOption roundCount(
        QStringLiteral("rounds"), QStringLiteral("Rounds of each comparison"),
        QStringLiteral("number"), QStringLiteral("15"));
    parser.addOptions({shortRun, roundCount});
    parser.addPositionalArgument(
        QStringLiteral("comparison"),
        QStringLiteral("links, verify or downloads, all if none is named"));
    parser.addHelpOption();
    parser.process(app);
    const QStringList wanted = parser.positionalArguments();
    const auto isWanted = [&](const char *name) {
        return wanted.isEmpty() || wanted.contains(QLatin1String(name));
    };
    const bool isShort = parser.isSet(shortRun);
    const int rounds = isShort ? 1 : qMax(1, parser.value(roundCount).toInt());

    if (isWanted("links")) {
        Links links(isShort ? 20 : 2000);
        compare(
            "links: ours, cp -al", rounds, [&] { return links.ours(); },
            [&] { return links.theirs(); });
    }
    if (isWanted("verify")) {
        Verification verification(isShort ? 5 : 512);
        compare(
            "verify: ours, sha224sum", rounds, [&] { return verification.ours(); },
            [&] { return verification.theirs(); });
    }
    if (!isWanted("downloads") || !NginxServer::isInstalled())
        return 0;
    Downloads downloads(isShort ? 5 : 500);
    const QString plain =
        QStringLiteral("curl --silent --fail --no-progress-meter --parallel --config ../list; "
                       "sha224sum --check --quiet ../sums");
    const auto ours = [&] { return downloads.ours(); };
    compare("downloads: ours, curl and sha224sum", rounds, ours, [&] {
        return downloads.theirs(plain);
    });
    compare("downloads: ours, curl, sha224sum and sync", rounds, ours, [&] {
        return downloads.theirs(plain + QStringLiteral("; sync *"));
    });
    return 0;
}
