// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakdataabstraction/linkeddocument.h>

#include <QScopedPointer>
#include <QVariant>

namespace nk::data {

struct DataFieldPrivate;

/// A declared value of a document's structs: its name, and how it is read, written and compared.
/// This one takes values that JSON has itself; subclasses take others. GUI thread.
class NORVAK_DATA_EXPORT DataField : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

public:
    explicit DataField(QObject *parent = nullptr);
    ~DataField() override;

    QString name() const;
    void setName(const QString &name);

    /// Whether \a a and \a b are the same value of this field.
    virtual bool compare(const QVariant &a, const QVariant &b) const;
    /// \a value as this field would read it after writing it.
    virtual QVariant convert(const QVariant &value);
    /// The field's value in the struct \a key of \a document; invalid if it has none.
    virtual QVariant read(LinkedDocument *document, const QString &key);
    /// Stores \a value in the struct \a key of \a document. An invalid one removes what is there.
    virtual void write(LinkedDocument *document, const QString &key, const QVariant &value);

Q_SIGNALS:
    void nameChanged();

private:
    QScopedPointer<DataFieldPrivate> d;
};

} // namespace nk::data
