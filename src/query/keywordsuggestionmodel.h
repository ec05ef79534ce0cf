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
    /// Limits the completions to keywords that packages of this type or a sub-type reach; empty for
    /// no limit.
    Q_PROPERTY(QString packageType READ packageType WRITE setPackageType NOTIFY packageTypeChanged)
    /// An object that implements IPackageProvider, not owned; any other is logged and then is the
    /// same as null. Without one there are no completions.
    Q_PROPERTY(QObject *packageProvider READ packageProvider WRITE setPackageProvider NOTIFY
                   packageProviderChanged)
    /// What was typed: one needle as a whole, taken literally. Empty for no completions.
    Q_PROPERTY(
        QString searchString READ searchString WRITE setSearchString NOTIFY searchStringChanged)
    /// The number of rows.
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    /// The roles of data().
    enum Role {
        SuggestionRole = 0,    ///< "suggestion", the plain text
        DisplayStringRole = 1, ///< "displayString", as HTML with what was typed in bold; see data()
    };

    /// An empty model, which looks for nothing until a property is set.
    explicit KeywordSuggestionModel(QObject *parent = nullptr);
    ~KeywordSuggestionModel() override;

    /// As it was set; null at first.
    QString packageType() const;
    /// The search starts with the next turn of the event loop.
    void setPackageType(const QString &type);

    /// Null also once the provider was destroyed; its repository is followed on, and the rows stay.
    QObject *packageProvider() const;
    /// The search starts with the next turn of the event loop, and again with each new index of the
    /// provider's repository.
    void setPackageProvider(QObject *provider);

    /// As it was set; null at first.
    QString searchString() const;
    /// data() marks the rows that stand by the new text from now on, unannounced; the search for
    /// others starts with the next turn of the event loop.
    void setSearchString(const QString &text);

    /// Of the last search that has ended, whatever searchString is by now.
    int count() const;

    /// The plain text at row \a index; empty outside the list.
    Q_INVOKABLE QString suggestionAt(int index) const;

    /// count(); 0 below a row.
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /// A QString for the two roles; invalid for any other and outside the list. What was typed is
    /// marked in the HTML as it stands, its entities included: "m" marks the middle of "&amp;" too.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// The names of both roles, the same for all models.
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    /// Also for an object that was refused, as packageProvider() is null then.
    void packageProviderChanged();
    /// Before the search that the other type asks for.
    void packageTypeChanged();
    /// Before the search for the other text.
    void searchStringChanged();
    /// After the model's reset. Not emitted when other rows of the same number came in.
    void countChanged();

private Q_SLOTS:
    void updateList();
    void finishUpdate();

private:
    friend struct KeywordSuggestionModelPrivate;
    QScopedPointer<KeywordSuggestionModelPrivate> d;
};

} // namespace nk::pm
