// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/httpresponse.h"

#include <QCache>
#include <QHash>
#include <QMimeDatabase>

namespace nk::pm {

QByteArray reasonPhrase(int code)
{
    static const QHash<int, QByteArray> phrases{
        {200, "OK"},
        {400, "Bad Request"},
        {404, "Not Found"},
        {405, "Method Not Allowed"},
    };
    return phrases.value(code);
}

QByteArray responseHead(int code, std::initializer_list<QPair<QByteArray, QByteArray>> headers)
{
    QByteArray head;
    head.reserve(256);
    head += "HTTP/1.1 " + QByteArray::number(code) + ' ' + reasonPhrase(code) + "\r\n";
    for (const auto &[name, value] : headers)
        head += name + ": " + value + "\r\n";
    return head += "\r\n";
}

QByteArray contentType(const QByteArray &start)
{
    static const QMimeDatabase database;
    // The same few bytes begin most files of a kind, and to match them against every rule of the
    // database takes longer than all the rest of an answer.
    static QCache<QByteArray, QByteArray> known(1000);
    if (const QByteArray *name = known.object(start))
        return *name;
    QByteArray name = database.mimeTypeForData(start).name().toLatin1();
    known.insert(start, new QByteArray(name));
    return name;
}

} // namespace nk::pm
