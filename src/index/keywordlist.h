// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QMetaType>
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
    KeywordList(QSharedPointer<PackageIndex> index, const QVector<KeywordNode const *> &keywords);

    bool isValid() const { return !m_index.isNull(); }
    int size() const { return m_keywords.size(); }
    /// The node at \a i, unchecked.
    KeywordNode const *operator[](int i) const { return m_keywords.at(i); }
    KeywordNode const *const *begin() const { return m_keywords.constData(); }
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
