// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QJsonValue>
#include <QString>
#include <QUrl>

namespace nk::pm {
class PackageNode;
}

namespace nk::pm::app {

/// A text of the manifest as the user reads it: "id:..." is looked up in the installed
/// translations. Empty for anything but a text.
QString manifestText(const PackageNode &node, const QString &field);

/// What the user calls the package: its name, or else its identifier.
QString packageTitle(const PackageNode &node);

/// Where the package's picture can be had now; invalid if it has none.
QUrl packagePreview(const PackageNode &node);

/// \a value on one line: a text as \a text, numbers in the user's notation, lists separated by
/// commas, truth values in words.
QString shownValue(const QJsonValue &value, const QString &text);

/// Whether \a text has the form of a file name: a dot, an ending that begins with a letter,
/// no blank.
bool isFileName(const QString &text);

} // namespace nk::pm::app
