// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/sortbyfield.h"

namespace nk::pm {

/// Sorts ascending by an integer of the manifest. A missing value and one that isn't a whole number
/// count as 0. Sorts nothing while name is empty.
class NK_PM_EXPORT SortByIntegerField : public SortByField
{
    Q_OBJECT

public:
    /// Sorts nothing until it has a name.
    explicit SortByIntegerField(QObject *parent = nullptr);
    ~SortByIntegerField() override;

    /// PackageIndex::selectPackages() reads each package's number once for a whole sort with it;
    /// any other caller has both read at each comparison.
    std::function<bool(PackageNode *, PackageNode *)> sortFunction() override;
};

} // namespace nk::pm
