// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/viewfile.h"

#include "sources/polledanswer.h"

#include <norvak/request.h>

namespace nk::pm {

ViewFile::ViewFile(const QString &path, const ViewFileRules &rules, nk::Request *request)
    : QFile(path, request)
    , m_rules(rules)
    , m_request(*request)
{}

QString ViewFile::contentTag()
{
    if (!isDigested())
        return {};
    return QLatin1Char('"') + QString::fromLatin1(m_hash.result().toHex()) + QLatin1Char('"');
}

qint64 ViewFile::writeData(const char *data, qint64 size)
{
    if (m_rules.maximumSize > 0 && size > m_rules.maximumSize - m_size)
        return -1;
    const qint64 written = QFile::writeData(data, size);
    if (written > 0) {
        m_size += written;
        if (isDigested())
            m_hash.addData(data, int(written));
    }
    return written;
}

// Settled once: half a digest is none.
bool ViewFile::isDigested()
{
    if (!m_isDigested)
        m_isDigested = m_rules.contentTags && etagOf(m_request).isEmpty();
    return *m_isDigested;
}

} // namespace nk::pm
