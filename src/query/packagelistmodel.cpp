// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/packagelistmodel.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/inturn.h"
#include "query/listproperty.h"
#include "query/manifestfieldlist.h"
#include "query/providerconnection.h"
#include "query/rowchanges.h"

#include <QFutureWatcher>
#include <QPointer>
#include <QTimer>
#include <QtConcurrent>

#include <algorithm>
#include <chrono>

namespace nk::pm {

namespace {

constexpr std::chrono::milliseconds updateDelay{30};

using Edits = QVector<std::function<void()>>;

/// What one worker task works on: values only, so that it needs nothing of the model.
struct Query
{
    QSharedPointer<PackageIndex> index;
    QString type;
    std::function<bool(PackageNode *)> matcher;
    std::function<bool(PackageNode *, PackageNode *)> sorter;
    PackageList shown;
    bool resetWhenStuck;
    int maximumEdits;
};

/// Listeners hear of each change, and one may run an event loop or set a property. The rows that
/// edits were computed from are let alone while Editing, but for a clear, which makes the rest of
/// the edits do nothing; while Changing, between the begin and the end of one change, all is.
enum class Phase { Idle, Editing, Changing };

} // namespace

struct PackageListModelPrivate
{
    PackageListModel *q;
    ProviderConnection connection;
    QString packageType;
    QFutureWatcher<QSharedPointer<Edits>> *watcher;
    PackageList list;
    QTimer *updateTimer;
    ManifestFieldList manifestFields;
    QHash<int, QByteArray> roles{{PackageListModel::IdRole, QByteArrayLiteral("id")}};
    WatchedPointer<PackageMatcher> matcher;
    WatchedPointer<PackageSorter> sorter;
    bool resetWhenStuck = false;
    int maximumEdits = 0;
    Phase phase = Phase::Idle;
    QObject context; ///< of what calls back

    explicit PackageListModelPrivate(PackageListModel *model);

    PackageNode *node(int row) const;
    void clearList();

    // The edits, on the model's thread. Each does nothing if it no longer fits.
    void reset(const PackageList &newList);
    void apply(const RemoveRows &change);
    void apply(const InsertRows &change);
    void apply(const MoveRow &change);

