// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringRef>

namespace nk::pm {

class PackageIndexNode;

/// Whether a package of \a type reaches \a keyword along a chain of links that passes the chain
/// test (see LinkChain). Ends on cyclic data too; takes time by the number of nodes and links from
/// which the keyword is reached, however many paths there are.
bool isReachedByType(const PackageIndexNode &keyword, const QStringRef &type);

} // namespace nk::pm
