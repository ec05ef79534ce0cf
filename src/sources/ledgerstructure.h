// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QByteArray>
#include <QHash>
#include <QSet>

namespace nk::pm {

/// The outer structure of a ledger: where its four segments lie, or what is wrong with them.
struct LedgerStructure
{
    enum Fault {
        NoFault,
        TooSmall, ///< number: the ledger's size
        MissingMagic,
        WrongVersion,
        UnknownIdentifier, ///< identifier: as in the offset table
        OffsetOutOfRange,  ///< identifier, number: the offset
        NoSegmentAtOffset, ///< identifier, number: the offset
        SegmentTooLong,    ///< identifier, number: the payload size
        MissingSegments,   ///< missing
        MisalignedSegments,
    };

    Fault fault = NoFault;
    bool headerGood = false; ///< size, magic and version are right
    QByteArray identifier;
    quint32 number = 0;
    QSet<QByteArray> missing;

    /// By identifier, views on the segments from their framing on that end within the ledger
    /// whatever size they claim. Complete only without a fault.
    QHash<QByteArray, QByteArray> segments;
};

/// Checks the header, the offset table and the arrangement of \a ledger's segments, in this order
/// and up to the first fault. The payloads are not looked at. The result refers to the bytes of \a
/// ledger.
NK_PM_EXPORT LedgerStructure readLedgerStructure(const QByteArray &ledger);

} // namespace nk::pm
