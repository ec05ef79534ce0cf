// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/categorylistmodel.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/providerconnection.h"

#include <QFutureWatcher>
#include <QPointer>
#include <QtConcurrent>

namespace nk::pm {

struct CategoryListModelPrivate
{
    CategoryListModel *q;
    ProviderConnection connection;
    QFutureWatcher<KeywordList> *watcher;
    bool updatePending = false;
    KeywordList list;
    KeywordList found; ///< list, unless a reset is being announced
    QString packageType;
    QObject context; ///< of what calls back

    explicit CategoryListModelPrivate(CategoryListModel *model)
        : q(model)
        , watcher(new QFutureWatcher<KeywordList>(model))
    {}

    void scheduleList();
};

void CategoryListModelPrivate::scheduleList()
{
    if (updatePending)
        return;
    updatePending = true;
    QMetaObject::invokeMethod(
        &context, [this] { q->updateList(); }, Qt::QueuedConnection);
}

namespace {

KeywordList selectCategories(const QSharedPointer<PackageIndex> &index, const QString &packageType)
{
    if (packageType.isEmpty())
        return PackageIndex::selectKeywords(
            index, [](KeywordNode *keyword) { return keyword->isCategory(); });
    const QStringRef type(&packageType);
    return PackageIndex::selectKeywords(index, [&type](KeywordNode *keyword) {
        return keyword->isUsedByType(type) && keyword->isCategory();
    });
}

} // namespace

CategoryListModel::CategoryListModel(QObject *parent)
    : QAbstractListModel(parent)
    , d(new CategoryListModelPrivate(this))
{
    connect(d->watcher, &QFutureWatcherBase::finished, &d->context, [this] { finishUpdate(); });
}

CategoryListModel::~CategoryListModel() = default;

QString CategoryListModel::packageType() const
{
    return d->packageType;
}

void CategoryListModel::setPackageType(const QString &type)
{
    if (d->packageType == type)
        return;
    d->packageType = type;
    d->scheduleList();
    Q_EMIT packageTypeChanged();
}

QObject *CategoryListModel::packageProvider() const
{
    return d->connection.provider();
}

void CategoryListModel::setPackageProvider(QObject *provider)
{
    if (!d->connection.follow(provider, [this] { updateList(); }))
        return;
    d->scheduleList();
    Q_EMIT packageProviderChanged();
}

int CategoryListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : d->list.size();
}

QVariant CategoryListModel::data(const QModelIndex &index, int role) const
{
    const int row = index.row();
    if (row < 0 || row >= rowCount())
        return {};
    if (role == IdRole)
        return d->list.id(row);
    if (role == NameRole)
        return d->list.displayString(row);
    return {};
}

QHash<int, QByteArray> CategoryListModel::roleNames() const
{
    return {{IdRole, QByteArrayLiteral("id")}, {NameRole, QByteArrayLiteral("name")}};
}

void CategoryListModel::updateList()
{
    d->updatePending = false;
    d->watcher->setFuture(
        QtConcurrent::run(selectCategories, d->connection.packageIndex(), d->packageType));
}

void CategoryListModel::finishUpdate()
{
    const QPointer<CategoryListModel> guard(this);
    d->found = d->watcher->result();
    beginResetModel();
    if (!guard)
        return;
    d->list = d->found; // of a later search, if a listener has run an event loop
    endResetModel();
}

} // namespace nk::pm
