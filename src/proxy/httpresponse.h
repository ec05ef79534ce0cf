// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QPair>

#include <initializer_list>

namespace nk::pm {

/// The reason phrase of an HTTP status; empty for a status that the local file proxy has none for.
QByteArray reasonPhrase(int code);

/// Status line, headers by name and value in the order given, and the empty line behind them.
QByteArray responseHead(int code, std::initializer_list<QPair<QByteArray, QByteArray>> headers);

/// So many bytes from a file's start decide its content type.
constexpr int contentTypeBytes = 64;

/// The name of the MIME type of a file that begins with \a start. Not for use by two threads at
/// once.
QByteArray contentType(const QByteArray &start);

} // namespace nk::pm
