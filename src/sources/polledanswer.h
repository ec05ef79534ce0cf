// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk {
class Request;
}

/// What the sources that poll a server read from its answers.
namespace nk::pm {

/// The ETag of the answer to \a request, with its quotes. Empty without one, and for one of more
/// than 1 KiB: it would go back with every poll, and servers refuse requests whose headers are
/// long.
QString etagOf(const nk::Request &request);

/// Whether an answer of this \a status may be due to the condition that the request carried, so
/// that the next one should go without.
bool mayRefuseCondition(int status);

} // namespace nk::pm
