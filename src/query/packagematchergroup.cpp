// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/packagematchergroup.h"

#include "query/inturn.h"
#include "query/listproperty.h"

#include <QMetaObject>
#include <QQmlInfo>
#include <QSet>

#include <algorithm>
#include <vector>

namespace nk::pm {

struct PackageMatcherGroupPrivate
{
    explicit PackageMatcherGroupPrivate(PackageMatcherGroup *group)
        : q(group)
    {}

    PackageMatcherGroup *q;
    bool notifyPending = false;
    QList<PackageMatcher *> matchers;
    PackageMatcherGroup::MatchRequirement matchRequirement = PackageMatcherGroup::MatchAll;

    void append(PackageMatcher *matcher) { q->addMatcher(matcher); }
    int count() const { return matchers.size(); }
    PackageMatcher *at(int i) const { return matchers.value(i, nullptr); }
    void clear();

    /// Whether \a matcher is this group or sends its signal here on any way.
    bool reaches(const PackageMatcher *matcher) const;
    void listenTo(PackageMatcher *matcher);
    void forget(PackageMatcher *matcher);
    void scheduleNotification();

    /// Whose updateRequested() comes here: the members, and former ones that clear() left
    /// connected.
    QSet<PackageMatcher *> senders;
    QObject context; ///< of what calls back
};

void PackageMatcherGroupPrivate::clear()
{
    if (matchers.isEmpty())
        return;
    matchers.clear();
    scheduleNotification();
}

bool PackageMatcherGroupPrivate::reaches(const PackageMatcher *matcher) const
{
    return q == matcher || std::any_of(senders.begin(), senders.end(), [matcher](auto *sender) {
               const auto *group = qobject_cast<PackageMatcherGroup *>(sender);
               return sender == matcher || (group && group->d->reaches(matcher));
           });
}

void PackageMatcherGroupPrivate::listenTo(PackageMatcher *matcher)
{
    if (senders.contains(matcher))
        return;
    senders.insert(matcher);
    QObject::connect(matcher, &PackageMatcher::updateRequested, &context, [this] {
        Q_EMIT q->updateRequested();
    });
    QObject::connect(matcher, &QObject::destroyed, &context, [this, matcher] { forget(matcher); });
}

void PackageMatcherGroupPrivate::forget(PackageMatcher *matcher)
{
    senders.remove(matcher);
    if (matchers.removeOne(matcher))
        scheduleNotification();
}

void PackageMatcherGroupPrivate::scheduleNotification()
{
    if (notifyPending)
        return;
    notifyPending = true;
    QMetaObject::invokeMethod(
        &context, [this] { q->notifyMatcherChange(); }, Qt::QueuedConnection);
}

PackageMatcherGroup::PackageMatcherGroup(QObject *parent)
    : PackageMatcher(parent)
    , d(new PackageMatcherGroupPrivate(this))
{}

PackageMatcherGroup::~PackageMatcherGroup() = default;

PackageMatcherGroup::MatchRequirement PackageMatcherGroup::matchRequirement() const
{
    return d->matchRequirement;
}

void PackageMatcherGroup::setMatchRequirement(MatchRequirement requirement)
{
    if (d->matchRequirement == requirement)
        return;
    d->matchRequirement = requirement;
    callInTurn(
        this, &PackageMatcherGroup::matchRequirementChanged, &PackageMatcherGroup::updateRequested);
}

QQmlListProperty<PackageMatcher> PackageMatcherGroup::matchers()
{
    return listProperty<PackageMatcher>(this, d.data());
}

void PackageMatcherGroup::addMatcher(PackageMatcher *matcher)
{
    if (!matcher) {
        qmlWarning(this) << "null is no matcher";
        return;
    }
    if (d->matchers.contains(matcher))
        return;
    const auto *group = qobject_cast<PackageMatcherGroup *>(matcher);
    if (group && group->d->reaches(this)) {
        qmlWarning(this)
            << "a matcher group can't be a member of itself, nor of a group that it hears";
        return;
    }
    d->matchers.append(matcher);
    d->listenTo(matcher);
    d->scheduleNotification();
}

void PackageMatcherGroup::removeMatcher(PackageMatcher *matcher)
{
    if (!d->matchers.removeOne(matcher))
        return;
    d->senders.remove(matcher);
    disconnect(matcher, nullptr, &d->context, nullptr);
    d->scheduleNotification();
}

std::function<bool(PackageNode *)> PackageMatcherGroup::matchFunction()
{
    using Test = std::function<bool(PackageNode *)>;
    std::vector<Test> tests;
    for (PackageMatcher *matcher : qAsConst(d->matchers)) {
        if (Test test = matcher->matchFunction())
            tests.push_back(std::move(test));
    }
    if (tests.empty())
        return {};
    if (d->matchRequirement != MatchAll) {
        return [tests = std::move(tests)](PackageNode *node) {
            return std::any_of(
                tests.begin(), tests.end(), [node](const Test &test) { return test(node); });
        };
    }
    return [tests = std::move(tests)](PackageNode *node) {
        return std::all_of(
            tests.begin(), tests.end(), [node](const Test &test) { return test(node); });
    };
}

void PackageMatcherGroup::notifyMatcherChange()
{
    d->notifyPending = false;
    callInTurn(this, &PackageMatcherGroup::matchersChanged, &PackageMatcherGroup::updateRequested);
}

} // namespace nk::pm
