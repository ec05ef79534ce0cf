// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/writeback.h"

#include <QFileDevice>

#ifdef Q_OS_LINUX
#include <fcntl.h>
#endif

namespace nk::pm {

void startWriteback(QFileDevice &file)
{
#ifdef Q_OS_LINUX
    if (file.flush())
        ::sync_file_range(file.handle(), 0, 0, SYNC_FILE_RANGE_WRITE);
#else
    Q_UNUSED(file)
#endif
}

} // namespace nk::pm
