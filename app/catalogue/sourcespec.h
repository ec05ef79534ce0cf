// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <optional>

namespace nk::pm::app {

enum class SourceKind { Local, CouchDB, Server };

/// A source as the user names it.
struct SourceSpec
{
    SourceKind kind;
    QString location; ///< a directory, or a URL
};

/// "local", "couchdb", "server".
QString kindName(SourceKind kind);
std::optional<SourceKind> kindFromName(const QString &name);

/// What is wrong with \a spec, as far as that shows without asking a server; empty if nothing.
QString faultOf(const SourceSpec &spec);

} // namespace nk::pm::app
