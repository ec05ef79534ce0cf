// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QAbstractListModel>
#include <QScopedPointer>

namespace nk::pm {

struct KeywordSuggestionModelPrivate;

/// Completions for a search field: every keyword text of the current index that holds what was
/// typed, case ignored, sorted by code units.
///
/// They are searched for on the global thread pool, once for all changes of one turn of the event
/// loop; each result resets the model. When the search is emptied while a task runs, its result
/// still arrives and stays until the next update. GUI thread.
class NK_PM_EXPORT KeywordSuggestionModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(QString packageType READ packageType WRITE setPackageType NOTIFY packageTypeChanged)
    Q_PROPERTY(QObject *packageProvider READ packageProvider WRITE setPackageProvider NOTIFY
                   packageProviderChanged)
    Q_PROPERTY(
        QString searchString READ searchString WRITE setSearchString NOTIFY searchStringChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        SuggestionRole = 0,    ///< "suggestion", the plain text
        DisplayStringRole = 1, ///< "displayString", as HTML with what was typed in bold
    };

    explicit KeywordSuggestionModel(QObject *parent = nullptr);
    ~KeywordSuggestionModel() override;

    QString packageType() const;
    /// Limits the completions to keywords that packages of \a type reach; empty for no limit.
    void setPackageType(const QString &type);

    QObject *packageProvider() const;
    /// An object that implements IPackageProvider, not owned; any other is logged and then is the
    /// same as null.
    void setPackageProvider(QObject *provider);

    QString searchString() const;
    /// One needle as a whole, taken literally. Empty for no completions.
    void setSearchString(const QString &text);

    int count() const;

    /// The plain text at row \a index; empty outside the list.
    Q_INVOKABLE QString suggestionAt(int index) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void packageProviderChanged();
    void packageTypeChanged();
    void searchStringChanged();
    void countChanged();

private Q_SLOTS:
    void updateList();
    void finishUpdate();

private:
    friend struct KeywordSuggestionModelPrivate;
    QScopedPointer<KeywordSuggestionModelPrivate> d;
};

} // namespace nk::pm
