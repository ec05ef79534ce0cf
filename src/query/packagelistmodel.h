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

/// The packages of one type, filtered, ordered, with a role per declared manifest field.
/// Selecting, sorting and comparing with the rows on screen happens on the global thread pool, 30
/// ms after the last change that asks for it. A new index resets the model; another filter or order
/// becomes row removals, insertions and moves. Values are read at each data() call; no
/// dataChanged() tells of an install. GUI thread. No object set or declared is owned; each may die
/// at any time.
class NK_PM_EXPORT PackageListModel : public QAbstractListModel, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    Q_CLASSINFO("DefaultProperty", "manifestFields")
    /// An IPackageProvider; any other object is logged and taken for null, which gives no rows.
    Q_PROPERTY(QObject *packageProvider READ packageProvider WRITE setPackageProvider NOTIFY
                   packageProviderChanged)
    /// Packages of this type and its sub-types are shown; of all types if it is empty.
    Q_PROPERTY(QString packageType READ packageType WRITE setPackageType NOTIFY packageTypeChanged)
    /// The fields, each a role named after it; those nested in the declaration land here.
    Q_PROPERTY(QQmlListProperty<nk::pm::ManifestField> manifestFields READ manifestFields NOTIFY
                   manifestFieldsChanged)
    /// Which packages are shown; null for all. A binding to it isn't told of changes.
    Q_PROPERTY(nk::pm::PackageMatcher *matcher READ matcher WRITE setMatcher NOTIFY matcherChanged)
    /// Their order; null for the index's own. A binding to it isn't told of changes.
    Q_PROPERTY(nk::pm::PackageSorter *sorter READ sorter WRITE setSorter NOTIFY sorterChanged)
    /// The number of rows as views see them, which lags behind the other properties.
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    /// Moves can't bring a row to the top. If one has to go there, the rows stay as they are until
    /// the next reset; with this switched on the model is reset to the new list instead.
    Q_PROPERTY(bool resetWhenStuck READ resetWhenStuck WRITE setResetWhenStuck NOTIFY
                   resetWhenStuckChanged)
    /// An update of more row changes than this, which cost views some microseconds each, is told as
    /// one reset instead. 0, the default, is no limit.
    Q_PROPERTY(int maximumEdits READ maximumEdits WRITE setMaximumEdits NOTIFY maximumEditsChanged)

public:
    /// The roles of data() that don't depend on the declared fields.
    enum Role {
        IdRole = 0,          ///< "id", the package's identifier
        FirstFieldRole = 32, ///< the first manifest field; the others follow in their order
    };

    /// An empty model, which looks for nothing until it has a provider.
    explicit PackageListModel(QAbstractListModel *parent = nullptr);
    ~PackageListModel() override;

    /// Null also once the provider was destroyed; its repository is followed on, and rows stay.
    QObject *packageProvider() const;
    /// The one setter that starts the update at once, without the delay.
    void setPackageProvider(QObject *provider);

    /// As it was set; null at first.
    QString packageType() const;
    /// A type that no package has empties the list.
    void setPackageType(const QString &type);

    /// For QML. A change of the list makes new roles in the next turn of the event loop.
    QQmlListProperty<nk::pm::ManifestField> manifestFields();

    /// Null also once the matcher was destroyed, which counts as a change of it.
    PackageMatcher *matcher() const;
    /// From now on the rows follow its updateRequested(). matcherChanged() isn't emitted.
    void setMatcher(PackageMatcher *matcher);

    /// Null also once the sorter was destroyed, which counts as a change of it.
    PackageSorter *sorter() const;
    /// From now on the rows follow its updateRequested(). sorterChanged() isn't emitted.
    void setSorter(PackageSorter *sorter);

    /// As rowCount().
    int count() const;

    /// False at first.
    bool resetWhenStuck() const;
    /// Asks for an update, so that a list that is stuck comes free.
    void setResetWhenStuck(bool reset);

    /// 0 at first.
    int maximumEdits() const;
    /// Holds from the next update on, and asks for none. A negative number is no limit either.
    void setMaximumEdits(int maximum);

    /// Identifier of the package at row \a index; empty outside the list.
    Q_INVOKABLE QString packageAt(int index) const;
    /// First row of the package \a id, -1 if it isn't there; 0 for an empty \a id.
    Q_INVOKABLE int indexOf(const QString &id) const;
    /// A top-level value of the manifest at row \a index; undefined outside the list.
    Q_INVOKABLE QJsonValue manifestField(int index, const QString &fieldName) const;

    /// count(); 0 below a row.
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /// The identifier as a QString, or what the role's field reads; else, and outside, invalid.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// "id" and the fields' names, in Latin-1, as they were when the list of fields last changed.
    QHash<int, QByteArray> roleNames() const override;

    /// Does nothing.
    void classBegin() override;
    /// Makes the roles of the declared fields, before the first view asks for them.
    void componentComplete() override;

Q_SIGNALS:
    /// Also for an object that was refused, as packageProvider() is null then.
    void packageProviderChanged();
    /// From within the setter; the rows follow later.
    void packageTypeChanged();
    /// Within the model's reset to new roles, once for all changes of one turn of the event loop.
    void manifestFieldsChanged();
    /// Never emitted.
    void matcherChanged();
    /// Never emitted.
    void sorterChanged();
    /// After an update's last row change; not when rows go because provider or index has gone.
    void countChanged();
    /// From within the setter.
    void resetWhenStuckChanged();
    /// From within the setter.
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
