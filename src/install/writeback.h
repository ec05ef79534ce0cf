// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

class QFileDevice;

namespace nk::pm {

/// Lets the system begin to write to the disk what \a file has been given so far, without waiting
/// for it. A hint: a later sync finds less to do, and the cache doesn't fill up with one large
/// file. Does nothing where the system has no such call.
void startWriteback(QFileDevice &file);

} // namespace nk::pm
