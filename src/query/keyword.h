// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "index/keywordtypes.h"

#include <norvakpackagemanager_export.h>

#include <QObject>
#include <QScopedPointer>

namespace nk::pm {

struct KeywordPrivate;

/// One keyword of the current index, by identifier: found again, or lost, with each new index.
/// GUI thread.
class NK_PM_EXPORT Keyword : public QObject
{
    Q_OBJECT
    Q_PROPERTY(Type type READ type NOTIFY keywordChanged)
    Q_PROPERTY(QString displayString READ displayString NOTIFY keywordChanged)
    Q_PROPERTY(QObject *packageProvider READ packageProvider WRITE setPackageProvider NOTIFY
                   packageProviderChanged)
    Q_PROPERTY(QString keywordId READ keywordId WRITE setKeywordId NOTIFY keywordIdChanged)

public:
    /// The KeywordType numbers, for QML.
    enum Type {
        Invalid = int(KeywordType::Invalid), ///< there is no such keyword
        Noun = int(KeywordType::Noun),
        Name = int(KeywordType::Name),
        Adjective = int(KeywordType::Adjective),
        Literal = int(KeywordType::Literal),
        Category = int(KeywordType::Category),
    };
    Q_ENUM(Type)

    explicit Keyword(QObject *parent = nullptr);
    ~Keyword() override;

    /// The type that \a name ("noun", "name", ...) stands for, compared exactly; Invalid if it is
    /// none. Safe on any thread.
    static Type typeFromString(const QString &name);

    Type type() const;
    /// What the user reads, in the index's language; empty if there is no such keyword.
    QString displayString() const;

    QObject *packageProvider() const;
    /// An object that implements IPackageProvider, not owned; any other is logged and then is the
    /// same as null. packageProviderChanged() isn't emitted.
    void setPackageProvider(QObject *provider);

    QString keywordId() const;
    void setKeywordId(const QString &id);

Q_SIGNALS:
    /// Another keyword, or the same one in another index.
    void keywordChanged();
    void packageProviderChanged();
    void keywordIdChanged();

private Q_SLOTS:
    void update();

private:
    QScopedPointer<KeywordPrivate> d;
};

} // namespace nk::pm