    static Edits findEdits(PackageListModelPrivate *d, const Query &query);
};

PackageListModelPrivate::PackageListModelPrivate(PackageListModel *model)
    : q(model)
    , watcher(new QFutureWatcher<QSharedPointer<Edits>>(model))
    , updateTimer(new QTimer(model))
    , manifestFields(model, [model] { model->processFieldChange(); })
{
    updateTimer->setInterval(updateDelay);
    updateTimer->setSingleShot(true);
}

PackageNode *PackageListModelPrivate::node(int row) const
{
    return list.packages().value(row, nullptr);
}

void PackageListModelPrivate::clearList()
{
    if (list.isValid())
        reset(PackageList());
}

void PackageListModelPrivate::reset(const PackageList &newList)
{
    const QPointer<PackageListModel> guard(q);
    const Phase before = std::exchange(phase, Phase::Changing);
    q->beginResetModel();
    if (!guard)
        return;
    list = newList;
    phase = before;
    q->endResetModel();
}

void PackageListModelPrivate::apply(const RemoveRows &change)
{
    if (change.first < 0 || change.last >= list.size())
        return;
    phase = Phase::Changing;
    q->beginRemoveRows(QModelIndex(), change.first, change.last);
    list.list().remove(change.first, change.last - change.first + 1);
    phase = Phase::Editing;
    q->endRemoveRows();
}

void PackageListModelPrivate::apply(const InsertRows &change)
{
    if (change.first > list.size())
        return;
    const int count = change.rows.size();
    phase = Phase::Changing;
    q->beginInsertRows(QModelIndex(), change.first, change.first + count - 1);
    QVector<PackageNode *> &rows = list.list();
    rows.insert(change.first, count, nullptr);
    std::copy(change.rows.begin(), change.rows.end(), rows.begin() + change.first);
    phase = Phase::Editing;
    q->endInsertRows();
}

void PackageListModelPrivate::apply(const MoveRow &change)
{
    const auto [from, to] = change;
    if (from >= list.size() || to >= list.size())
        return;
    phase = Phase::Changing;
    q->beginMoveRows(QModelIndex(), from, from, QModelIndex(), to > from ? to + 1 : to);
    list.list().move(from, to);
    phase = Phase::Editing;
    q->endMoveRows();
}

/// Runs on a pool thread; \a d is only stored in the closures, which the model's thread calls while
/// the model is alive.
Edits PackageListModelPrivate::findEdits(PackageListModelPrivate *d, const Query &query)
{
    const PackageList wanted =
        PackageIndex::selectPackages(query.index, query.type, query.matcher, query.sorter);
    const auto reset = [d, wanted] { d->reset(wanted); };
    if (wanted.index() != query.shown.index())
        return {reset};
    const auto changes = rowChanges(query.shown.packages(), wanted.packages());
    if (!changes)
        return query.resetWhenStuck ? Edits{reset} : Edits();
    const int count = static_cast<int>(changes->size());
    if (query.maximumEdits > 0 && count > query.maximumEdits)
        return {reset};
    Edits edits;
    edits.reserve(count);
    for (const RowChange &change : *changes) {
        // Rows of an index that the model has let go of meanwhile would dangle.
        edits.append([d, index = wanted.index(), change] {
            if (d->list.index() == index)
                std::visit([d](const auto &edit) { d->apply(edit); }, change);
        });
    }
    return edits;
}

PackageListModel::PackageListModel(QAbstractListModel *parent)
    : QAbstractListModel(parent)
    , d(new PackageListModelPrivate(this))
{
    connect(d->watcher, &QFutureWatcherBase::finished, &d->context, [this] { finishListUpdate(); });
    connect(d->updateTimer, &QTimer::timeout, &d->context, [this] { updateList(); });
}

PackageListModel::~PackageListModel() = default;

QObject *PackageListModel::packageProvider() const
{
    return d->connection.provider();
}

void PackageListModel::setPackageProvider(QObject *provider)
{
    if (d->connection.follow(provider, [this] { scheduleUpdate(); }))
        callInTurn(this, &PackageListModel::updateList, &PackageListModel::packageProviderChanged);
}

QString PackageListModel::packageType() const
{
    return d->packageType;
}

void PackageListModel::setPackageType(const QString &type)
{
    if (d->packageType == type)
        return;
    d->packageType = type;
    scheduleUpdate();
    Q_EMIT packageTypeChanged();
}

QQmlListProperty<ManifestField> PackageListModel::manifestFields()
{
    return listProperty<ManifestField>(this, &d->manifestFields);
}

PackageMatcher *PackageListModel::matcher() const
{
    return d->matcher.get();
}

void PackageListModel::setMatcher(PackageMatcher *matcher)
{
    if (!d->matcher.replace(matcher))
        return;
    d->matcher.connect(&PackageMatcher::updateRequested, [this] { scheduleUpdate(); });
    d->matcher.connect(&QObject::destroyed, [this] { scheduleUpdate(); });
    scheduleUpdate();
}

PackageSorter *PackageListModel::sorter() const
{
    return d->sorter.get();
}

void PackageListModel::setSorter(PackageSorter *sorter)
{
    if (!d->sorter.replace(sorter))
        return;
    d->sorter.connect(&PackageSorter::updateRequested, [this] { scheduleUpdate(); });
    d->sorter.connect(&QObject::destroyed, [this] { scheduleUpdate(); });
    scheduleUpdate();
}

int PackageListModel::count() const
{
    return d->list.size();
}

bool PackageListModel::resetWhenStuck() const
{
    return d->resetWhenStuck;
}

void PackageListModel::setResetWhenStuck(bool reset)
{
    if (d->resetWhenStuck == reset)
        return;
    d->resetWhenStuck = reset;
    scheduleUpdate();
    Q_EMIT resetWhenStuckChanged();
}

int PackageListModel::maximumEdits() const
{
    return d->maximumEdits;
}

void PackageListModel::setMaximumEdits(int maximum)
{
    if (d->maximumEdits == maximum)
        return;
    d->maximumEdits = maximum;
    Q_EMIT maximumEditsChanged();
}

QString PackageListModel::packageAt(int index) const
{
    return d->list.id(index);
}

int PackageListModel::indexOf(const QString &id) const
{
    if (id.isEmpty())
        return 0;
    const QVector<PackageNode *> &rows = d->list.packages();
    const auto row = std::find_if(
        rows.begin(), rows.end(), [&id](const PackageNode *node) { return node->id() == id; });
    return row == rows.end() ? -1 : static_cast<int>(std::distance(rows.begin(), row));
}

QJsonValue PackageListModel::manifestField(int index, const QString &fieldName) const
{
    const PackageNode *node = d->node(index);
    return node ? node->manifestValue(fieldName) : QJsonValue(QJsonValue::Undefined);
}

int PackageListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : d->list.size();
}

