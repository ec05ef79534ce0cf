// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

class QIODevice;

namespace nk::pm {

/// All manifests of a tree, back to back in one array: a catalogue has tens of thousands, and few
/// of them are ever looked at.
class LocalManifests
{
public:
    /// One manifest's place in the array.
    struct Slice
    {
        qint32 offset; ///< bytes
        qint32 length; ///< bytes
    };

    /// Bytes that are read of one manifest; the rest of a longer one is cut off.
    static constexpr int longestManifest = 1024 * 1024;

    /// Bytes of all manifests together beyond which manifests read as empty. An array that grows
    /// past 2 GiB would end the process.
    explicit LocalManifests(int capacity = 1 << 30);

    /// Reads the manifest in \a device, which is open.
    Slice append(QIODevice &device);

    /// Gives back the memory that growing took ahead. No append() after this.
    void squeeze();

    /// The bytes of \a slice, without a copy; valid as long as this object.
    QByteArray view(Slice slice) const;

private:
    QByteArray m_bytes;
    int m_capacity;
};

} // namespace nk::pm
