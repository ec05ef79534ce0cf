// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakdataabstraction/context.h>

#include <QJsonObject>
#include <QPointer>
#include <QString>

namespace nk::data {

/// Something that the user keeps in a file of JSON. What the file holds is up to the subclasses.
/// GUI thread.
class NORVAK_DATA_EXPORT Document : public QObject
{
    Q_OBJECT

public:
    explicit Document(Context *context = nullptr, QObject *parent = nullptr);
    ~Document() override;

    /// Null if the document never had one or it was destroyed. Not owned.
    Context *context() const;
    void setContext(Context *context);

    /// Replaces the content by that of the file \a path. If this fails the document stays as it
    /// was, and \a error, if given, says what is wrong with which file.
    bool load(const QString &path, QString *error = nullptr);
    /// Writes the file \a path, whole or not at all: if this fails, the file is as it was, and
    /// \a error, if given, says why.
    bool save(const QString &path, QString *error = nullptr) const;

protected:
    /// Takes \a content over. If it is none of this kind of document, returns false with the
    /// \a reason, and changes nothing.
    virtual bool setContent(const QJsonObject &content, QString *reason) = 0;
    virtual QJsonObject content() const = 0;

private:
    QPointer<Context> m_context;
};

} // namespace nk::data
