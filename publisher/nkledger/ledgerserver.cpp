// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "ledgerserver.h"

#include <QDateTime>
#include <QFile>

#include <httplib.h>

#include <atomic>
#include <thread>

namespace nk::pm::publisher {

namespace {

constexpr char host[] = "127.0.0.1";
constexpr time_t idleSeconds = 1; // how long stop() waits for a connection without a request

/// Whether the value of an If-None-Match field names \a tag. The comparison is the weak one.
bool namesTag(const QByteArray &field, const QByteArray &tag)
{
    const auto parts = field.split(',');
    for (const QByteArray &part : parts) {
        const QByteArray candidate = part.trimmed();
        if (candidate == "*" || candidate == tag || candidate == "W/" + tag)
            return true;
    }
    return false;
}

void sendFile(const QString &path, const httplib::Request &request, httplib::Response &response)
{
    // Opened before it is looked at, so that size and time are those of the bytes that are sent
    // even if the file is replaced meanwhile.
    const auto file = std::make_shared<QFile>(path);
    if (!file->open(QIODevice::ReadOnly)) {
        response.status = 404;
        return;
    }
    const qint64 size = file->size();
    const qint64 time = file->fileTime(QFileDevice::FileModificationTime).toSecsSinceEpoch();
    const QByteArray tag = entityTag(time, size);
    response.set_header("ETag", tag.toStdString());
    if (namesTag(QByteArray::fromStdString(request.get_header_value("If-None-Match")), tag)) {
        // Without it the library would say that the file is empty.
        response.set_header("Content-Length", std::to_string(size));
        response.status = 304;
        return;
    }
    response.set_content_provider(
        size_t(size), "application/octet-stream",
        [file](size_t offset, size_t length, httplib::DataSink &sink) {
            file->seek(qint64(offset));
            const QByteArray bytes = file->read(qint64(std::min<size_t>(length, 0x20000)));
            return !bytes.isEmpty() && sink.write(bytes.constData(), size_t(bytes.size()));
        });
}

} // namespace

struct LedgerServerPrivate
{
    Layout layout;
    httplib::Server server;
    std::atomic_bool hasRun{false};
};

LedgerServer::LedgerServer(const Layout &layout, const Log &log)
    : d(new LedgerServerPrivate{layout, {}, {}})
{
    using httplib::Request;
    using httplib::Response;
    d->server.set_keep_alive_timeout(idleSeconds);
    d->server.set_keep_alive_max_count(1000);
    d->server.Get("/api/v1/ledger", [this](const Request &request, Response &response) {
        response.set_header("Cache-Control", "no-cache");
        sendFile(d->layout.ledgerFile(), request, response);
    });
    d->server.Get(
        "/api/v1/ledger/([0-9a-f]{56})", [this](const Request &request, Response &response) {
            const auto digest = QByteArray::fromStdString(request.matches[1].str());
            sendFile(d->layout.contentFile(QByteArray::fromHex(digest)), request, response);
        });
    d->server.set_logger([log](const Request &request, const Response &response) {
        log(QString::fromStdString(request.method), QString::fromStdString(request.path),
            response.status);
    });
}

LedgerServer::~LedgerServer() = default;

int LedgerServer::bind(int port)
{
    if (port == 0)
        return qMax(d->server.bind_to_any_port(host), 0);
    return d->server.bind_to_port(host, port) ? port : 0;
}

void LedgerServer::run()
{
    d->server.listen_after_bind();
    d->hasRun = true;
}

void LedgerServer::stop()
{
    // The library forgets a stop that comes before it listens.
    while (!d->server.is_running() && !d->hasRun)
        std::this_thread::yield();
    d->server.stop();
}

} // namespace nk::pm::publisher
