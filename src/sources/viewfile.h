// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QCryptographicHash>
#include <QFile>

#include <optional>

namespace nk {
class Request;
}

namespace nk::pm {

/// What is asked of the answers of one source; may change while an answer comes.
struct ViewFileRules
{
    bool contentTags = false; ///< an answer without an ETag is named by its content
    qint64 maximumSize = 0;   ///< bytes; 0 for any number
};

/// The file that takes the body of one answer. It refuses to grow beyond the rules' size, and takes
/// the digest of the bytes while they pass, if that is wanted when the first of them come.
class ViewFile final : public QFile
{
public:
    /// Child and sink of \a request; \a rules must live as long.
    ViewFile(const QString &path, const ViewFileRules &rules, nk::Request *request);

    /// The quoted SHA-256 of all that was written, in the form of an ETag; empty if it isn't
    /// wanted.
    QString contentTag();

protected:
    qint64 writeData(const char *data, qint64 size) override;

private:
    bool isDigested();

    const ViewFileRules &m_rules;
    const nk::Request &m_request;
    qint64 m_size = 0;
    std::optional<bool> m_isDigested;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
};

} // namespace nk::pm
