// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "sourcespec.h"

#include "network/trackedsource.h"

#include <QDateTime>
#include <QObject>

#include <memory>

namespace nk::pm::app {

/// A source at work, and what became of its last refresh.
class OpenSource : public QObject
{
    Q_OBJECT

public:
    /// \a spec is one without a fault. \a owners outlives the source.
    OpenSource(const SourceSpec &spec, SnapshotOwners &owners, QObject *parent = nullptr);
    ~OpenSource() override;

    TrackedSource *source() const { return m_source.get(); }

    /// When the source was last found to be up to date; null if never.
    QDateTime lastUpdate() const;
    /// Why the last refresh failed, for the user; empty if it didn't.
    QString fault() const;

    /// Looks for new data at once.
    void refresh();

Q_SIGNALS:
    /// lastUpdate() or fault() is another one.
    void stateChanged();

private:
    void readDirectory();

    const SourceSpec m_spec;
    const std::unique_ptr<TrackedSource> m_source;
    QDateTime m_lastReading; // of a directory
    QString m_directoryFault;
};

} // namespace nk::pm::app
