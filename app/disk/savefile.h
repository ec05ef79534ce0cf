// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

namespace nk::pm::disk {

/// Writes the file \a path, whole and on stable storage or not at all; gives the reason of a
/// failure, or an empty text. A link's target is what is written. Until then the content is in a
/// file beside it, ".NAME.nkpm-" and eight digits; what killed programs have left of these goes
/// once it is some minutes old.
QString saveFile(const QString &path, const QByteArray &content);

} // namespace nk::pm::disk
