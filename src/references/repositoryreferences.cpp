// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// The operations of PackageRepository that deal in references. They stand here so that the
// repository itself knows nothing of what is built upon it.

#include "index/packageindex.h"
#include "references/packagereference.h"
#include "repository/packagerepository.h"
#include "repository/packagerepository_p.h"

#include <QCoreApplication>
#include <QFile>
#include <QLocale>
#include <QTranslator>

namespace nk::pm {

namespace {

/// The one translator of \a reference, which is installed before it has anything to say.
QTranslator *translatorOf(PackageReference *reference)
{
    auto *translator = reference->findChild<QTranslator *>(QString(), Qt::FindDirectChildrenOnly);
    if (!translator) {
        translator = new QTranslator(reference);
        QCoreApplication::installTranslator(translator);
    }
    return translator;
}

/// The file that \a manifest names for the user's language, else for English; empty if it names
/// neither. A file that is named and missing doesn't lead to the next language.
QString translationFile(const QJsonObject &manifest)
{
    const QString locale = QLocale().name();
    for (const QString &language : {locale, locale.left(2), QStringLiteral("en")}) {
        const auto entry = manifest.constFind(language);
        if (entry != manifest.constEnd())
            return entry->toString();
    }
    return QString();
}

void loadTranslation(PackageReference *reference)
{
    if (reference->status() != PackageReference::Installed)
        return;
    QTranslator *translator = translatorOf(reference);
    const QString name = translationFile(reference->manifest());
    if (name.isEmpty())
        return;
    const QString path = reference->fileUrl(name).toLocalFile();
    if (QFile::exists(path))
        translator->load(path);
}

} // namespace

PackageReference *PackageRepository::packageReference(const QString &id)
{
    if (id.isEmpty())
        return nullptr;
    PackageReference *reference = d->references.value(id);
    if (!reference) {
        reference = new PackageReference(id, this);
        d->references.insert(id, reference);
    }
    return reference;
}

void PackageRepository::loadTranslations()
{
    if (!d->packageIndex)
        return;
    const PackageList packages =
        PackageIndex::selectPackages(d->packageIndex, QStringLiteral("translation"), {}, {});
    for (int i = 0; i < packages.size(); ++i) {
        const QString id = packages.id(i);
        if (d->translationReferences.contains(id))
            continue;
        PackageReference *reference = packageReference(id);
        if (!reference)
            continue;
        d->translationReferences.insert(id, reference);
        const auto load = [reference] { loadTranslation(reference); };
        connect(reference, &PackageReference::statusChanged, reference, load);
        connect(reference, &PackageReference::updated, reference, load);
        load();
    }
}

} // namespace nk::pm
