// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

namespace nk::crypto {

/// \a der as a PEM block (RFC 7468) with \a label in its marker lines, lines of 64 characters, each
/// ended by LF.
QByteArray pemEncode(const QByteArray &label, const QByteArray &der);

/// The content of the one block with \a label that \a pem consists of; empty if there is anything
/// else in it. Lines may end in LF or CRLF and white space may stand around the block. The base64
/// text must be the one that its content gives: no stray bits, no missing padding.
QByteArray pemDecode(const QByteArray &label, const QByteArray &pem);

} // namespace nk::crypto
