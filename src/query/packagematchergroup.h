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
    // Declared without the signal deliberately. clazy:excludeall=qproperty-without-notify
    /// MatchAll at first. A binding to it isn't told of changes; matchRequirementChanged() is there
    /// for those who connect by hand.
    Q_PROPERTY(MatchRequirement matchRequirement READ matchRequirement WRITE setMatchRequirement)
    /// The members in their order; matchers nested in a group's declaration land here.
    Q_PROPERTY(
        QQmlListProperty<nk::pm::PackageMatcher> matchers READ matchers NOTIFY matchersChanged)

public:
    /// How the members are joined.
    enum MatchRequirement {
        MatchAll = 0, ///< every member must match
        MatchAny = 1, ///< one member is enough
    };
    Q_ENUM(MatchRequirement)

    /// A group without members, which restricts nothing.
    explicit PackageMatcherGroup(QObject *parent = nullptr);
    ~PackageMatcherGroup() override;

    /// As it was set.
    MatchRequirement matchRequirement() const;
    /// Emits matchRequirementChanged(), then updateRequested(), at once, unless it is the present
    /// one.
    void setMatchRequirement(MatchRequirement requirement);

    /// For QML; append() is addMatcher(). Emptying the list through this property leaves the former
    /// members connected: the group goes on forwarding their updateRequested().
    QQmlListProperty<nk::pm::PackageMatcher> matchers();

    /// Appends \a matcher. A member already there is left where it is. Null, and a group that holds
    /// this one or still forwards its signal as that of a former member, are refused with a
    /// warning.
    Q_INVOKABLE void addMatcher(nk::pm::PackageMatcher *matcher);
    /// Removes \a matcher and disconnects it. One that is no member is ignored.
    Q_INVOKABLE void removeMatcher(nk::pm::PackageMatcher *matcher);

    /// The members' functions as they are now, called in their order up to the first that decides.
    std::function<bool(PackageNode *)> matchFunction() override;

Q_SIGNALS:
    /// From within the setter.
    void matchRequirementChanged();
    /// Once for all changes of one turn of the event loop, after it; updateRequested() follows.
    void matchersChanged();

private Q_SLOTS:
    void notifyMatcherChange();

private:
    friend struct PackageMatcherGroupPrivate;
    QScopedPointer<PackageMatcherGroupPrivate> d;
};

} // namespace nk::pm
