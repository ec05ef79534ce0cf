// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/origin.h"

#include <QUrl>

namespace nk {

static int portOf(const QUrl &url)
{
    return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
}

bool sameOrigin(const QUrl &a, const QUrl &b)
{
    return !a.host().isEmpty() && a.host() == b.host() && a.scheme() == b.scheme()
           && portOf(a) == portOf(b);
}

} // namespace nk