QVariant PackageListModel::data(const QModelIndex &index, int role) const
{
    const int row = index.row();
    if (row < 0 || row >= rowCount())
        return {};
    if (role == IdRole)
        return d->list.id(row);
    ManifestField *field =
        role >= FirstFieldRole ? d->manifestFields.at(role - FirstFieldRole) : nullptr;
    return field ? field->read(d->node(row)) : QVariant();
}

QHash<int, QByteArray> PackageListModel::roleNames() const
{
    return d->roles;
}

void PackageListModel::classBegin()
{}

void PackageListModel::componentComplete()
{
    processFieldChange();
}

void PackageListModel::scheduleUpdate()
{
    d->updateTimer->start();
}

void PackageListModel::updateList()
{
    const QSharedPointer<PackageIndex> index = d->connection.packageIndex();
    if (d->phase == Phase::Changing || (index && d->phase == Phase::Editing)) {
        scheduleUpdate();
        return;
    }
    if (!index) {
        d->clearList();
        return;
    }
    Query query{index, d->packageType, {}, {}, d->list, d->resetWhenStuck, d->maximumEdits};
    if (PackageMatcher *matcher = d->matcher.get())
        query.matcher = matcher->matchFunction();
    if (PackageSorter *sorter = d->sorter.get())
        query.sorter = sorter->sortFunction();
    d->watcher->setFuture(QtConcurrent::run([d = d.data(), query] {
        return QSharedPointer<Edits>::create(PackageListModelPrivate::findEdits(d, query));
    }));
}

void PackageListModel::finishListUpdate()
{
    // Emptied, since the watcher keeps the result, and edits hold an index.
    const Edits edits = std::exchange(*d->watcher->result(), {});
    if (d->phase != Phase::Idle) {
        scheduleUpdate();
        return;
    }
    const QPointer<PackageListModel> guard(this);
    const int rowCountBefore = rowCount();
    for (const auto &edit : edits) {
        d->phase = Phase::Editing;
        edit();
        if (!guard)
            return;
    }
    d->phase = Phase::Idle;
    if (rowCount() != rowCountBefore)
        Q_EMIT countChanged();
}

void PackageListModel::processFieldChange()
{
    if (d->phase == Phase::Changing) {
        QTimer::singleShot(updateDelay, &d->context, [this] { processFieldChange(); });
        return;
    }
    if (!d->manifestFields.takeChange())
        return;
    const QPointer<PackageListModel> guard(this);
    const auto before = std::exchange(d->phase, Phase::Changing);
    beginResetModel();
    if (!guard)
        return;
    d->roles = {{IdRole, QByteArrayLiteral("id")}};
    for (int i = 0; i < d->manifestFields.count(); ++i) {
        if (const ManifestField *field = d->manifestFields.at(i))
            d->roles.insert(FirstFieldRole + i, field->name().toLatin1());
    }
    Q_EMIT manifestFieldsChanged();
    if (!guard)
        return;
    d->phase = before;
    endResetModel();
}

} // namespace nk::pm
