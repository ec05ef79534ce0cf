// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/manifestfield.h"

namespace nk::pm {

/// A file of the package: the manifest holds its name, the field gives the URL where the file can
/// be had at the time of reading; an empty URL without a package or a name.
class NK_PM_EXPORT ManifestFileField : public ManifestField
{
    Q_OBJECT

public:
    /// A field without a name, which reads an empty URL everywhere.
    explicit ManifestFileField(QObject *parent = nullptr);
    ~ManifestFileField() override;

    /// True: an installed file has another URL than the source's.
    bool isStatusDependent() const override;

protected:
    /// A QUrl, always.
    QVariant convert(const QJsonValue &value, const PackageNode *node) override;
};

} // namespace nk::pm
