// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "installs.h"

#include "catalogueprovider.h"
#include "preferences.h"

#include "install/packageinstaller.h"
#include "references/packagereference.h"

#include <QQmlEngine>

#include <algorithm>
#include <chrono>

namespace nk::pm::app {
namespace {

const QString installsKey = QStringLiteral("installs");
constexpr std::chrono::seconds countdownStep{1};
constexpr int reasonsShown = 3;
constexpr qint64 millisecondsPerSecond = 1000;

} // namespace

InstallState::InstallState(PackageReference *reference, QObject *parent)
    : QObject(parent)
    , m_reference(reference)
{
    m_countdown.setInterval(countdownStep);
    connect(&m_countdown, &QTimer::timeout, this, &InstallState::countDown);
    connect(reference, &PackageReference::statusChanged, this, &InstallState::update);
    update();
}

int InstallState::status() const
{
    return m_reference->status();
}

QString InstallState::reason() const
{
    const PackageInstaller *installer = m_reference->installer();
    if (m_reference->status() != PackageReference::Incomplete || !installer)
        return {};
    QStringList lines;
    const auto errors = installer->errors();
    for (const InstallError &error : errors)
        lines.append(error.message);
    lines.removeDuplicates();
    return lines.mid(0, reasonsShown).join(QLatin1Char('\n'));
}

int InstallState::secondsToRetry() const
{
    const QDateTime next = m_reference->nextAttempt();
    if (m_reference->status() != PackageReference::Incomplete || next.isNull())
        return -1;
    const qint64 left = QDateTime::currentDateTimeUtc().msecsTo(next);
    return int(std::max<qint64>(0, (left + millisecondsPerSecond - 1) / millisecondsPerSecond));
}

void InstallState::update()
{
    if (m_reference->status() == PackageReference::Incomplete)
        m_countdown.start();
    else
        m_countdown.stop();
    m_reason = reason();
    Q_EMIT changed();
    Q_EMIT secondsToRetryChanged();
}

/// A retry changes the reason, but not the status.
void InstallState::countDown()
{
    if (m_reason != reason()) {
        m_reason = reason();
        Q_EMIT changed();
    }
    Q_EMIT secondsToRetryChanged();
}

Installs::Installs(CatalogueProvider &provider, Preferences &preferences, QObject *parent)
    : QObject(parent)
    , m_provider(provider)
    , m_preferences(preferences)
{}

InstallState *Installs::install(const QString &id)
{
    PackageReference *reference = m_provider.packageReference(id);
    if (!reference)
        return nullptr;
    if (!m_remembered.contains(id)) {
        m_remembered.append(id);
        m_preferences.setValue(installsKey, m_remembered);
    }
    InstallState *state = stateOf(reference);
    noteChange();
    return state;
}

void Installs::follow(const QVector<PackageReference *> &references)
{
    for (PackageReference *reference : references)
        stateOf(reference);
    noteChange();
}

InstallState *Installs::find(const QString &id) const
{
    return m_states.value(id);
}

int Installs::statusOf(const QString &id) const
{
    const InstallState *state = find(id);
    return state ? state->status() : int(PackageReference::Unknown);
}

void Installs::restore()
{
    m_remembered = m_preferences.value(installsKey, QStringList()).toStringList();
    for (const QString &id : qAsConst(m_remembered)) {
        if (PackageReference *reference = m_provider.packageReference(id))
            stateOf(reference);
    }
    noteChange();
}

/// Made at the first call.
InstallState *Installs::stateOf(PackageReference *reference)
{
    InstallState *&state = m_states[reference->id()];
    if (state)
        return state;
    state = new InstallState(reference, this);
    QQmlEngine::setObjectOwnership(state, QQmlEngine::CppOwnership);
    connect(reference, &PackageReference::statusChanged, this, &Installs::noteChange);
    return state;
}

void Installs::noteChange()
{
    ++m_generation;
    Q_EMIT changed();
}

} // namespace nk::pm::app
