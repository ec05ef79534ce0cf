// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/keywordsuggestionmodel.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/providerconnection.h"

#include <QFutureWatcher>
#include <QPointer>
#include <QRegularExpression>
#include <QSet>
#include <QtConcurrent>

#include <algorithm>

namespace nk::pm {

struct KeywordSuggestionModelPrivate
{
    KeywordSuggestionModel *q;
    ProviderConnection connection;
    QFutureWatcher<QStringList> *watcher;
    bool updatePending = false;
    QString packageType;
    QString searchString;
    QRegularExpression highlightExpression;
    QStringList suggestions;
    QStringList found; ///< suggestions, unless a reset is being announced
    QObject context;   ///< of what calls back

    explicit KeywordSuggestionModelPrivate(KeywordSuggestionModel *model)
        : q(model)
        , watcher(new QFutureWatcher<QStringList>(model))
    {}

    void scheduleList();
    void show(const QStringList &newSuggestions);
    QString highlighted(const QString &suggestion) const;
};

void KeywordSuggestionModelPrivate::scheduleList()
{
    if (updatePending)
        return;
    updatePending = true;
    QMetaObject::invokeMethod(
        &context, [this] { q->updateList(); }, Qt::QueuedConnection);
}

void KeywordSuggestionModelPrivate::show(const QStringList &newSuggestions)
{
    const QPointer<KeywordSuggestionModel> guard(q);
    const int countBefore = suggestions.size();
    found = newSuggestions;
    q->beginResetModel();
    if (!guard)
        return;
    suggestions = found; // of a later search, if a listener has run an event loop
    q->endResetModel();
    if (guard && suggestions.size() != countBefore)
        Q_EMIT q->countChanged();
}

QString KeywordSuggestionModelPrivate::highlighted(const QString &suggestion) const
{
    return suggestion.toHtmlEscaped().replace(highlightExpression, QStringLiteral("<b>\\1</b>"));
}

namespace {

/// The keywords with a text that holds \a needle, and that packages of \a type reach unless it is
/// empty. The text is looked at first: to search the links takes far longer.
KeywordList selectKeywords(
    const QSharedPointer<PackageIndex> &index, const QStringRef &type, const QStringRef &needle)
{
    return PackageIndex::selectKeywords(index, [&type, &needle](KeywordNode *keyword) {
        return !keyword->matchingStrings(needle).isEmpty()
               && (type.isEmpty() || keyword->isUsedByType(type));
    });
}

QStringList findSuggestions(
    const QSharedPointer<PackageIndex> &index, const QString &packageType, const QString &search)
{
    QSet<QString> found;
    const QStringRef needle(&search);
    for (const KeywordNode *keyword : selectKeywords(index, QStringRef(&packageType), needle)) {
        const auto strings = keyword->matchingStrings(needle);
        for (const QStringRef &string : strings)
            found.insert(string.toString());
    }
    QStringList suggestions(found.begin(), found.end());
    std::sort(suggestions.begin(), suggestions.end());
    return suggestions;
}

} // namespace

KeywordSuggestionModel::KeywordSuggestionModel(QObject *parent)
    : QAbstractListModel(parent)
    , d(new KeywordSuggestionModelPrivate(this))
{
    connect(d->watcher, &QFutureWatcherBase::finished, &d->context, [this] { finishUpdate(); });
}

KeywordSuggestionModel::~KeywordSuggestionModel() = default;

QString KeywordSuggestionModel::packageType() const
{
    return d->packageType;
}

void KeywordSuggestionModel::setPackageType(const QString &type)
{
    if (d->packageType == type)
        return;
    d->packageType = type;
    d->scheduleList();
    Q_EMIT packageTypeChanged();
}

QObject *KeywordSuggestionModel::packageProvider() const
{
    return d->connection.provider();
}

void KeywordSuggestionModel::setPackageProvider(QObject *provider)
{
    if (!d->connection.follow(provider, [this] { updateList(); }))
        return;
    d->scheduleList();
    Q_EMIT packageProviderChanged();
}

QString KeywordSuggestionModel::searchString() const
{
    return d->searchString;
}

void KeywordSuggestionModel::setSearchString(const QString &text)
{
    if (d->searchString == text)
        return;
    d->searchString = text;
    // The expression runs over HTML: the needle is first made HTML too, and only then literal.
    const QString needle = QRegularExpression::escape(text.toHtmlEscaped());
    d->highlightExpression = QRegularExpression(
        QStringLiteral("(%1)").arg(needle), QRegularExpression::CaseInsensitiveOption);
    d->scheduleList();
    Q_EMIT searchStringChanged();
}

int KeywordSuggestionModel::count() const
{
    return d->suggestions.size();
}

QString KeywordSuggestionModel::suggestionAt(int index) const
{
    return d->suggestions.value(index);
}

int KeywordSuggestionModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : d->suggestions.size();
}

QVariant KeywordSuggestionModel::data(const QModelIndex &index, int role) const
{
    const int row = index.row();
    if (row < 0 || row >= rowCount())
        return {};
    if (role == SuggestionRole)
        return d->suggestions.at(row);
    if (role == DisplayStringRole)
        return d->highlighted(d->suggestions.at(row));
    return {};
}

QHash<int, QByteArray> KeywordSuggestionModel::roleNames() const
{
    return {
        {SuggestionRole, QByteArrayLiteral("suggestion")},
        {DisplayStringRole, QByteArrayLiteral("displayString")}};
}

void KeywordSuggestionModel::updateList()
{
    d->updatePending = false;
    const QSharedPointer<PackageIndex> index = d->connection.packageIndex();
    if (!index || d->searchString.isEmpty()) {
        if (!d->suggestions.isEmpty())
            d->show({});
        return;
    }
    d->watcher->setFuture(
        QtConcurrent::run(findSuggestions, index, d->packageType, d->searchString));
}

void KeywordSuggestionModel::finishUpdate()
{
    d->show(d->watcher->result());
}

} // namespace nk::pm
