// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace nk::pm::publisher {

/// A JSON text that says the same to every reader, or what stands against it.
struct StrictJson
{
    QJsonObject object;
    QByteArray canonical; ///< the text of \a object after RFC 8785
    QString fault;        ///< empty if there is none; object and canonical are empty otherwise
};

/// Reads \a text, which must be one JSON object in UTF-8.
///
/// Refused is also what JSON allows but readers understand differently, because a signature over
/// what one of them has read would not hold for another: a key that an object has twice, a lone
/// surrogate, a text that begins with U+FEFF, a number outside the range of a double, and an
/// integer so large that a double rounds it.
StrictJson readStrictJson(const QByteArray &text);

} // namespace nk::pm::publisher
