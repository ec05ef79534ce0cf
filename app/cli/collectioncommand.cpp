// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "catalogue.h"
#include "collection/collection.h"
#include "exitcodes.h"
#include "output.h"
#include "texts.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "references/packagereference.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QLockFile>

#include <chrono>

namespace nk::pm::cli {
namespace {

constexpr std::chrono::milliseconds lockPatience{30000};

bool changes(CollectionOptions::Action action)
{
    return action == CollectionOptions::Add || action == CollectionOptions::Remove;
}

/// Puts packages in. Gives the reason why one can't be, or an empty text.
QString add(const QStringList &ids, app::Collection &collection, Catalogue &catalogue)
{
    for (const QString &id : ids) {
        if (!catalogue.index()->getPackage(QStringRef(&id)))
            return noPackage(catalogue, id);
        QString fault = collection.add(catalogue.repository()->packageReference(id));
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

QString remove(const QStringList &ids, app::Collection &collection)
{
    for (const QString &id : ids) {
        if (!collection.remove(id))
            return QStringLiteral("'%1' is not in the collection").arg(id);
    }
    return {};
}

void list(const app::Collection &collection, Catalogue &catalogue, Output &output)
{
    catalogue.waitForTranslations();
    Table table{{QStringLiteral("ID"), QStringLiteral("TYPE"), QStringLiteral("NAME")}, {}, {}};
    QJsonArray packages;
    const auto ids = collection.ids();
    for (const QString &id : ids) {
        const PackageNode *node = catalogue.index()->getPackage(QStringRef(&id));
        const QString type = node ? node->type().toString() : QString();
        const QString name = node ? displayName(node) : QString();
        table.rows.append({id, node ? type : QStringLiteral("(unavailable)"), name});
        packages.append(QJsonObject{
            {QStringLiteral("id"), id},
            {QStringLiteral("available"), node != nullptr},
            {QStringLiteral("type"), type},
            {QStringLiteral("name"), name}});
    }
    if (output.isJson())
        output.json({{QStringLiteral("packages"), packages}});
    else
        output.table(table);
}

} // namespace

int run(const CollectionOptions &options, Catalogue &catalogue, Output &output)
{
    app::CollectionContext context(catalogue.repository());
    app::Collection collection(&context);
    QString fault;
    // From reading to writing, so that two that change it at once don't undo each other's changes.
    QLockFile lock(options.file + QStringLiteral(".lock"));
    if (changes(options.action) && !lock.tryLock(int(lockPatience.count()))
        && lock.error() == QLockFile::LockFailedError) {
        output.error(QStringLiteral("%1: another program is changing it").arg(options.file));
        return NotMet;
    }
    const bool isNew = options.action == CollectionOptions::Add && !QFileInfo::exists(options.file);
    if (!isNew && !collection.load(options.file, &fault)) {
        output.error(fault);
        return NotMet;
    }
    switch (options.action) {
    case CollectionOptions::List:
        list(collection, catalogue, output);
        return Fine;
    case CollectionOptions::Install:
        return run(
            InstallOptions{collection.ids(), options.directory, options.link, options.replace},
            catalogue, output);
    case CollectionOptions::Add:
        fault = add(options.ids, collection, catalogue);
        break;
    case CollectionOptions::Remove:
        fault = remove(options.ids, collection);
        break;
    }
    if (fault.isEmpty() && collection.save(options.file, &fault))
        return Fine;
    output.error(fault);
    return NotMet;
}

} // namespace nk::pm::cli
