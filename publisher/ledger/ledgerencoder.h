// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "ledger/issuer.h"

namespace nk::pm::publisher {

/// A ledger whose packages have no signatures yet, only the room for them, or why there is none.
struct EncodedLedger
{
    QByteArray bytes;
    QString fault; ///< empty if there is none
};

/// Writes \a catalogue, which was found free of errors and whose files were hashed, as a ledger:
/// segments in the order issuers, keywords, packages, links, records in the catalogue's order,
/// languages and types sorted. Equal arguments give equal bytes. All of \a issuers go in, also
/// those that sign nothing; each package must have one.
EncodedLedger encodeLedger(const Catalogue &catalogue, const QVector<Issuer> &issuers);

} // namespace nk::pm::publisher
