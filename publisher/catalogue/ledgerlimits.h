// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/problems.h"

namespace nk::pm::publisher {

/// Adds an error for each text of \a catalogue that is longer, and each list that has more entries,
/// than the ledger's length and count fields can say.
void checkLimits(const Catalogue &catalogue, Problems &problems);

/// \a string as a ledger holds it: the singular, and behind a separator the plural if there is one.
QByteArray displayString(const KeywordString &string);

} // namespace nk::pm::publisher
