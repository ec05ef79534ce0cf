// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "index/keywordtypes.h"
#include "index/linktypes.h"
#include "install/packageinstaller.h"
#include "repository/packageaccessor.h"
#include "repository/packagesource.h"

#include <QHash>
#include <QJsonObject>
#include <QPointer>
#include <QSharedPointer>

#include <atomic>
#include <functional>

namespace nk::pm {
class KeywordList;
class KeywordNode;
class PackageIndex;
class PackageList;
class PackageNode;
} // namespace nk::pm

namespace nk::pm::test {

/// The contents of a MemorySource, filled by verbs that can be chained.
struct MemoryCatalogue
{
    QVector<PackageInfo> packages;
    QVector<QJsonObject> manifests; ///< one for each package
    QVector<KeywordInfo> keywords;
    QVector<LinkInfo> links;
    QStringList languages{"de", "en"};

    MemoryCatalogue &package(
        const QString &id, const QString &type = {}, const QJsonObject &manifest = {},
        const QString &revision = {});
    MemoryCatalogue &keyword(
        const QString &id, KeywordType type, const QVector<KeywordString> &strings);
    /// A keyword of one text, the same in German and English.
    MemoryCatalogue &word(
        const QString &id, const QString &text, KeywordType type = KeywordType::Name);
    MemoryCatalogue &link(const QString &from, int linkType, const QString &to);
    /// Links as they are read: "car is_a vehicle, vehicle uses road".
    MemoryCatalogue &linked(const QString &links);
};

/// What the accessors of one MemorySource report; outlives the source.
struct MemoryLog
{
    std::atomic<int> loads{0};
    std::atomic<int> manifestReads{0};
    QList<QPointer<class MemoryInstaller>> installers; ///< in the order of their making, GUI thread
};

/// An installer that ends when the test says so.
class MemoryInstaller : public PackageInstaller
{
    Q_OBJECT

public:
    MemoryInstaller(const QString &id, const InstallLocation &location);

    QString packageId() const { return m_id; }
    QString directory() const { return location().directory(false).path(); }
    void succeed() { finish(); }
    void fail(int code, const QString &message);

private:
    const QString m_id;
};

/// Snapshot of a MemoryCatalogue. File URLs are "memory:/<package>/<file>".
class MemoryAccessor : public PackageAccessor
{
public:
    explicit MemoryAccessor(
        const MemoryCatalogue &catalogue,
        const QSharedPointer<MemoryLog> &log = QSharedPointer<MemoryLog>::create());

    void load() override { ++m_log->loads; }
    int packageCount() const override { return m_catalogue.packages.size(); }
    PackageInfo packageInfo(int index) const override { return m_catalogue.packages.at(index); }
    QJsonObject manifest(int index) const override;
    QUrl fileUrl(int index, const QString &fileName) const override;
    std::unique_ptr<PackageInstaller> createInstaller(
        int index, const InstallLocation &location) const override;
    int keywordCount() const override { return m_catalogue.keywords.size(); }
    KeywordInfo keywordInfo(int index) const override { return m_catalogue.keywords.at(index); }
    QStringList languages() const override { return m_catalogue.languages; }
    int linkCount() const override { return m_catalogue.links.size(); }
    LinkInfo linkInfo(int index) const override { return m_catalogue.links.at(index); }

private:
    const MemoryCatalogue m_catalogue;
    const QSharedPointer<MemoryLog> m_log;
};

/// A source whose contents the test writes.
class MemorySource : public PackageSource
{
    Q_OBJECT

public:
    explicit MemorySource(int priority = 3, QObject *parent = nullptr);

    MemoryCatalogue catalogue; ///< taken as it stands by the next getAccessor()
    /// Makes the accessors instead, if it is set.
    std::function<std::unique_ptr<PackageAccessor>()> accessorMaker;
    int persistCount = 0;
    int updateCount = 0;

    /// Tells the repository that the catalogue has changed.
    void publish() { Q_EMIT updateRequired(); }

    MemoryLog &log() { return *m_log; }
    /// The newest live installer of package \a id; null if there is none.
    MemoryInstaller *installer(const QString &id) const;

    int priority() const override { return m_priority; }
    std::unique_ptr<PackageAccessor> getAccessor() override;
    void persist() override { ++persistCount; }
    void update() override { ++updateCount; }

private:
    const int m_priority;
    const QSharedPointer<MemoryLog> m_log;
};

/// A finished index of \a sources, later ones winning, built on the calling thread.
QSharedPointer<PackageIndex> buildIndex(const QList<PackageSource *> &sources);
/// A finished index of one MemorySource with \a catalogue.
QSharedPointer<PackageIndex> buildIndex(const MemoryCatalogue &catalogue);

/// The node with the identifier \a id; null if there is none of this kind.
PackageNode *packageOf(const QSharedPointer<PackageIndex> &index, const QString &id);
KeywordNode *keywordOf(const QSharedPointer<PackageIndex> &index, const QString &id);

/// The identifiers of a selection in its order, joined with blanks.
QString ids(const PackageList &list);
QString ids(const KeywordList &list);

} // namespace nk::pm::test
