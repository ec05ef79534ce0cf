// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "collection/collection.h"

#include "disk/savefile.h"

#include "references/packagereference.h"
#include "references/packagereferencetype.h"
#include "repository/packagerepository.h"

#include <QJsonDocument>

#include <algorithm>
#include <limits>

namespace nk::pm::app {
namespace {

const QLatin1String versionMember("version");
constexpr int currentVersion = 1;
const QString positionName = QStringLiteral("position");

} // namespace

CollectionContext::CollectionContext(PackageRepository *repository, QObject *parent)
    : nk::data::Context(parent)
    , m_repository(repository)
{}

PackageRepository *CollectionContext::packageRepository()
{
    return m_repository;
}

PackageReference *CollectionContext::packageReference(const QString &id)
{
    return m_repository->packageReference(id);
}

Collection::Collection(CollectionContext *context, QObject *parent)
    : nk::data::LinkedDocument(context, parent)
{
    registerReferenceType<PackageReferenceType, PackageReference>();
    m_field.setName(QStringLiteral("package"));
}

QStringList Collection::ids() const
{
    QStringList ids;
    const auto keys = structKeys();
    for (const QString &key : keys) {
        if (contains(key))
            ids.append(key);
    }
    std::stable_sort(ids.begin(), ids.end(), [this](const QString &a, const QString &b) {
        return position(a) < position(b);
    });
    return ids;
}

bool Collection::contains(const QString &id) const
{
    return !getStructValue(id, m_field.name()).isUndefined();
}

QString Collection::add(PackageReference *reference)
{
    const QString id = reference->id();
    // Reference strings are Latin-1: what has lost characters leads to another package, or nowhere.
    if (QString::fromLatin1(PackageReferenceType::identifier(reference)) != id) {
        return QStringLiteral("\"%1\" can't be kept in a collection: its identifier has characters "
                              "beyond Latin-1")
            .arg(id);
    }
    if (!contains(id)) {
        const QStringList others = ids();
        const double last = others.isEmpty() ? 0 : position(others.last());
        setStructValue(id, positionName, last + 1);
    }
    m_field.write(this, id, QVariant::fromValue<QObject *>(reference));
    return {};
}

bool Collection::remove(const QString &id)
{
    if (!contains(id))
        return false;
    removeStruct(id);
    return true;
}

PackageReference *Collection::reference(const QString &id)
{
    auto *reference = m_field.read(this, id).value<PackageReference *>();
    return reference && reference->id() == id ? reference : nullptr;
}

bool Collection::setContent(const QJsonObject &content, QString *reason)
{
    double version = currentVersion; // that of files that don't say it
    for (auto member = content.begin(); member != content.end(); ++member) {
        if (member.key() == versionMember)
            version = member.value().toDouble(std::numeric_limits<double>::infinity());
    }
    m_isOfNewerVersion = version > currentVersion;
    if (m_isOfNewerVersion)
        *reason = QStringLiteral("it was written by a newer version of this program");
    return !m_isOfNewerVersion && LinkedDocument::setContent(content, reason);
}

bool Collection::save(const QString &path, QString *error) const
{
    *error = disk::saveFile(path, QJsonDocument(content()).toJson());
    return error->isEmpty();
}

QJsonObject Collection::content() const
{
    QJsonObject object = LinkedDocument::content();
    object.insert(versionMember, currentVersion);
    return object;
}

/// Where the package stands in the order of adding; 0 if nobody has said it.
double Collection::position(const QString &id) const
{
    return getStructValue(id, positionName).toDouble();
}

} // namespace nk::pm::app
