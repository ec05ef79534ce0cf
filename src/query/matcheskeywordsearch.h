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
    Q_PROPERTY(MatchMode matchMode READ matchMode WRITE setMatchMode NOTIFY matchModeChanged)
    Q_PROPERTY(
        QString searchString READ searchString WRITE setSearchString NOTIFY searchStringChanged)

public:
    enum MatchMode {
        PartialMatch = 0, ///< a text of the keyword holds the search
        FullMatch = 1,    ///< a text equals it, and none before that text merely holds it
    };
    Q_ENUM(MatchMode)

    explicit MatchesKeywordSearch(QObject *parent = nullptr);
    ~MatchesKeywordSearch() override;

    MatchMode matchMode() const;
    void setMatchMode(MatchMode mode);

    QString searchString() const;
    /// One needle as a whole: neither trimmed nor split into words.
    void setSearchString(const QString &search);

    std::function<bool(PackageNode *)> matchFunction() override;

Q_SIGNALS:
    void matchModeChanged();
    void searchStringChanged();

private:
    QScopedPointer<MatchesKeywordSearchPrivate> d;
};

} // namespace nk::pm
