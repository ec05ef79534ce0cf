// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/packagematcher.h"

#include <QScopedPointer>
#include <QString>

namespace nk::pm {

struct MatchesKeywordSearchPrivate;

/// Matches packages for which a keyword holds that reads like searchString in the index's language,
/// case ignored. Restricts nothing while searchString is empty.
class NK_PM_EXPORT MatchesKeywordSearch : public PackageMatcher
{
    Q_OBJECT
    /// How much of a text the search must be; PartialMatch at first.
    Q_PROPERTY(MatchMode matchMode READ matchMode WRITE setMatchMode NOTIFY matchModeChanged)
    /// One needle as a whole: neither trimmed nor split into words, and no expression.
    Q_PROPERTY(
        QString searchString READ searchString WRITE setSearchString NOTIFY searchStringChanged)

public:
    /// What counts as reading like the search.
    enum MatchMode {
        PartialMatch = 0, ///< a text of the keyword holds the search
        FullMatch = 1,    ///< a text equals it, and none before that text merely holds it
    };
    Q_ENUM(MatchMode)

    /// Restricts nothing at first.
    explicit MatchesKeywordSearch(QObject *parent = nullptr);
    ~MatchesKeywordSearch() override;

    /// As it was set.
    MatchMode matchMode() const;
    /// Emits matchModeChanged(), then updateRequested(), unless it is the present one; also while
    /// there is nothing to search for.
    void setMatchMode(MatchMode mode);

    /// As it was set; null at first.
    QString searchString() const;
    /// Emits searchStringChanged(), then updateRequested(), unless it is the present one.
    void setSearchString(const QString &search);

    /// Looks at the keywords' texts, those reached along links included; the package's identifier
    /// and manifest are not searched.
    std::function<bool(PackageNode *)> matchFunction() override;

Q_SIGNALS:
    /// From within the setter.
    void matchModeChanged();
    /// From within the setter.
    void searchStringChanged();

private:
    QScopedPointer<MatchesKeywordSearchPrivate> d;
};

} // namespace nk::pm
