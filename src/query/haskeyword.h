// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/packagematcher.h"

#include <QScopedPointer>
#include <QString>

namespace nk::pm {

struct HasKeywordPrivate;

/// Matches packages for which the keyword with the identifier keywordId holds, directly or along
/// links. Restricts nothing while keywordId is empty.
class NK_PM_EXPORT HasKeyword : public PackageMatcher
{
    Q_OBJECT
    /// Compared exactly, case included. An identifier that no keyword has matches nothing.
    Q_PROPERTY(QString keywordId READ keywordId WRITE setKeywordId NOTIFY keywordIdChanged)

public:
    /// Restricts nothing at first.
    explicit HasKeyword(QObject *parent = nullptr);
    ~HasKeyword() override;

    /// As it was set; null at first.
    QString keywordId() const;
    /// Emits keywordIdChanged(), then updateRequested(), unless it is the present one.
    void setKeywordId(const QString &keywordId);

    /// Looks at all keywords of the package, those reached along links included.
    std::function<bool(PackageNode *)> matchFunction() override;

Q_SIGNALS:
    /// From within the setter.
    void keywordIdChanged();

private:
    QScopedPointer<HasKeywordPrivate> d;
};

} // namespace nk::pm
