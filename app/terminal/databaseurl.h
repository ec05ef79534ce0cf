// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QUrl>

namespace nk::pm::terminal {

/// The database URL that a user wrote. Without a user in it, user and password come from the
/// environment variables NKPM_COUCHDB_USER and NKPM_COUCHDB_PASSWORD, if there are any. Empty if
/// \a text is no http or https URL with a host and a path.
QUrl databaseUrl(const QString &text);

/// \a url for people: without user and password.
QString shown(const QUrl &url);

} // namespace nk::pm::terminal
