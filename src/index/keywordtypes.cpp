// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordtypes.h"

#include <QHash>

namespace nk::pm {

KeywordType keywordTypeFromString(const QString &name)
{
    static const QHash<QString, KeywordType> types{
        {QStringLiteral("noun"), KeywordType::Noun},
        {QStringLiteral("name"), KeywordType::Name},
        {QStringLiteral("adjective"), KeywordType::Adjective},
        {QStringLiteral("literal"), KeywordType::Literal},
        {QStringLiteral("category"), KeywordType::Category},
    };
    return types.value(name, KeywordType::Invalid);
}

} // namespace nk::pm
