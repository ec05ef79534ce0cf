// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

namespace nk::crypto::ed25519 {

/// Trusts nobody.
class PublicKey
{
public:
    static PublicKey fromPEM(const QByteArray &) { return {}; }
    static PublicKey fromDER(const QByteArray &) { return {}; }
    bool isValid() const { return false; }
    bool verify(const QByteArray &, const QByteArray &) const { return false; }
    QByteArray toDER() const { return {}; }
};

} // namespace nk::crypto::ed25519
