// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "opensource.h"

#include "network/directoryfault.h"
#include "sources/localpackagesource.h"
#include "terminal/sourceurls.h"

#include <QDir>

namespace nk::pm::app {
namespace {

std::unique_ptr<TrackedSource> makeSource(const SourceSpec &spec, SnapshotOwners &owners)
{
    const QString kind = kindName(spec.kind);
    switch (spec.kind) {
    case SourceKind::CouchDB:
        return std::make_unique<TrackedSource>(
            makeCouchDBSource(terminal::databaseUrl(spec.location)), kind, owners);
    case SourceKind::Server:
        return std::make_unique<TrackedSource>(
            makeServerSource(terminal::serverUrl(spec.location)), kind, owners);
    case SourceKind::Local:
        break;
    }
    const QString path = QDir(spec.location).absolutePath();
    return std::make_unique<TrackedSource>(
        std::make_unique<LocalPackageSource>(path), kind, path, owners);
}

} // namespace

OpenSource::OpenSource(const SourceSpec &spec, SnapshotOwners &owners, QObject *parent)
    : QObject(parent)
    , m_spec(spec)
    , m_source(makeSource(spec, owners))
{
    if (m_source->network())
        connect(m_source->network(), &SourceNetwork::polled, this, &OpenSource::stateChanged);
    else
        readDirectory();
}

OpenSource::~OpenSource() = default;

QDateTime OpenSource::lastUpdate() const
{
    return m_source->network() ? m_source->network()->lastAnswer() : m_lastReading;
}

QString OpenSource::fault() const
{
    return m_source->network() ? m_source->network()->fault() : m_directoryFault;
}

void OpenSource::refresh()
{
    if (m_source->network()) {
        m_source->update();
        return;
    }
    // A directory doesn't tell of changes: it is simply read again.
    readDirectory();
    Q_EMIT m_source->updateRequired();
}

void OpenSource::readDirectory()
{
    m_directoryFault = directoryFault(m_spec.location);
    if (m_directoryFault.isEmpty())
        m_lastReading = QDateTime::currentDateTime();
    Q_EMIT stateChanged();
}

} // namespace nk::pm::app
