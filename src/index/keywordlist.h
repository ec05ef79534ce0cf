// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QSharedPointer>
#include <QString>
#include <QVector>

namespace nk::pm {

class KeywordNode;
class PackageIndex;

/// A result of PackageIndex::selectKeywords(): nodes, and the index that keeps them alive.
///
/// A value with implicit sharing, safe to copy across threads. Holding a list is holding its index.
class NK_PM_EXPORT KeywordList
{
public:
    /// An invalid, empty list.
    KeywordList();
    /// The list that a query answers with; \a index must hold the nodes alive.
    KeywordList(QSharedPointer<PackageIndex> index, const QVector<KeywordNode const *> &keywords);

    /// Whether there is an index behind the list. A query without a hit gives a valid, empty one.
    bool isValid() const { return !m_index.isNull(); }
    /// Number of nodes; 0 for an invalid list.
    int size() const { return m_keywords.size(); }
    /// The node at \a i, unchecked.
    KeywordNode const *operator[](int i) const { return m_keywords.at(i); }
    /// For range-based for. Valid until the list is changed or gone.
    KeywordNode const *const *begin() const { return m_keywords.constData(); }
    /// One past the last node.
    KeywordNode const *const *end() const { return m_keywords.constData() + m_keywords.size(); }
    /// Identifier of the node at \a i; empty outside the list.
    QString id(int i) const;
    /// What the user reads for the node at \a i; empty outside the list.
    QString displayString(int i) const;

private:
    QSharedPointer<PackageIndex> m_index;
    QVector<KeywordNode const *> m_keywords;
};

} // namespace nk::pm
