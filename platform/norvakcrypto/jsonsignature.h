// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakcrypto/norvakcrypto_export.h>

#include <QByteArray>
#include <QJsonObject>

namespace nk::crypto {

/// The form of a JSON object that is signed.
class NORVAK_CRYPTO_EXPORT JsonSignature
{
public:
    /// \a object under the JSON canonicalization scheme of RFC 8785: UTF-8 without white space,
    /// members in the order of their names' UTF-16 code units, numbers as ECMAScript prints them.
    ///
    /// Empty if the object has no such form: a lone surrogate in a name or string, a number that is
    /// not finite, or a name twice in one object (which Qt's parser may leave there). Empty is
    /// never the form of an object, so nothing must be signed or verified then. Takes no more stack
    /// for deeper objects. Safe on any thread.
    static QByteArray toByteArray(const QJsonObject &object);
};

} // namespace nk::crypto
