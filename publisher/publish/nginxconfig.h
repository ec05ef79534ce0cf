// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::pm::publisher {

struct NginxSite
{
    QString publication; ///< absolute path of its directory
    QString listen;      ///< the value of nginx's "listen"
    QString serverName;  ///< the value of "server_name"
    QString prefix;      ///< path of the service's address, without "/" at its end; may be empty
};

/// The block "server" with which nginx serves \a site. Empty, with the reason in \a fault, if a
/// value can't be written in nginx's language.
QString nginxConfig(const NginxSite &site, QString *fault);

} // namespace nk::pm::publisher
