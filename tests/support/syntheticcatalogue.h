// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "support/memorysource.h"

#include <QRandomGenerator>
#include <QStringList>

namespace nk::pm::test {

/// How much there is of everything.
struct CatalogueSize
{
    int packages = 0;
    int keywords = 0;
    int links = 0;
};

/// A made-up catalogue of any size with the proportions of a real one: types of three levels, a
/// dictionary that branches from general to special words in two languages, packages that are, have
/// and require something. The same size and seed give the same catalogue on every machine. Its
/// links form no cycle.
class SyntheticCatalogue
{
public:
    SyntheticCatalogue(const CatalogueSize &size, quint32 seed);

    const MemoryCatalogue &contents() const { return m_contents; }

    /// Writes the catalogue as a directory tree that LocalPackageSource reads, into \a directory,
    /// which is made if need be. False at the first file that can't be written.
    bool writeTo(const QString &directory) const;

private:
    void addPackage(int number);
    void addKeyword(int number);
    void addLink(int number);
    QString word();

    const CatalogueSize m_size;
    QRandomGenerator m_random;
    QStringList m_types;
    MemoryCatalogue m_contents;
};

} // namespace nk::pm::test
