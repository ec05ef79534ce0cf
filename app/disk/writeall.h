// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QFile>

namespace nk::pm::disk {

/// Whether \a file has taken all of \a bytes. A disk that gets full takes a part, and says why not
/// the rest only when asked once more.
inline bool writeAll(QFile &file, const QByteArray &bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const qint64 written = file.write(bytes.constData() + done, bytes.size() - done);
        if (written <= 0)
            return false;
        done += written;
    }
    return true;
}

} // namespace nk::pm::disk
