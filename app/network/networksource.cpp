// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "network/networksource.h"

#include "sources/couchdbpackagesource.h"
#include "sources/packageserver.h"

#include <QUuid>

namespace nk::pm::app {

namespace {

/// Of a view 4 MiB are read. One that is somewhat larger is said to be too large; what never ends
/// is given up.
constexpr qint64 maximumViewSize = 16 * 1024 * 1024;

/// The same for the same address in each run: it names the directory of the persisted ledger.
QString serviceId(const QUrl &url)
{
    const QUuid urls(QStringLiteral("{6ba7b811-9dad-11d1-80b4-00c04fd430c8}")); // RFC 4122, URLs
    return QUuid::createUuidV5(urls, url.toString(QUrl::FullyEncoded))
        .toString(QUuid::WithoutBraces);
}

} // namespace

NetworkSource makeServerSource(const QUrl &url)
{
    NetworkSource made;
    made.network = std::make_unique<SourceNetwork>(url, QStringLiteral("/api/v1/ledger"));
    const QUrl own = made.network->url();
    made.service = std::make_unique<nk::account::Service>(serviceId(own), own, made.network.get());
    made.source = std::make_unique<PackageServer>(made.service.get());
    return made;
}

NetworkSource makeCouchDBSource(const QUrl &url)
{
    NetworkSource made;
    made.network =
        std::make_unique<SourceNetwork>(url, QStringLiteral("/_design/norvak/_view/packages"));
    auto source = std::make_unique<CouchDBPackageSource>(made.network->url(), made.network.get());
    source->setContentTags(true);
    source->setKeepsSuperseded(false);
    source->setMaximumAnswerSize(maximumViewSize);
    made.source = std::move(source);
    return made;
}

} // namespace nk::pm::app
