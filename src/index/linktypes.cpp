// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/linktypes.h"

#include <QHash>

namespace nk::pm {

int linkTypeFromString(const QString &name)
{
    static const QHash<QString, int> types{
        {QStringLiteral("is_a"), IsA},
        {QStringLiteral("contains"), Contains},
        {QStringLiteral("relates_to"), RelatesTo},
        {QStringLiteral("is_not_a"), IsNotA},
        {QStringLiteral("is"), Is},
        {QStringLiteral("uses"), Uses},
        {QStringLiteral("requires"), Requires},
    };
    return types.value(name, -1);
}

} // namespace nk::pm
