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
    /// Invalid while the index has no such keyword.
    Q_PROPERTY(Type type READ type NOTIFY keywordChanged)
    /// What the user reads, in the index's language; empty while there is no such keyword.
    Q_PROPERTY(QString displayString READ displayString NOTIFY keywordChanged)
    /// An object that implements IPackageProvider, not owned; any other is logged and then is the
    /// same as null. A binding to it isn't told of changes.
    Q_PROPERTY(QObject *packageProvider READ packageProvider WRITE setPackageProvider NOTIFY
                   packageProviderChanged)
    /// Identifier of the keyword, compared exactly, case included.
    Q_PROPERTY(QString keywordId READ keywordId WRITE setKeywordId NOTIFY keywordIdChanged)

public:
    /// The KeywordType numbers, for QML.
    enum Type {
        Invalid = int(KeywordType::Invalid),     ///< there is no such keyword
        Noun = int(KeywordType::Noun),           ///< a common noun
        Name = int(KeywordType::Name),           ///< a proper name
        Adjective = int(KeywordType::Adjective), ///< a property
        Literal = int(KeywordType::Literal),     ///< the same in all languages
        Category = int(KeywordType::Category),   ///< an entry of a category list
    };
    Q_ENUM(Type)

    /// No keyword: Invalid until an identifier and a provider are set.
    explicit Keyword(QObject *parent = nullptr);
    ~Keyword() override;

    /// The type that \a name ("noun", "name", ...) stands for, compared exactly; Invalid if it is
    /// none. Safe on any thread.
    static Type typeFromString(const QString &name);

    /// The grammatical role that the index has it under.
    Type type() const;
    /// From the index that it was last found in, which is kept for it.
    QString displayString() const;

    /// Null also once the provider was destroyed; its repository is followed on.
    QObject *packageProvider() const;
    /// Looks the keyword up at once, and again with each new index. packageProviderChanged() isn't
    /// emitted.
    void setPackageProvider(QObject *provider);

    /// As it was set, whether there is such a keyword or not.
    QString keywordId() const;
    /// Looks the keyword up at once. An empty \a id is no keyword.
    void setKeywordId(const QString &id);

Q_SIGNALS:
    /// Another keyword, or the same one in another index.
    void keywordChanged();
    /// Never emitted.
    void packageProviderChanged();
    /// Before the other keyword is looked up: type() and displayString() are still the old one's.
    void keywordIdChanged();

private Q_SLOTS:
    void update();

private:
    QScopedPointer<KeywordPrivate> d;
};

} // namespace nk::pm
