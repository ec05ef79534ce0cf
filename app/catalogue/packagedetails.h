// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QJsonValue>
#include <QObject>
#include <QSharedPointer>
#include <QUrl>
#include <QVariantList>

namespace nk::pm {
class PackageIndex;
class PackageNode;
} // namespace nk::pm

namespace nk::pm::app {

class CatalogueProvider;

/// What the library knows of one package beyond its manifest fields: where it comes from, what it
/// is, needs and consists of. Reading it doesn't install the package. Follows the current index.
class PackageDetails : public QObject
{
    Q_OBJECT
    Q_PROPERTY(nk::pm::app::CatalogueProvider *catalogue READ catalogue WRITE setCatalogue NOTIFY
                   catalogueChanged)
    Q_PROPERTY(QString packageId READ packageId WRITE setPackageId NOTIFY packageIdChanged)
    Q_PROPERTY(bool exists READ exists NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString description READ description NOTIFY changed)
    Q_PROPERTY(QUrl preview READ preview NOTIFY changed)
    Q_PROPERTY(QString type READ type NOTIFY changed)
    Q_PROPERTY(QString revision READ revision NOTIFY changed)
    Q_PROPERTY(QString issuer READ issuer NOTIFY changed)
    Q_PROPERTY(QString source READ source NOTIFY changed)
    Q_PROPERTY(QVariantList fields READ fields NOTIFY changed)
    Q_PROPERTY(QVariantList keywords READ keywords NOTIFY changed)
    Q_PROPERTY(QVariantList requirements READ requirements NOTIFY changed)
    Q_PROPERTY(QVariantList files READ files NOTIFY changed)

public:
    explicit PackageDetails(QObject *parent = nullptr);

    CatalogueProvider *catalogue() const { return m_catalogue; }
    void setCatalogue(CatalogueProvider *catalogue);
    QString packageId() const { return m_id; }
    void setPackageId(const QString &id);

    /// Whether the current index has the package.
    bool exists() const { return m_node; }
    QString title() const;
    QString description() const;
    QUrl preview() const;
    QString type() const;
    QString revision() const;
    /// The key whose signature of the package was verified, as in a PEM file; empty if it has none.
    QString issuer() const;
    /// Kind and location of the source.
    QString source() const;
    /// The rest of the manifest: objects of "name" and "value", both texts.
    QVariantList fields() const;
    /// All keywords that hold for the package, by text: objects of "id" and "text".
    QVariantList keywords() const;
    /// The packages that this one names as required: objects of "id" and "title".
    QVariantList requirements() const;
    /// The installed files, else those that the manifest names: objects of "name", "url" and
    /// "size", a text for the user, empty where it isn't known.
    QVariantList files() const;

    /// Reads everything again: after an install the files are others.
    Q_INVOKABLE void reload();

Q_SIGNALS:
    void catalogueChanged();
    void packageIdChanged();
    void changed();

private:
    QString text(const QString &field) const;

    CatalogueProvider *m_catalogue = nullptr;
    QString m_id;
    QSharedPointer<PackageIndex> m_index; // holds m_node
    const PackageNode *m_node = nullptr;
};

} // namespace nk::pm::app
