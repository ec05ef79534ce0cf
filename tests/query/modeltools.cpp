// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "modeltools.h"

#include "index/packageindexnode.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTest>
#include <QThreadPool>
#include <QTimer>

namespace nk::pm::test {

ModelLog::ModelLog(QAbstractItemModel &model)
{
    using Model = QAbstractItemModel;
    const auto range = [this](const char *what) {
        return [this, what](const QModelIndex &, int first, int last) {
            m_entries.append(QString("%1 %2 %3").arg(what).arg(first).arg(last));
        };
    };
    QObject::connect(&model, &Model::rowsInserted, &m_context, range("insert"));
    QObject::connect(&model, &Model::rowsRemoved, &m_context, range("remove"));
    QObject::connect(
        &model, &Model::rowsMoved, &m_context,
        [this](const QModelIndex &, int from, int, const QModelIndex &, int before) {
            const int to = before > from ? before - 1 : before;
            m_entries.append(QString("move %1 %2").arg(from).arg(to));
        });
    QObject::connect(&model, &Model::modelReset, &m_context, [this] { m_entries.append("reset"); });
}

QString ids(const QAbstractItemModel &model)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.data(model.index(row, 0), 0).toString());
    return texts.join(' ');
}

void settle(QObject &model)
{
    const QPointer<QTimer> timer = model.findChild<QTimer *>(); // which may go on the way
    QCoreApplication::processEvents();                          // a queued update
    QVERIFY(QTest::qWaitFor([&timer] { return !timer || !timer->isActive(); }));
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
}

void IdMatcher::accept(const QString &ids)
{
    m_accepted = ids.split(' ');
    Q_EMIT updateRequested();
}

std::function<bool(PackageNode *)> IdMatcher::matchFunction()
{
    ++functionsMade;
    auto wait = std::make_shared<std::atomic<bool>>(!gate.isNull());
    return [ids = m_accepted, gate = std::exchange(gate, {}), wait](PackageNode *node) {
        if (wait->exchange(false))
            gate->acquire();
        return ids.contains(node->id());
    };
}

} // namespace nk::pm::test
