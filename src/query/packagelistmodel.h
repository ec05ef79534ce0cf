// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/manifestfield.h"
#include "query/packagematcher.h"
#include "query/packagesorter.h"

#include <norvakpackagemanager_export.h>

#include <QAbstractListModel>
#include <QJsonValue>
#include <QQmlListProperty>
#include <QQmlParserStatus>
#include <QScopedPointer>

namespace nk::pm {

struct PackageListModelPrivate;

/// The packages of one type, filtered by a matcher, ordered by a sorter, with a role per declared
/// manifest field.
///
/// Selecting, sorting and comparing with the rows on screen happens on the global thread pool, 30
/// ms after the last change that asks for it. A new index resets the model; another filter or order
/// within one index becomes row removals, insertions and moves. Role values are read from the
/// package at each data() call, and no dataChanged() tells of an install. GUI thread. None of the
/// objects set or declared is owned, and each may die before the model.
class NK_PM_EXPORT PackageListModel : public QAbstractListModel, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    Q_CLASSINFO("DefaultProperty", "manifestFields")
    Q_PROPERTY(QObject *packageProvider READ packageProvider WRITE setPackageProvider NOTIFY
                   packageProviderChanged)
    Q_PROPERTY(QString packageType READ packageType WRITE setPackageType NOTIFY packageTypeChanged)
    Q_PROPERTY(QQmlListProperty<nk::pm::ManifestField> manifestFields READ manifestFields NOTIFY
                   manifestFieldsChanged)
    Q_PROPERTY(nk::pm::PackageMatcher *matcher READ matcher WRITE setMatcher NOTIFY matcherChanged)
    Q_PROPERTY(nk::pm::PackageSorter *sorter READ sorter WRITE setSorter NOTIFY sorterChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(bool resetWhenStuck READ resetWhenStuck WRITE setResetWhenStuck NOTIFY
                   resetWhenStuckChanged)
    Q_PROPERTY(int maximumEdits READ maximumEdits WRITE setMaximumEdits NOTIFY maximumEditsChanged)

public:
    enum Role {
        IdRole = 0,          ///< "id", the package's identifier
        FirstFieldRole = 32, ///< the first manifest field; the others follow in their order
    };

    explicit PackageListModel(QAbstractListModel *parent = nullptr);
    ~PackageListModel() override;

    QObject *packageProvider() const;
    /// An object that implements IPackageProvider; any other is logged and then is the same as
    /// null.
    void setPackageProvider(QObject *provider);

    QString packageType() const;
    /// Sub-types are shown too; an empty type is all types.
    void setPackageType(const QString &type);

    QQmlListProperty<nk::pm::ManifestField> manifestFields();

    PackageMatcher *matcher() const;
    /// matcherChanged() isn't emitted.
    void setMatcher(PackageMatcher *matcher);

    PackageSorter *sorter() const;
    /// sorterChanged() isn't emitted.
    void setSorter(PackageSorter *sorter);

    int count() const;

    /// A list can't be reordered by moves when a row that wasn't at the top has to go there. By
    /// default its rows then stay as they are until the next reset; with this switched on the model
    /// is reset to the new list instead.
    bool resetWhenStuck() const;
    void setResetWhenStuck(bool reset);

    /// An update that takes more row changes than this is told as one reset instead: views need
    /// some microseconds for each change, on the GUI thread. 0, the default, is no limit.
    int maximumEdits() const;
    void setMaximumEdits(int maximum);

    /// Identifier of the package at row \a index; empty outside the list.
    Q_INVOKABLE QString packageAt(int index) const;
    /// First row of the package \a id, -1 if it isn't there; 0 for an empty \a id.
    Q_INVOKABLE int indexOf(const QString &id) const;
    /// A top-level value of the manifest at row \a index; undefined outside the list.
    Q_INVOKABLE QJsonValue manifestField(int index, const QString &fieldName) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    void classBegin() override;
    void componentComplete() override;

Q_SIGNALS:
    void packageProviderChanged();
    void packageTypeChanged();
    void manifestFieldsChanged();
    void matcherChanged();
    void sorterChanged();
    void countChanged();
    void resetWhenStuckChanged();
    void maximumEditsChanged();

private Q_SLOTS:
    void scheduleUpdate();
    void finishListUpdate();
    void processFieldChange();

private:
    void updateList();

    friend struct PackageListModelPrivate;
    QScopedPointer<PackageListModelPrivate> d;
};

} // namespace nk::pm
