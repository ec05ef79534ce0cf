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
    Q_PROPERTY(QString keywordId READ keywordId WRITE setKeywordId NOTIFY keywordIdChanged)

public:
    explicit HasKeyword(QObject *parent = nullptr);
    ~HasKeyword() override;

    QString keywordId() const;
    /// Compared exactly, case included.
    void setKeywordId(const QString &keywordId);

    std::function<bool(PackageNode *)> matchFunction() override;

Q_SIGNALS:
    void keywordIdChanged();

private:
    QScopedPointer<HasKeywordPrivate> d;
};

} // namespace nk::pm
