// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QTest>

namespace nk::pm::test {

/// The table of a data-driven test, for its _data() function: columns of the types \a Values, then
/// rows of a name and one value for each column.
template<typename... Values>
class Columns
{
public:
    template<typename... Names>
    explicit Columns(Names... names)
    {
        (QTest::addColumn<Values>(names), ...);
    }

    Columns &row(const char *name, const Values &...values)
    {
        (QTest::newRow(name) << ... << values);
        return *this;
    }
};

} // namespace nk::pm::test
