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
    Q_PROPERTY(QString packageType READ packageType WRITE setPackageType NOTIFY packageTypeChanged)
    Q_PROPERTY(QObject *packageProvider READ packageProvider WRITE setPackageProvider NOTIFY
                   packageProviderChanged)

public:
    enum Role {
        IdRole = 0,   ///< "id", the keyword's identifier
        NameRole = 1, ///< "name", its text in the index's language
    };

    explicit CategoryListModel(QObject *parent = nullptr);
    ~CategoryListModel() override;

    QString packageType() const;
    /// Empty for all categories, used or not.
    void setPackageType(const QString &type);

    QObject *packageProvider() const;
    /// An object that implements IPackageProvider, not owned; any other is logged and then is the
    /// same as null.
    void setPackageProvider(QObject *provider);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void packageProviderChanged();
    void packageTypeChanged();

private Q_SLOTS:
    void updateList();
    void finishUpdate();

private:
    QScopedPointer<CategoryListModelPrivate> d;
};

} // namespace nk::pm
