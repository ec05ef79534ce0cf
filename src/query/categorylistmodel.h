// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QAbstractListModel>
#include <QScopedPointer>

namespace nk::pm {

struct CategoryListModelPrivate;

/// The category keywords of the current index, in the order of their display strings: all of them,
/// or those that packages of one type reach.
///
/// They are selected on the global thread pool; each update ends in a reset of the model, also one
/// that changes nothing. GUI thread.
class NK_PM_EXPORT CategoryListModel : public QAbstractListModel
{
    Q_OBJECT
    /// Shows the categories that packages of this type or a sub-type reach; all of them, used or
    /// not, if it is empty.
    Q_PROPERTY(QString packageType READ packageType WRITE setPackageType NOTIFY packageTypeChanged)
    /// An object that implements IPackageProvider, not owned; any other is logged and then is the
    /// same as null. Without one there are no rows.
    Q_PROPERTY(QObject *packageProvider READ packageProvider WRITE setPackageProvider NOTIFY
                   packageProviderChanged)

public:
    /// The roles of data().
    enum Role {
        IdRole = 0,   ///< "id", the keyword's identifier
        NameRole = 1, ///< "name", its text in the index's language
    };

    /// An empty model, which looks for nothing until a property is set.
    explicit CategoryListModel(QObject *parent = nullptr);
    ~CategoryListModel() override;

    /// As it was set; null at first.
    QString packageType() const;
    /// Setting both properties in one turn of the event loop costs one search.
    void setPackageType(const QString &type);

    /// Null also once the provider was destroyed; its repository is followed on, and the rows stay.
    QObject *packageProvider() const;
    /// The rows follow at the end of a search that the next turn of the event loop starts, and then
    /// with each new index of the provider's repository.
    void setPackageProvider(QObject *provider);

    /// Number of categories; 0 below a row.
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /// A QString for the two roles; invalid for any other and outside the list.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// The names of both roles, the same for all models.
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    /// Also for an object that was refused, as packageProvider() is null then.
    void packageProviderChanged();
    /// Before the search that the other type asks for.
    void packageTypeChanged();

private Q_SLOTS:
    void updateList();
    void finishUpdate();

private:
    friend struct CategoryListModelPrivate;
    QScopedPointer<CategoryListModelPrivate> d;
};

} // namespace nk::pm
