// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/problems.h"
#include "catalogue/progress.h"

#include <QIODevice>

namespace nk::pm::publisher {

/// Reads \a source to its end and gives the SHA-224 of the bytes, in its raw form; they also go to
/// \a copy if there is one. Empty if a device fails. Holds no more than a buffer in memory. Any
/// thread.
QByteArray digestOf(QIODevice &source, QIODevice *copy = nullptr);

/// The raw SHA-224 of \a bytes.
QByteArray digestOf(const QByteArray &bytes);

/// Sets digest and size of all files of \a catalogue's packages. One that can't be read keeps an
/// empty digest and is an error. Works on all cores and blocks until done.
void hashFiles(Catalogue &catalogue, Problems &problems, Progress &progress);

} // namespace nk::pm::publisher
