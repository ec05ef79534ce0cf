// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QIODevice>

namespace nk::pm::disk {

/// Whether \a device has taken all \a size bytes of \a data. A disk that gets full takes a part,
/// and says why not the rest only when asked once more.
inline bool writeAll(QIODevice &device, const char *data, qint64 size)
{
    while (size > 0) {
        const qint64 written = device.write(data, size);
        if (written <= 0)
            return false;
        data += written;
        size -= written;
    }
    return true;
}

inline bool writeAll(QIODevice &device, const QByteArray &bytes)
{
    return writeAll(device, bytes.constData(), bytes.size());
}

} // namespace nk::pm::disk
