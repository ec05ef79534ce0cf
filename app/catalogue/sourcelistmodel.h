// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QAbstractListModel>

namespace nk::pm::app {

class CatalogueProvider;
class Preferences;

/// The sources as a list to show and to edit. Remembers them.
class SourceListModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(bool trustsDevelopmentKey READ trustsDevelopmentKey CONSTANT)

public:
    enum Role {
        KindRole = Qt::UserRole, ///< "kind": "local", "couchdb" or "server"
        LocationRole,            ///< "location", without credentials
        PackagesRole,            ///< "packages": how many of the current index come from there
        LastUpdateRole,          ///< "lastUpdate", a date; invalid if never
        FaultRole,               ///< "fault": why the last refresh failed; empty if it didn't
    };

    SourceListModel(
        CatalogueProvider &provider, Preferences &preferences, QObject *parent = nullptr);

    /// Whether anybody can sign for this program, since it was built with the key that comes along.
    static bool trustsDevelopmentKey();

    /// Adds the source and remembers it. Gives what is wrong with it, or an empty text.
    Q_INVOKABLE QString add(const QString &kind, const QString &location);
    Q_INVOKABLE void remove(int row);
    /// Opens what was remembered; a source that has a fault by now is passed over, and kept.
    void restore();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    void update();
    void remember();

    CatalogueProvider &m_provider;
    Preferences &m_preferences;
    int m_rows = 0;
    QStringList m_unopened; // remembered, but no sources that this program knows
};

} // namespace nk::pm::app
