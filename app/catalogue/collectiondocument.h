// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "collectionmodel.h"

#include "collection/collection.h"

#include <QDateTime>
#include <QObject>

#include <memory>

namespace nk::pm::app {

/// The collection that is open, the file that it is kept in, and whether the two are the same. It
/// asks nobody anything: that is CollectionActions' part.
///
/// Operations that can fail give a text for the user, which names the file and what to do, or an
/// empty one; whatever fails leaves the collection and its file as they were.
class CollectionDocument : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString path READ path NOTIFY changed)
    Q_PROPERTY(QString name READ name NOTIFY changed)
    Q_PROPERTY(bool modified READ isModified NOTIFY changed)
    Q_PROPERTY(int count READ count NOTIFY changed)
    Q_PROPERTY(QAbstractItemModel *packages READ packages CONSTANT)

public:
    CollectionDocument(CatalogueProvider &provider, Installs &installs, QObject *parent = nullptr);
    ~CollectionDocument() override;

    /// Empty for a collection that was never saved.
    QString path() const { return m_path; }
    /// The file's name without its directories.
    QString name() const;
    /// Whether there is something to be saved.
    bool isModified() const { return m_isModified; }
    int count() const { return m_packages.rowCount(); }
    QAbstractItemModel *packages() { return &m_packages; }

    /// A binding that calls it names count too.
    Q_INVOKABLE bool contains(const QString &id) const { return m_collection->contains(id); }
    QString add(const QString &id);
    Q_INVOKABLE void remove(const QString &id);

    /// Begins an empty collection.
    void clear();
    /// Replaces the collection by that of the file, and has installed what is missing.
    QString open(const QString &path);
    /// Writes the file \a path, which the collection is kept in from now on.
    QString save(const QString &path);
    /// Whether somebody else has written the file since it was opened or saved here.
    bool hasChangedOnDisk() const;

Q_SIGNALS:
    void changed();

private:
    struct Stamp
    {
        QDateTime time;
        qint64 size = 0;
    };

    static Stamp stampOf(const QString &path);
    void replace(std::unique_ptr<Collection> collection, const QString &path, const Stamp &stamp);

    CollectionContext m_context;
    std::unique_ptr<Collection> m_collection;
    CollectionModel m_packages;
    QString m_path;
    Stamp m_stamp; // of the file as it was opened or saved
    bool m_isModified = false;
};

} // namespace nk::pm::app
