// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "publish/nginxconfig.h"

#include "publish/layout.h"

#include <QRegularExpression>

namespace nk::pm::publisher {

namespace {

// Nothing is compressed on the way: clients ask for the bytes as they are stored, and an ETag
// changes with the coding.
constexpr char siteTemplate[] = R"(server {
    listen %1;
    server_name %2;

    gzip off;
    etag on;
    default_type application/octet-stream;

    # The ledger: small, changes with every publication, asked for with If-None-Match.
    location = "%3/api/v1/ledger" {
        alias "%4";
        types {}
        add_header Cache-Control "no-cache";
    }

    # Files, named by the digest of their content: they never change.
    location ~ "^%5/api/v1/ledger/(?<digest>[0-9a-f]{56})$" {
        alias "%6/$digest";
        types {}
        add_header Cache-Control "public, max-age=31536000, immutable";
    }

    location / {
        return 404;
    }
}
)";

/// For nginx's double quotes.
QString quoted(QString text)
{
    return text.replace(u'\\', QStringLiteral("\\\\")).replace(u'"', QStringLiteral("\\\""));
}

/// nginx knows no way to write a "$" that isn't a variable.
bool isWritable(const QString &text)
{
    static const QRegularExpression unwritable(QStringLiteral("[$\\x00-\\x1f]"));
    return !text.contains(unwritable);
}

/// A value that stands without quotes.
bool isPlain(const QString &text)
{
    static const QRegularExpression special(QStringLiteral("[;{}\"'#$\\\\\\x00-\\x1f]"));
    return !text.isEmpty() && !text.contains(special);
}

} // namespace

QString nginxConfig(const NginxSite &site, QString *fault)
{
    const Layout layout(site.publication);
    if (!isWritable(site.publication))
        *fault = QStringLiteral("nginx can't be told of the path \"%1\"").arg(site.publication);
    else if (!isPlain(site.listen))
        *fault = QStringLiteral("\"%1\" is no address for nginx").arg(site.listen);
    else if (!isPlain(site.serverName))
        *fault = QStringLiteral("\"%1\" is no server name for nginx").arg(site.serverName);
    else if (
        !site.prefix.isEmpty()
        && (!site.prefix.startsWith(u'/') || site.prefix.endsWith(u'/')
            || !isWritable(site.prefix)))
        *fault = QStringLiteral("the prefix \"%1\" is no path that begins with \"/\" and doesn't "
                                "end in one")
                     .arg(site.prefix);
    if (!fault->isEmpty())
        return {};
    return QString::fromLatin1(siteTemplate)
        .arg(
            site.listen, site.serverName, quoted(site.prefix), quoted(layout.ledgerFile()),
            quoted(QRegularExpression::escape(site.prefix)), quoted(layout.filesDirectory()));
}

} // namespace nk::pm::publisher
