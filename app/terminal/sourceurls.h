// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QUrl>

namespace nk::pm::terminal {

/// The address of a package server that a user wrote. Empty if \a text is no http or https URL with
/// a host.
QUrl serverUrl(const QString &text);

/// The same for a database, whose URL has a path. Without a user in it, user and password come
/// from the environment variables NKPM_COUCHDB_USER and NKPM_COUCHDB_PASSWORD, if there are any.
QUrl databaseUrl(const QString &text);

/// What may be shown of \a text, a URL or something that was meant to be one: no user, no password.
QString withoutCredentials(const QString &text);

} // namespace nk::pm::terminal
