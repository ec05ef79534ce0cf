// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakdataabstraction/document.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QSaveFile>

namespace nk::data {

namespace {

bool fail(QString *error, const QString &path, const QString &reason)
{
    if (error)
        *error = QStringLiteral("%1: %2").arg(path, reason);
    return false;
}

} // namespace

Document::Document(Context *context, QObject *parent)
    : QObject(parent)
    , m_context(context)
{}

Document::~Document() = default;

Context *Document::context() const
{
    return m_context;
}

void Document::setContext(Context *context)
{
    m_context = context;
}

bool Document::load(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(error, path, file.errorString());
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return fail(error, path, file.errorString());
    QJsonParseError fault;
    const QJsonDocument json = QJsonDocument::fromJson(bytes, &fault);
    if (fault.error != QJsonParseError::NoError)
        return fail(
            error, path,
            QStringLiteral("%1, at byte %2").arg(fault.errorString()).arg(fault.offset));
    if (!json.isObject())
        return fail(error, path, QStringLiteral("not a JSON object"));
    QString reason;
    return setContent(json.object(), &reason) || fail(error, path, reason);
}

bool Document::save(const QString &path, QString *error) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(error, path, file.errorString());
    const QByteArray bytes = QJsonDocument(content()).toJson();
    // A full disk takes a part of the bytes and sets no error for that, and commit() doesn't look
    // whether the last of them could be written.
    if (file.write(bytes) != bytes.size() || !file.flush())
        return fail(error, path, QStringLiteral("can't be written whole"));
    return file.commit() || fail(error, path, file.errorString());
}

} // namespace nk::data
