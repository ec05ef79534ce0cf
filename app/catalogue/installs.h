// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVector>

namespace nk::pm {
class PackageReference;
} // namespace nk::pm

namespace nk::pm::app {

class CatalogueProvider;
class Preferences;

/// How the install of one package stands, in words.
class InstallState : public QObject
{
    Q_OBJECT
    Q_PROPERTY(nk::pm::PackageReference *reference READ reference CONSTANT)
    Q_PROPERTY(int status READ status NOTIFY changed)
    Q_PROPERTY(QString reason READ reason NOTIFY changed)
    Q_PROPERTY(int secondsToRetry READ secondsToRetry NOTIFY secondsToRetryChanged)

public:
    /// \a reference outlives the object.
    InstallState(PackageReference *reference, QObject *parent);

    PackageReference *reference() const { return m_reference; }
    /// A PackageReference::Status.
    int status() const;
    /// The errors behind Incomplete, one a line; empty otherwise.
    QString reason() const;
    /// Until the next attempt; 0 while it is at work, -1 if none is due.
    int secondsToRetry() const;

Q_SIGNALS:
    /// Another status, or another reason for the same one.
    void changed();
    void secondsToRetryChanged();

private:
    void update();
    void countDown();

    PackageReference *const m_reference;
    QString m_reason; // as changed() has told it
    QTimer m_countdown;
};

/// The packages that the user wants installed: each for itself, which is remembered, or as part of
/// a collection, which isn't.
class Installs : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int generation READ generation NOTIFY changed)

public:
    Installs(CatalogueProvider &provider, Preferences &preferences, QObject *parent = nullptr);

    /// Installs the package, and keeps it installed from now on. Null for an empty \a id.
    Q_INVOKABLE nk::pm::app::InstallState *install(const QString &id);
    /// Takes \a references up, which install their packages anyway, and remembers nothing. None of
    /// them is null.
    void follow(const QVector<PackageReference *> &references);
    /// The state of a package that is wanted; null for any other.
    Q_INVOKABLE nk::pm::app::InstallState *find(const QString &id) const;
    /// The PackageReference::Status of \a id as a number; Unknown if it isn't wanted. A binding
    /// that calls it names generation too.
    Q_INVOKABLE int statusOf(const QString &id) const;

    /// Installs what was remembered.
    void restore();

    /// Counts up with each change of a state.
    int generation() const { return m_generation; }

Q_SIGNALS:
    void changed();

private:
    InstallState *stateOf(PackageReference *reference);
    void noteChange();

    CatalogueProvider &m_provider;
    Preferences &m_preferences;
    QHash<QString, InstallState *> m_states;
    QStringList m_remembered;
    int m_generation = 0;
};

} // namespace nk::pm::app
