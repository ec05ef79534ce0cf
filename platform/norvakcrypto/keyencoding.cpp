// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakcrypto/keyencoding.h"

#include <sodium.h>

#include <algorithm>

namespace nk::crypto {

namespace {

constexpr int lineLength = 64;

QByteArray beginMarker(const QByteArray &label)
{
    return "-----BEGIN " + label + "-----";
}

QByteArray endMarker(const QByteArray &label)
{
    return "-----END " + label + "-----";
}

// The base64 text between the markers without its line ends; empty if the armour isn't right.
QByteArray bodyOf(const QByteArray &label, const QByteArray &pem)
{
    const QByteArray begin = beginMarker(label);
    const QByteArray end = endMarker(label);
    QByteArray text = pem.trimmed();
    if (text.size() < begin.size() + end.size() || !text.startsWith(begin) || !text.endsWith(end))
        return {};
    text.chop(end.size());
    text.remove(0, begin.size());
    text.replace("\r\n", "\n");
    const bool ownLines = text.startsWith('\n') && text.endsWith('\n');
    return ownLines ? text.replace('\n', QByteArray()) : QByteArray();
}

} // namespace

QByteArray pemEncode(const QByteArray &label, const QByteArray &der)
{
    QByteArray body = der.toBase64();
    QByteArray pem;
    pem.reserve(body.size() + body.size() / lineLength + 2 * label.size() + 40);
    pem += beginMarker(label) + '\n';
    for (int at = 0; at < body.size(); at += lineLength)
        pem.append(body.constData() + at, std::min(lineLength, body.size() - at)).append('\n');
    pem += endMarker(label) + '\n';
    sodium_memzero(body.data(), size_t(body.size()));
    return pem;
}

QByteArray pemDecode(const QByteArray &label, const QByteArray &pem)
{
    QByteArray body = bodyOf(label, pem);
    const auto decoded =
        QByteArray::fromBase64Encoding(body, QByteArray::AbortOnBase64DecodingErrors);
    QByteArray again = decoded.decoded.toBase64();
    const bool exact = decoded && again == body;
    sodium_memzero(again.data(), size_t(again.size()));
    sodium_memzero(body.data(), size_t(body.size()));
    return exact ? decoded.decoded : QByteArray();
}

} // namespace nk::crypto
