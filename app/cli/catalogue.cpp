// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue.h"

#include "output.h"

#include "network/directoryfault.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "references/packagereference.h"
#include "sources/localpackagesource.h"

#include <QDir>
#include <QEventLoop>
#include <QHash>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <numeric>

namespace nk::pm::cli {
namespace {

constexpr std::chrono::seconds translationPatience{10};
constexpr std::chrono::seconds answerPatience{20}; // without a byte
constexpr std::chrono::milliseconds progressInterval{500};

QString faultOf(const TrackedSource &source, const PackageAccessor &snapshot)
{
    const app::SourceNetwork *network = source.network();
    if (network && !network->hasPolled())
        return QStringLiteral("the server didn't answer in time");
    if (network && !network->fault().isEmpty())
        return network->fault();
    return source.refusalOf(snapshot);
}

/// Tells on a terminal how much has come from all sources together, once that takes a while.
class AnswerProgress
{
public:
    AnswerProgress()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { show(); });
        m_timer.start(progressInterval);
    }

    void note(const app::SourceNetwork *network, qint64 bytes)
    {
        qint64 &known = m_bytes[network];
        known = std::max(known, bytes); // where a redirect leads, it begins again
    }

private:
    void show()
    {
        const qint64 bytes = std::accumulate(m_bytes.cbegin(), m_bytes.cend(), qint64(0));
        m_line.show(QStringLiteral("Waiting for the sources: %1 bytes so far").arg(bytes));
    }

    QHash<const app::SourceNetwork *, qint64> m_bytes;
    QTimer m_timer;
    Progress m_line;
};

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
    QEventLoop loop;
    const auto haveAllPolled = [this] {
        return std::all_of(m_sources.begin(), m_sources.end(), [](const auto &source) {
            return !source->network() || source->network()->hasPolled();
        });
    };
    QTimer patience;
    connect(&patience, &QTimer::timeout, &loop, &QEventLoop::quit);
    patience.start(answerPatience);
    AnswerProgress progress;
    for (const auto &source : m_sources) {
        const app::SourceNetwork *network = source->network();
        if (!network)
            continue;
        connect(network, &app::SourceNetwork::polled, &loop, [&] {
            if (haveAllPolled())
                loop.quit();
        });
        connect(network, &app::SourceNetwork::pollProgress, &loop, [&, network](qint64 bytes) {
            patience.start(); // patience is for silence: a large answer may take its time
            progress.note(network, bytes);
        });
    }
    if (!haveAllPolled())
        loop.exec();
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

bool Catalogue::translationsAreSettled()
{
    const auto packages =
        PackageIndex::selectPackages(index(), QStringLiteral("translation"), {}, {});
    for (const PackageNode *package : packages) {
        if (m_repository.packageReference(package->id().toString())->status()
            == PackageReference::Installing)
            return false;
    }
    return true;
}

void Catalogue::waitForTranslations()
{
    QEventLoop loop;
    const auto check = [this, &loop] {
        if (translationsAreSettled())
            loop.quit();
    };
    const auto packages =
        PackageIndex::selectPackages(index(), QStringLiteral("translation"), {}, {});
    for (const PackageNode *package : packages) {
        connect(
            m_repository.packageReference(package->id().toString()),
            &PackageReference::statusChanged, &loop, check);
    }
    QTimer::singleShot(translationPatience, &loop, &QEventLoop::quit);
    if (!translationsAreSettled())
        loop.exec();
}

} // namespace nk::pm::cli
