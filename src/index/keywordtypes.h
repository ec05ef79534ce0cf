// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QString>

namespace nk::pm {

/// The grammatical role of a keyword; Keyword::Type is the same table seen from QML. The numbers
/// are part of every source's data.
enum class KeywordType : int {
    Invalid = -1,  ///< no keyword: the build passes such a record over
    Noun = 0,      ///< a common noun, with singular and plural
    Name = 1,      ///< a proper name
    Adjective = 2, ///< a property
    Literal = 3,   ///< a text that is the same in all languages
    Category = 4,  ///< an entry of a category list
};

/// The type that \a name ("noun", "name", ...) stands for, compared exactly; Invalid if it is none.
/// Safe on any thread.
NK_PM_EXPORT KeywordType keywordTypeFromString(const QString &name);

} // namespace nk::pm
