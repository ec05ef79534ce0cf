// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QJsonObject>
#include <QString>

namespace nk::pm {
class KeywordNode;
class PackageNode;
} // namespace nk::pm

namespace nk::pm::cli {

/// A manifest field as the user reads it: a text that begins with "id:" from the installed
/// translations, anything but a text as compact JSON. Empty if the field is missing.
QString fieldText(const PackageNode *node, const QString &field);

/// The package's name for the user; its identifier if the manifest has none.
QString displayName(const PackageNode *node);

/// A keyword's kind as sources write it: "noun" and so on.
QString kindText(const KeywordNode *keyword);

/// Identifier, kind and text of a keyword.
QJsonObject keywordObject(const KeywordNode *keyword);

} // namespace nk::pm::cli
