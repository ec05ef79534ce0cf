// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QString>

namespace nk::pm {

/// The grammatical role of a keyword; Keyword::Type is the same table seen from QML. The numbers
/// are part of every source's data.
enum class KeywordType : int {
    Invalid = -1,
    Noun = 0,
    Name = 1,
    Adjective = 2,
    Literal = 3,
    Category = 4,
};

/// The type that \a name ("noun", "name", ...) stands for, compared exactly; Invalid if it is none.
/// Safe on any thread.
NK_PM_EXPORT KeywordType keywordTypeFromString(const QString &name);

} // namespace nk::pm
