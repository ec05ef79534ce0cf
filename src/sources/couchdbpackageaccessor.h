// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/packageaccessor.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QSharedPointer>
#include <QTemporaryDir>
#include <QUrl>
#include <QVector>

#include <memory>

class QNetworkAccessManager;

namespace nk::pm {

class FileStore;

/// Snapshot reader of a CouchDB source: one response of the view that lists packages, keywords and
/// links.
///
/// Documents are kept as JSON and their fields read on demand. Made on the GUI thread; see
/// PackageAccessor for the rest.
class CouchDBPackageAccessor : public PackageAccessor
{
public:
    /// A response larger than this many bytes is cut, is broken JSON then, and leaves the accessor
    /// empty.
    static constexpr qint64 maximumResponseSize = 0x400000;

    /// \a path is the file of the response and may be empty; \a url the database's, against which
    /// files are resolved. \a manager (not owned, may go at any time) carries the installers'
    /// requests. \a directory keeps the file, and is let go when load() has read it.
    CouchDBPackageAccessor(
        const QString &path, const QUrl &url, QNetworkAccessManager *manager,
        std::shared_ptr<QTemporaryDir> directory = {});
    ~CouchDBPackageAccessor() override;

    void load() override;

    int packageCount() const override;
    PackageInfo packageInfo(int index) const override;
    QJsonObject manifest(int index) const override;
    QUrl fileUrl(int index, const QString &fileName) const override;
    std::unique_ptr<PackageInstaller> createInstaller(
        int index, const InstallLocation &location) const override;

    int keywordCount() const override;
    KeywordInfo keywordInfo(int index) const override;
    QStringList languages() const override;

    int linkCount() const override;
    LinkInfo linkInfo(int index) const override;

    /// A response without rows; not a file that is gone.
    bool isRefused() const override { return m_isRefused; }
    std::optional<QVector<PackageFileInfo>> files(int index) const override;
    std::function<nk::Request *()> fileDownload(const QString &digest) const override;

private:
    QJsonArray readRows();
    QUrl documentUrl(const QJsonObject &document) const;

    const QUrl m_url;
    const QString m_path;
    std::shared_ptr<QTemporaryDir> m_directory; // null once the file was read
    bool m_isRefused = false;
    QVector<QJsonObject> m_documents; // every row's value, in row order
    QVector<int> m_packages;          // positions in m_documents
    QVector<int> m_keywords;
    QVector<int> m_links;
    QPointer<QNetworkAccessManager> m_networkManager;
    QSharedPointer<FileStore> m_fileStore;
};

} // namespace nk::pm
