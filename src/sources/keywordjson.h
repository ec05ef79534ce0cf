// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/packageaccessor.h"

#include <QJsonObject>
#include <QVector>

namespace nk::pm {

/// The texts of a keyword that is stored as the JSON object \a keyword, by the rules of its
/// KeywordType \a type, in the order of the language keys. A value of the wrong JSON type reads as
/// its empty form; an unknown type has no texts. Pure, safe on any thread.
///
/// A noun has "strings": {"en": [{"sg": "chair", "pl": "chairs"}]}, a name, an adjective and a
/// category have "strings": {"en": ["red"]}, and a literal has "string": "M8".
QVector<KeywordString> keywordStrings(int type, const QJsonObject &keyword);

} // namespace nk::pm
