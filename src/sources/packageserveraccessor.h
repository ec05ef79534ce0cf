// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "proxy/ifileproxy.h"
#include "repository/packageaccessor.h"

#include <norvakcrypto/ed25519.h>

#include <QScopedPointer>

namespace nk::account {
class Service;
}

namespace nk::pm {

struct PackageServerAccessorPrivate;

/// Snapshot of a package server: one ledger, read in place.
///
/// load() parses the ledger and verifies it whole; a ledger with anything wrong is an empty
/// snapshot. Its strings are converted only when an operation hands them out. Files that aren't in
/// the file store yet have URLs of the file proxy, through which the snapshot downloads them on
/// demand.
class PackageServerAccessor final : public PackageAccessor, public IFileProxy
{
public:
    /// Verifies with the build's own trust key. \a service isn't owned; without it nothing is
    /// downloaded. GUI thread.
    PackageServerAccessor(nk::account::Service *service, const QByteArray &ledger);
    /// The same with another \a trustKey.
    PackageServerAccessor(
        nk::account::Service *service, const QByteArray &ledger,
        const nk::crypto::ed25519::PublicKey &trustKey);
    /// On any thread. Downloads for the file proxy go on and are answered.
    ~PackageServerAccessor() override;

    void load() override;

    int packageCount() const override;
    PackageInfo packageInfo(int index) const override;
    QJsonObject manifest(int index) const override;
    /// The first call for a file that isn't in the store belongs to the GUI thread.
    QUrl fileUrl(int index, const QString &fileName) const override;
    std::unique_ptr<PackageInstaller> createInstaller(
        int index, const InstallLocation &location) const override;

    int keywordCount() const override;
    KeywordInfo keywordInfo(int index) const override;
    QStringList languages() const override;

    int linkCount() const override;
    LinkInfo linkInfo(int index) const override;

    QByteArray issuerKey(int index) const override;
    bool isRefused() const override;
    std::optional<QVector<PackageFileInfo>> files(int index) const override;
    std::function<nk::Request *()> fileDownload(const QString &digest) const override;

    void requestFile(const QUrl &url) override;

private:
    Q_DISABLE_COPY(PackageServerAccessor)

    QScopedPointer<PackageServerAccessorPrivate> d;
};

} // namespace nk::pm
