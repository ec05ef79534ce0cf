// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "catalogue.h"
#include "exitcodes.h"
#include "output.h"
#include "texts.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"

#include <QDir>
#include <QEventLoop>
#include <QNetworkReply>
#include <QSaveFile>
#include <norvak/request.h>

#include <memory>

namespace nk::pm::cli {
namespace {

constexpr int httpOk = 200;
constexpr int badGateway = 502; // HTTP; the proxy's for a source without a complete answer

/// Passes on what \a source has got; false if \a sink takes less.
bool pass(QIODevice &source, QIODevice &sink)
{
    while (source.bytesAvailable() > 0) {
        const QByteArray bytes = source.read(0x20000);
        if (bytes.isEmpty() || sink.write(bytes) != bytes.size())
            return false;
    }
    return true;
}

QString cannotWrite(const QIODevice &sink)
{
    return QStringLiteral("can't write the file: %1").arg(sink.errorString());
}

/// A source that reads a directory joins the name to it as it is.
bool leadsOut(const QString &name)
{
    const QString path = QDir::cleanPath(name);
    return QDir::isAbsolutePath(path) || path == QLatin1String("..")
           || path.startsWith(QLatin1String("../"));
}

/// Gives what went wrong, or an empty text.
QString copyLocal(const QString &path, QIODevice &sink)
{
    QFile source(path);
    if (!source.open(QIODevice::ReadOnly))
        return QStringLiteral("can't read \"%1\": %2").arg(path, source.errorString());
    return pass(source, sink) ? QString() : cannotWrite(sink);
}

/// The same for an address of a source or of the loopback proxy, which fetches the file meanwhile.
QString download(const QUrl &url, QNetworkAccessManager &network, QFileDevice &sink)
{
    auto *const request = new nk::GetRequest(QNetworkRequest(url), &network);
    request->setDataSink(&sink);
    request->setSuppressErrors(true);
    QEventLoop loop;
    int status = 0;
    QString reason;
    QObject::connect(request, &nk::Request::finished, &loop, [&] {
        status = request->responseCode();
        reason = request->reply()->errorString();
        loop.quit();
    });
    loop.exec();
    if (sink.error() != QFileDevice::NoError)
        return cannotWrite(sink);
    if (status == httpOk)
        return {};
    // The address of a request that failed is often that of the proxy, which tells the user
    // nothing.
    if (status == badGateway)
        return QStringLiteral("the source can't be reached, and the file isn't in the store");
    return QStringLiteral("the source doesn't give the file: %1")
        .arg(status > 0 ? QStringLiteral("status %1").arg(status) : reason);
}

/// Standard output, or a file that appears whole or not at all.
std::unique_ptr<QFileDevice> openSink(const QString &path, QString *fault)
{
    if (path.isEmpty()) {
        auto out = std::make_unique<QFile>();
        out->open(stdout, QIODevice::WriteOnly);
        return out;
    }
    auto file = std::make_unique<QSaveFile>(path);
    if (!file->open(QIODevice::WriteOnly))
        *fault = QStringLiteral("can't write \"%1\": %2").arg(path, file->errorString());
    return file;
}

QString fetch(
    const PackageNode &package, const QString &name, QNetworkAccessManager &network,
    QFileDevice &sink)
{
    if (leadsOut(name))
        return QStringLiteral("\"%1\" leads out of the package \"%2\"").arg(name, package.id());
    const QUrl url = package.fileUrl(name);
    if (url.isLocalFile())
        return copyLocal(url.toLocalFile(), sink);
    if (url.isValid())
        return download(url, network, sink);
    return QStringLiteral("\"%1\" has no file \"%2\"").arg(package.id().toString(), name);
}

} // namespace

int run(const FileOptions &options, Catalogue &catalogue, Output &output)
{
    const auto index = catalogue.index();
    const PackageNode *package = index->getPackage(QStringRef(&options.id));
    if (!package) {
        output.error(noPackage(catalogue, options.id));
        return NotMet;
    }
    QNetworkAccessManager plainNetwork;
    QNetworkAccessManager *const own = catalogue.sourceOf(package)->accessManager();
    QString fault;
    const auto sink = openSink(options.output, &fault);
    if (fault.isEmpty())
        fault = fetch(*package, options.name, own ? *own : plainNetwork, *sink);
    auto *const file = qobject_cast<QSaveFile *>(sink.get());
    if (fault.isEmpty() && !(file ? file->commit() : sink->flush()))
        fault = cannotWrite(*sink);
    if (fault.isEmpty())
        return Fine;
    output.error(fault);
    return NotMet;
}

} // namespace nk::pm::cli
