// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/packageaccessor.h"
#include "sources/localmanifests.h"
#include "sources/localpackagescan.h"

#include <QStringRef>

#include <vector>

namespace nk::pm {

/// Snapshot of a LocalPackageSource. Manifests are read by load() and don't change any more;
/// keyword and link files are only listed then, and read each time they are asked for.
class LocalPackageAccessor final : public PackageAccessor
{
public:
    /// \a root is the directory that holds "packages", "dictionary" and "links".
    explicit LocalPackageAccessor(const QString &root);
    ~LocalPackageAccessor() override;

    void load() override;

    int packageCount() const override;
    PackageInfo packageInfo(int index) const override;
    QJsonObject manifest(int index) const override;
    /// Always a valid URL, whether or not the file exists.
    QUrl fileUrl(int index, const QString &fileName) const override;
    std::unique_ptr<PackageInstaller> createInstaller(
        int index, const InstallLocation &location) const override;

    int keywordCount() const override;
    KeywordInfo keywordInfo(int index) const override;
    QStringList languages() const override;

    int linkCount() const override;
    LinkInfo linkInfo(int index) const override;

    std::optional<QVector<PackageFileInfo>> files(int index) const override;

    /// Whether something of the directory couldn't be read until now, and so is missing.
    bool isRefused() const override { return !m_isWhole; }

private:
    Q_DISABLE_COPY(LocalPackageAccessor) // m_keywords and m_links point into m_names

    QVector<QStringRef> listJsonFiles(const QString &directory);
    QString directoryPath(int index) const;
    QString typePath(int index) const;

    // A text and no QDir, which resolves its path at the first const call and so can't be read
    // from several threads.
    const QString m_root; // absolute
    mutable WholeFlag m_isWhole{true};
    LocalManifests m_manifests;
    std::vector<LocalPackageEntry> m_packages;
    QString m_names; // base names of keyword and link files, back to back
    QVector<QStringRef> m_keywords;
    QVector<QStringRef> m_links;
};

} // namespace nk::pm
