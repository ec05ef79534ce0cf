// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakdataabstraction/norvakdataabstraction_export.h>

#include <QObject>

namespace nk::data {

/// What a document's references lead to: the application derives from it and lets the object offer
/// interfaces (Q_INTERFACES), through which each kind of reference finds its objects.
///
/// Owned by the application, and shared by as many documents as it likes. GUI thread.
class NORVAK_DATA_EXPORT Context : public QObject
{
    Q_OBJECT

public:
    explicit Context(QObject *parent = nullptr);
    ~Context() override;
};

} // namespace nk::data
