// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"

#include "closing/closingdown.h"
#include "index/indexlogging.h"
#include "index/packageindex_p.h"
#include "repository/packagesource.h"

#include <QElapsedTimer>
#include <QLocale>
#include <QSet>

#include <atomic>

namespace nk::pm {

namespace {

/// The key in \a available that fits \a localeName (de_AT) best: the whole name, else its language.
QString bestLanguage(const QString &localeName, const QSet<QString> &available)
{
    if (available.contains(localeName))
        return localeName;
    const QString language = localeName.section(QLatin1Char('_'), 0, 0);
    return available.contains(language) ? language : QStringLiteral("en");
}

std::atomic<quint64> lastSerial{0};

} // namespace

PackageIndexPrivate::PackageIndexPrivate(PackageIndex *index)
    : q(index)
    , serial(++lastSerial)
{}

/// Runs before the accessors have read anything: one that learns its languages from its data has
/// no say here.
void PackageIndexPrivate::chooseActiveLanguage()
{
    QSet<QString> available;
    for (const auto &accessor : accessors) {
        const auto languages = accessor->languages();
        for (const QString &language : languages)
            available.insert(language);
    }
    activeLanguage = pool.add(bestLanguage(QLocale().name(), available));
}

PackageIndex::PackageIndex()
    : d(new PackageIndexPrivate(this))
{}

PackageIndex::~PackageIndex() = default;

void PackageIndex::addSource(PackageSource *source)
{
    if (auto accessor = source->getAccessor())
        d->accessors.push_back(std::move(accessor));
}

void PackageIndex::build()
{
    QElapsedTimer timer;
    timer.start();
    d->chooseActiveLanguage();
    // The application waits for its jobs when it quits: a build that nobody will see any more gets
    // out of the way, and leaves no directory behind.
    for (unsigned int i = 0; i < d->accessors.size() && !isClosingDown(); ++i)
        buildIndex(i);
    for (unsigned int i = 0; i < d->accessors.size() && !isClosingDown(); ++i)
        buildGraph(i);
    if (isClosingDown())
        return;
    d->finishTables();
    if (isClosingDown())
        return;
    d->installLocation = InstallLocation::createRoot();
    d->pool.close();
    if (lcPackageIndex().isDebugEnabled()) {
        qCDebug(lcPackageIndex) << "Package index build took" << double(timer.nsecsElapsed()) / 1e6
                                << "msecs";
    }
}

QStringRef PackageIndex::addString(const QString &string)
{
    return d->pool.add(string);
}

QStringRef PackageIndex::activeLanguage() const
{
    return d->activeLanguage;
}

InstallLocation PackageIndex::installLocation() const
{
    return d->installLocation;
}

int PackageIndex::accessorCount() const
{
    return int(d->accessors.size());
}

QVector<std::function<nk::Request *()>> PackageIndex::fileDownloads(const QString &digest) const
{
    QVector<std::function<nk::Request *()>> downloads;
    for (auto accessor = d->accessors.crbegin(); accessor != d->accessors.crend(); ++accessor) {
        if (const auto download = (*accessor)->fileDownload(digest))
            downloads.append(download);
    }
    return downloads;
}

PackageAccessor *PackageIndex::accessor(int index) const
{
    return d->accessors[size_t(index)].get();
}

} // namespace nk::pm
