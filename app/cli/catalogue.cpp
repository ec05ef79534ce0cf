// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue.h"

#include "answerwait.h"

#include "network/directoryfault.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "references/packagereference.h"
#include "sources/localpackagesource.h"

#include <QDir>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <chrono>

namespace nk::pm::cli {
namespace {

constexpr std::chrono::seconds translationPatience{10};

QString faultOf(const TrackedSource &source, const PackageAccessor &snapshot)
{
    const app::SourceNetwork *network = source.network();
    if (network && !network->hasPolled())
        return QStringLiteral("the server didn't answer in time");
    if (network && !network->fault().isEmpty())
        return network->fault();
    return source.refusalOf(snapshot);
}

} // namespace

Catalogue::Catalogue(const SourceOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_repository(PackageRepository::PersistSources)
{}

Catalogue::~Catalogue()
{
    for (const auto &source : m_sources)
        m_repository.removeSource(source.get());
}

QString Catalogue::open()
{
    QString fault = makeLocalSources();
    if (!fault.isEmpty())
        return fault;
    makeNetworkSources();
    waitForAnswers();
    for (const auto &source : m_sources)
        m_repository.addSource(source.get());
    waitForIndex();
    return faultOfNetwork();
}

QString Catalogue::makeLocalSources()
{
    for (const QString &path : m_options.localDirectories) {
        QString fault = app::directoryFault(path);
        if (!fault.isEmpty())
            return fault;
        const QString absolute = QDir(path).absolutePath();
        m_sources.push_back(std::make_unique<TrackedSource>(
            std::make_unique<LocalPackageSource>(absolute, nullptr), QStringLiteral("local"),
            absolute, m_owners));
    }
    return {};
}

void Catalogue::makeNetworkSources()
{
    for (const QUrl &url : m_options.servers)
        m_sources.push_back(std::make_unique<TrackedSource>(
            app::makeServerSource(url), QStringLiteral("server"), m_owners));
    for (const QUrl &url : m_options.databases)
        m_sources.push_back(std::make_unique<TrackedSource>(
            app::makeCouchDBSource(url), QStringLiteral("couchdb"), m_owners));
}

void Catalogue::waitForAnswers()
{
    AnswerWait wait;
    for (const auto &source : m_sources) {
        if (source->network())
            wait.add(source->network());
    }
    wait.exec();
}

void Catalogue::waitForIndex()
{
    QEventLoop loop;
    connect(&m_repository, &PackageRepository::packageIndexChanged, &loop, &QEventLoop::quit);
    loop.exec();
}

/// A source that doesn't answer is worth no more than a warning, unless nothing is left to show.
QString Catalogue::faultOfNetwork()
{
    for (const auto &source : m_sources) {
        const PackageAccessor &snapshot = *snapshotOf(*source);
        const QString reason = faultOf(*source, snapshot);
        if (reason.isEmpty())
            continue;
        m_warnings.append(QStringLiteral("%1: %2").arg(source->location(), reason));
        if (snapshot.packageCount() > 0)
            m_warnings.last() += QStringLiteral("; showing what it had before");
    }
    const bool isEmpty = PackageIndex::selectPackages(index(), {}, {}, {}).size() == 0;
    return isEmpty && !m_warnings.isEmpty() ? m_warnings.first() : QString();
}

bool Catalogue::lacksFiles() const
{
    return std::any_of(m_sources.begin(), m_sources.end(), [this](const auto &source) {
        return !source->network() && snapshotOf(*source)->isRefused();
    });
}

const TrackedSource *Catalogue::sourceOf(const PackageNode *node) const
{
    return m_owners.value(node->accessor());
}

const PackageAccessor *Catalogue::snapshotOf(const TrackedSource &source) const
{
    const auto current = index();
    for (int i = 0; i < int(m_sources.size()); ++i) {
        const auto *accessor = current->accessor(i);
        if (m_owners.value(accessor) == &source)
            return accessor;
    }
    return nullptr;
}

QVector<PackageReference *> Catalogue::translations()
{
    QVector<PackageReference *> references;
    const auto packages =
        PackageIndex::selectPackages(index(), QStringLiteral("translation"), {}, {});
    for (const PackageNode *package : packages) {
        // Null for a package without an identifier.
        if (auto *reference = m_repository.packageReference(package->id().toString()))
            references.append(reference);
    }
    return references;
}

void Catalogue::waitForTranslations()
{
    QEventLoop loop;
    const auto isSettled = [this] {
        const auto references = translations();
        return std::none_of(references.begin(), references.end(), [](const auto *reference) {
            return reference->status() == PackageReference::Installing;
        });
    };
    const auto references = translations();
    for (const PackageReference *reference : references) {
        connect(reference, &PackageReference::statusChanged, &loop, [&] {
            if (isSettled())
                loop.quit();
        });
    }
    QTimer::singleShot(translationPatience, &loop, &QEventLoop::quit);
    if (!isSettled())
        loop.exec();
}

} // namespace nk::pm::cli
