// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "index/packageindexnode.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

/// The three walks over keywords in their plainest form: recursive, without a memory of what was
/// visited, following every path. What the library answers on acyclic data must be what these do.
namespace nk::pm::test::plain {

QSet<KeywordNode *> keywords(const PackageNode &package);
bool isUsedByType(const KeywordNode &keyword, const QStringRef &type);
QString sortKey(const PackageNode &package);

} // namespace nk::pm::test::plain
