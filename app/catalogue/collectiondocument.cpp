// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "collectiondocument.h"

#include "catalogueprovider.h"

#include <QFileInfo>

namespace nk::pm::app {
namespace {

/// A hundred thousand packages. What is larger is none, and isn't read on the GUI thread.
constexpr qint64 maximumSize = 16 * 1024 * 1024;

/// What a document says of a fault, without the path in front of it.
QString reasonIn(const QString &fault, const QString &path)
{
    const QString prefix = path + QStringLiteral(": ");
    return fault.startsWith(prefix) ? fault.mid(prefix.size()) : fault;
}

} // namespace

CollectionDocument::CollectionDocument(
    CatalogueProvider &provider, Installs &installs, QObject *parent)
    : QObject(parent)
    , m_context(provider.packageRepository())
    , m_collection(std::make_unique<Collection>(&m_context))
    , m_packages(provider, installs)
{
    m_packages.setCollection(m_collection.get());
}

CollectionDocument::~CollectionDocument() = default;

QString CollectionDocument::name() const
{
    return QFileInfo(m_path).fileName();
}

QString CollectionDocument::add(const QString &id)
{
    const int before = count();
    if (!m_packages.add(id).isEmpty()) {
        return tr("%1 can't be kept in a collection: its identifier has characters beyond Latin-1.")
            .arg(id);
    }
    m_isModified |= count() > before;
    Q_EMIT changed();
    return {};
}

void CollectionDocument::remove(const QString &id)
{
    m_isModified |= m_packages.remove(id);
    Q_EMIT changed();
}

void CollectionDocument::clear()
{
    replace(std::make_unique<Collection>(&m_context), QString(), {});
}

QString CollectionDocument::open(const QString &path)
{
    const QFileInfo file(path);
    const QString absolute = file.absoluteFilePath();
    QString noCollection = tr("%1 is not a collection, or it is damaged.").arg(absolute)
                           + QLatin1Char('\n') + tr("Choose another file.");
    if (file.exists() && (!file.isFile() || file.size() > maximumSize))
        return noCollection;
    auto collection = std::make_unique<Collection>(&m_context);
    const Stamp stamp = stampOf(absolute);
    QString fault;
    if (collection->load(absolute, &fault)) {
        replace(std::move(collection), absolute, stamp);
        return {};
    }
    if (!file.isReadable()) {
        return tr("%1 can't be opened.").arg(absolute) + QLatin1Char('\n')
               + tr("Check that the file is there and that you may read it.");
    }
    if (collection->isOfNewerVersion()) {
        return tr("%1 was written by a newer version of this program.").arg(absolute)
               + QLatin1Char('\n') + tr("Update the program to open it.");
    }
    return noCollection + QStringLiteral("\n(%1)").arg(reasonIn(fault, absolute));
}

QString CollectionDocument::save(const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QString fault;
    if (!m_collection->save(absolute, &fault)) {
        return tr("%1 can't be written.").arg(absolute) + QLatin1Char('\n')
               + tr("Make room or choose another place; nothing is lost until then.")
               + QStringLiteral("\n(%1)").arg(reasonIn(fault, absolute));
    }
    m_path = absolute;
    m_stamp = stampOf(absolute);
    m_isModified = false;
    Q_EMIT changed();
    return {};
}

bool CollectionDocument::hasChangedOnDisk() const
{
    const Stamp now = stampOf(m_path);
    // A file that is gone is simply written again.
    return now.time.isValid() && (now.time != m_stamp.time || now.size != m_stamp.size);
}

CollectionDocument::Stamp CollectionDocument::stampOf(const QString &path)
{
    const QFileInfo file(path);
    return {file.lastModified(), file.size()};
}

void CollectionDocument::replace(
    std::unique_ptr<Collection> collection, const QString &path, const Stamp &stamp)
{
    m_packages.setCollection(collection.get());
    m_collection = std::move(collection);
    m_path = path;
    m_stamp = stamp;
    m_isModified = false;
    Q_EMIT changed();
}

} // namespace nk::pm::app
