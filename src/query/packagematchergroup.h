// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/packagematcher.h"

#include <QQmlListProperty>
#include <QScopedPointer>

namespace nk::pm {

struct PackageMatcherGroupPrivate;

/// Several matchers as one, joined by "and" or "or". Groups nest.
///
/// Members are not owned, and one that is destroyed leaves the group. Members that restrict nothing
/// are left out under either requirement, so a group of none but such restricts nothing itself.
class NK_PM_EXPORT PackageMatcherGroup : public PackageMatcher
{
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "matchers")
    Q_PROPERTY(MatchRequirement matchRequirement READ matchRequirement WRITE setMatchRequirement)
    Q_PROPERTY(
        QQmlListProperty<nk::pm::PackageMatcher> matchers READ matchers NOTIFY matchersChanged)

public:
    enum MatchRequirement {
        MatchAll = 0, ///< every member must match
        MatchAny = 1, ///< one member is enough
    };
    Q_ENUM(MatchRequirement)

    explicit PackageMatcherGroup(QObject *parent = nullptr);
    ~PackageMatcherGroup() override;

    MatchRequirement matchRequirement() const;
    void setMatchRequirement(MatchRequirement requirement);

    /// The members in their order. Emptying the list through this property leaves the former
    /// members connected: they go on forwarding updateRequested().
    QQmlListProperty<nk::pm::PackageMatcher> matchers();

    /// Appends \a matcher. A member already there is left where it is. Null, and a group that holds
    /// this one, are refused with a warning.
    Q_INVOKABLE void addMatcher(nk::pm::PackageMatcher *matcher);
    /// Removes \a matcher and disconnects it. One that is no member is ignored.
    Q_INVOKABLE void removeMatcher(nk::pm::PackageMatcher *matcher);

    std::function<bool(PackageNode *)> matchFunction() override;

Q_SIGNALS:
    void matchRequirementChanged();
    /// Once for all changes of one turn of the event loop, after it.
    void matchersChanged();

private Q_SLOTS:
    void notifyMatcherChange();

private:
    friend struct PackageMatcherGroupPrivate;
    QScopedPointer<PackageMatcherGroupPrivate> d;
};

} // namespace nk::pm
