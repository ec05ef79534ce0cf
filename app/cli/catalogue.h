// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "network/trackedsource.h"
#include "options.h"

#include "repository/packagerepository.h"

#include <QObject>
#include <QSharedPointer>

#include <memory>
#include <vector>

namespace nk::pm {
class PackageNode;
class PackageReference;
} // namespace nk::pm

namespace nk::pm::cli {

using app::SnapshotOwners;
using app::TrackedSource;

/// The sources of the command line, merged. The one place that knows how a source is made.
///
/// Its waiting operations run an event loop of their own.
class Catalogue : public QObject
{
    Q_OBJECT

public:
    explicit Catalogue(const SourceOptions &options, QObject *parent = nullptr);
    ~Catalogue() override;

    /// Opens the sources, waits for those on the network until they have answered or been silent
    /// for some seconds, and for the first index. Gives what is wrong with a source, or an empty
    /// text.
    QString open();

    /// What the user should know of sources that are used all the same.
    QStringList warnings() const { return m_warnings; }
    /// Whether files of a directory can't be read, so that packages may lack what they require.
    bool lacksFiles() const;

    PackageRepository *repository() { return &m_repository; }
    /// The current index; never null after open() went well.
    QSharedPointer<PackageIndex> index() const { return m_repository.packageIndex(); }

    const std::vector<std::unique_ptr<TrackedSource>> &sources() const { return m_sources; }
    /// The source that \a node of the current index comes from.
    const TrackedSource *sourceOf(const PackageNode *node) const;
    /// What the current index knows of \a source; lives as long as that index.
    const PackageAccessor *snapshotOf(const TrackedSource &source) const;

    /// Waits until the translation packages are installed, so that names appear in the user's
    /// language; gives up on a slow one after ten seconds.
    void waitForTranslations();

private:
    /// Gives what is wrong with one of them, or an empty text.
    QString makeLocalSources();
    void makeNetworkSources();
    void waitForAnswers();
    void waitForIndex();
    QString faultOfNetwork();
    /// Those of the current index.
    QVector<PackageReference *> translations();

    const SourceOptions m_options;
    SnapshotOwners m_owners;
    std::vector<std::unique_ptr<TrackedSource>> m_sources; // outlive the repository
    PackageRepository m_repository;
    QStringList m_warnings;
};

} // namespace nk::pm::cli
