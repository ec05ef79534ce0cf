// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QSet>

namespace nk::pm {

class KeywordNode;
class PackageIndexNode;

/// The keywords that hold for \a package: those that its links reach, as far as each link type
/// passes on, without the ones that it is not. Ends on cyclic data too; takes time by the number of
/// keywords and links within reach, however many paths lead there.
QSet<KeywordNode *> keywordsOf(const PackageIndexNode &package);

} // namespace nk::pm
