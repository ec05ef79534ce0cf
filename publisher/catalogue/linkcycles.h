// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "index/linktypes.h"

#include <QStringList>

namespace nk::pm::publisher {

/// A chain of links of one type that comes back to where it started.
struct LinkCycle
{
    QString file;            ///< of the link that closes it
    QStringList identifiers; ///< in the order of the links; the first stands at the end again
};

/// The cycles that links of \a type form: at least one of each knot of them, none that isn't there,
/// and each closed by another link. Takes no more time than there are links, and no stack.
QVector<LinkCycle> findCycles(const QVector<CatalogueLink> &links, LinkType type);

} // namespace nk::pm::publisher
