// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/progress.h"
#include "ledger/issuer.h"

#include <QStringList>

namespace nk::pm::publisher {

struct SignedLedger
{
    QByteArray bytes;
    int newSignatures = 0;
    int keptSignatures = 0;
    QStringList faults; ///< packages that can't be signed; none of the rest holds then
};

/// Puts a signature on each package of \a ledger, which encodeLedger() wrote with \a issuers.
///
/// A package that \a previous, a ledger whose signatures are known to be good, holds with the same
/// content by the same issuer keeps its signature; pass an empty array where there is none. What is
/// signed is what the library's reader will check. Works on all cores and blocks until done.
SignedLedger signLedger(
    const QByteArray &ledger, const QVector<Issuer> &issuers, const QByteArray &previous,
    Progress &progress);

} // namespace nk::pm::publisher
