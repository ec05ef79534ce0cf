// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "catalogue.h"
#include "collection/collection.h"
#include "disk/worklock.h"
#include "exitcodes.h"
#include "output.h"
#include "texts.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "references/packagereference.h"

#include <QFile>
#include <QJsonArray>

#include <cerrno>
#include <chrono>
#include <sys/stat.h>

namespace nk::pm::cli {
namespace {

constexpr std::chrono::milliseconds lockPatience{30000};

bool changes(CollectionOptions::Action action)
{
    return action == CollectionOptions::Add || action == CollectionOptions::Remove;
}

/// Not so if the disk doesn't say: what can't be looked at may be there.
bool isMissing(const QString &file)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(file).constData(), &status) != 0 && errno == ENOENT;
}

/// Puts packages in. Gives the reason why one can't be, or an empty text.
QString add(const QStringList &ids, app::Collection &collection, Catalogue &catalogue)
{
    for (const QString &id : ids) {
        PackageReference *const reference = catalogue.repository()->packageReference(id);
        if (!reference || !catalogue.index()->getPackage(QStringRef(&id)))
            return noPackage(catalogue, id);
        QString fault = collection.add(reference);
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

QString remove(const QStringList &ids, app::Collection &collection)
{
    for (const QString &id : ids) {
        if (!collection.remove(id))
            return QStringLiteral("\"%1\" is not in the collection").arg(id);
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
    disk::WorkLock lock(options.file + QStringLiteral(".lock"));
    if (changes(options.action) && !lock.take(lockPatience) && lock.isElsewhere()) {
        output.error(QStringLiteral("%1: another program is changing it (it has %2)")
                         .arg(options.file, lock.path()));
        return NotMet;
    }
    const bool mayBeNew = options.action == CollectionOptions::Add;
    if (!collection.load(options.file, &fault) && !(mayBeNew && isMissing(options.file))) {
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
