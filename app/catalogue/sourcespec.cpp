// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sourcespec.h"

#include "network/directoryfault.h"
#include "terminal/sourceurls.h"

#include <QCoreApplication>

#include <array>

namespace nk::pm::app {
namespace {

struct SourceFault
{
    Q_DECLARE_TR_FUNCTIONS(SourceFault)
};

struct KindName
{
    SourceKind kind;
    const char *name;
};

constexpr std::array<KindName, 3> kindNames{{
    {SourceKind::Local, "local"},
    {SourceKind::CouchDB, "couchdb"},
    {SourceKind::Server, "server"},
}};

} // namespace

QString kindName(SourceKind kind)
{
    for (const auto &entry : kindNames) {
        if (entry.kind == kind)
            return QLatin1String(entry.name);
    }
    return {};
}

std::optional<SourceKind> kindFromName(const QString &name)
{
    for (const auto &entry : kindNames) {
        if (QLatin1String(entry.name) == name)
            return entry.kind;
    }
    return std::nullopt;
}

QString faultOf(const SourceSpec &spec)
{
    const QString shown = terminal::withoutCredentials(spec.location);
    switch (spec.kind) {
    case SourceKind::Local:
        return directoryFault(spec.location);
    case SourceKind::CouchDB:
        if (terminal::databaseUrl(spec.location).isEmpty())
            return SourceFault::tr("%1 is no URL of a database: http(s)://HOST/DATABASE is")
                .arg(shown);
        break;
    case SourceKind::Server:
        if (terminal::serverUrl(spec.location).isEmpty())
            return SourceFault::tr("%1 is no http or https URL").arg(shown);
        break;
    }
    return {};
}

} // namespace nk::pm::app
