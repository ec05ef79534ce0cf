// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QVector>

namespace nk::pm {

class PackageAccessor;

namespace fuzz {

/// An input that a reader takes as good, from which a fuzzer derives others.
struct Seed
{
    const char *name;
    QByteArray input;
};

/// What each target supplies. runOnce() gives \a input to the reader and ends the process when
/// something doesn't hold; \a input is a view of exactly its bytes, so that a sanitizer sees a read
/// behind its end.
void runOnce(const QByteArray &input);
QVector<Seed> seeds();

/// Ends the process, saying \a what, unless \a holds.
void require(bool holds, const char *what);

/// Asks a loaded \a accessor for everything it has.
void readAll(const PackageAccessor &accessor);

/// Makes a file at \a path of \a input.
void writeInput(const QString &path, const QByteArray &input);

} // namespace fuzz
} // namespace nk::pm
