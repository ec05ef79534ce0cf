// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "catalogue.h"
#include "exitcodes.h"
#include "interrupt.h"
#include "output.h"

#include "index/packageindex.h"
#include "install/storecare.h"

#include <QEventLoop>
#include <QJsonArray>

namespace nk::pm::cli {
namespace {

void begin(StoreCare &care, const StoreOptions &options, const Catalogue &catalogue)
{
    switch (options.action) {
    case StoreOptions::Usage:
        return care.measure();
    case StoreOptions::Verify:
        return care.verify();
    case StoreOptions::Repair:
        return care.repair([index = catalogue.index()](const QString &digest) {
            return index->fileDownloads(digest);
        });
    case StoreOptions::Clean:
        return care.clean(options.maximumBytes);
    }
}

QString text(const StoreProgress &progress)
{
    if (progress.totalFiles == 0)
        return QStringLiteral("Looking through the store");
    QString result =
        QStringLiteral("Files of the store: %1 of %2").arg(progress.files).arg(progress.totalFiles);
    if (progress.totalBytes > 0)
        result += QStringLiteral(" (%1 %)").arg(100 * progress.bytes / progress.totalBytes);
    return result;
}

/// Runs an event loop until the task has ended.
StoreReport carryOut(
    const StoreOptions &options, const Catalogue &catalogue, const Interrupt &interrupt)
{
    StoreCare care;
    Progress line;
    QEventLoop loop;
    QObject::connect(&care, &StoreCare::finished, &loop, &QEventLoop::quit);
    QObject::connect(&care, &StoreCare::progressed, &loop, [&line](const StoreProgress &progress) {
        line.show(text(progress));
    });
    QObject::connect(&interrupt, &Interrupt::raised, &care, &StoreCare::cancel);
    begin(care, options, catalogue);
    if (interrupt.number() != 0)
        care.cancel();
    loop.exec();
    return care.report();
}

QString stateText(StoreDamage::State state)
{
    switch (state) {
    case StoreDamage::InStore:
        return QStringLiteral("damaged");
    case StoreDamage::Removed:
        return QStringLiteral("removed");
    case StoreDamage::Replaced:
        return QStringLiteral("replaced");
    }
    return {};
}

QString outcomeText(StoreReport::Outcome outcome)
{
    switch (outcome) {
    case StoreReport::Done:
        return QStringLiteral("done");
    case StoreReport::Cancelled:
        return QStringLiteral("stopped");
    case StoreReport::Busy:
        return QStringLiteral("busy");
    }
    return {};
}

Table usageTable(const StoreReport &report, bool isCleaned)
{
    Table table{
        {QStringLiteral("FILES"), QStringLiteral("BYTES"), QStringLiteral("WHAT")}, {}, {0, 1}};
    const auto add = [&table](int files, qint64 bytes, const QString &what) {
        table.rows.append({QString::number(files), QString::number(bytes), what});
    };
    const StoreUsage &usage = report.usage;
    if (isCleaned)
        add(report.removedFiles, report.removedBytes, QStringLiteral("removed"));
    add(usage.files, usage.bytes, QStringLiteral("in the store"));
    add(usage.usedFiles, usage.usedBytes, QStringLiteral("of these installed by a program"));
    add(usage.leftoverFiles, usage.leftoverBytes, QStringLiteral("of unfinished downloads"));
    return table;
}

/// A row for each file of the store and each installed file that is or was damaged.
Table damageTable(const StoreReport &report)
{
    Table table{
        {QStringLiteral("STATE"), QStringLiteral("DIGEST"), QStringLiteral("PLACE")}, {}, {}};
    const auto add = [&table](const QString &state, const QString &digest, const QString &place) {
        table.rows.append({state, digest, place});
    };
    for (const StoreDamage &damage : report.damages) {
        add(stateText(damage.state), damage.digest, QStringLiteral("the store"));
        for (const QString &path : damage.damagedPaths)
            add(stateText(StoreDamage::InStore), damage.digest, path);
        for (const QString &path : damage.mendedPaths)
            add(stateText(StoreDamage::Replaced), damage.digest, path);
    }
    for (const QString &path : report.unreadable)
        add(QStringLiteral("unreadable"), QStringLiteral("-"), path);
    for (const QString &path : report.unknown)
        add(QStringLiteral("unknown"), QStringLiteral("-"), path);
    return table;
}

QJsonObject asJson(const StoreUsage &usage)
{
    return {
        {QStringLiteral("files"), usage.files},
        {QStringLiteral("bytes"), usage.bytes},
        {QStringLiteral("usedFiles"), usage.usedFiles},
        {QStringLiteral("usedBytes"), usage.usedBytes},
        {QStringLiteral("leftoverFiles"), usage.leftoverFiles},
        {QStringLiteral("leftoverBytes"), usage.leftoverBytes}};
}

QJsonArray asJson(const QVector<StoreDamage> &damages)
{
    QJsonArray array;
    for (const StoreDamage &damage : damages) {
        array.append(QJsonObject{
            {QStringLiteral("digest"), damage.digest},
            {QStringLiteral("state"), stateText(damage.state)},
            {QStringLiteral("damagedPaths"), QJsonArray::fromStringList(damage.damagedPaths)},
            {QStringLiteral("mendedPaths"), QJsonArray::fromStringList(damage.mendedPaths)}});
    }
    return array;
}

QJsonObject asJson(const StoreReport &report)
{
    return {
        {QStringLiteral("outcome"), outcomeText(report.outcome)},
        {QStringLiteral("whole"), report.isWhole()},
        {QStringLiteral("usage"), asJson(report.usage)},
        {QStringLiteral("damages"), asJson(report.damages)},
        {QStringLiteral("unreadable"), QJsonArray::fromStringList(report.unreadable)},
        {QStringLiteral("unknown"), QJsonArray::fromStringList(report.unknown)},
        {QStringLiteral("removedFiles"), report.removedFiles},
        {QStringLiteral("removedBytes"), report.removedBytes}};
}

/// What isn't as it should be; an empty text if all is.
QString faultOf(const StoreReport &report, StoreOptions::Action action)
{
    if (report.outcome == StoreReport::Cancelled)
        return QStringLiteral("stopped, the rest of the store wasn't looked at");
    if (report.outcome == StoreReport::Busy)
        return QStringLiteral("packages are being installed, nothing was removed");
    if (report.isWhole())
        return {};
    if (action == StoreOptions::Repair)
        return QStringLiteral("not everything could be mended: another source may have the files");
    return QStringLiteral("files of the store are damaged (nkpm store repair mends them)");
}

} // namespace

int run(const StoreOptions &options, Catalogue &catalogue, Output &output)
{
    const Interrupt interrupt;
    const StoreReport report = carryOut(options, catalogue, interrupt);
    const bool isCleaned = options.action == StoreOptions::Clean;
    if (output.isJson())
        output.json(asJson(report));
    else if (isCleaned || options.action == StoreOptions::Usage)
        output.table(usageTable(report, isCleaned));
    else if (const Table damages = damageTable(report); !damages.rows.isEmpty())
        output.table(damages);
    else
        output.note(QStringLiteral("%1 files are whole").arg(report.usage.files));
    const QString fault = faultOf(report, options.action);
    if (fault.isEmpty())
        return Fine;
    output.error(fault);
    return interrupt.number() != 0 ? SignalBase + interrupt.number() : NotMet;
}

} // namespace nk::pm::cli
