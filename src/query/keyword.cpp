// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/keyword.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/inturn.h"
#include "query/providerconnection.h"

namespace nk::pm {

struct KeywordPrivate
{
    explicit KeywordPrivate(Keyword *keyword)
        : q(keyword)
    {}

    Keyword *q;
    QString keywordId;
    ProviderConnection connection;
    KeywordNode *node = nullptr;
    QSharedPointer<PackageIndex> index; // of node; null without one
};

Keyword::Keyword(QObject *parent)
    : QObject(parent)
    , d(new KeywordPrivate(this))
{}

Keyword::~Keyword() = default;

Keyword::Type Keyword::typeFromString(const QString &name)
{
    return static_cast<Type>(keywordTypeFromString(name));
}

Keyword::Type Keyword::type() const
{
    return d->node ? static_cast<Type>(d->node->type()) : Invalid;
}

QString Keyword::displayString() const
{
    return d->node ? d->node->displayString().toString() : QString();
}

QObject *Keyword::packageProvider() const
{
    return d->connection.provider();
}

void Keyword::setPackageProvider(QObject *provider)
{
    if (d->connection.follow(provider, [this] { update(); }))
        update();
}

QString Keyword::keywordId() const
{
    return d->keywordId;
}

void Keyword::setKeywordId(const QString &id)
{
    if (d->keywordId == id)
        return;
    d->keywordId = id;
    callInTurn(this, &Keyword::keywordIdChanged, &Keyword::update);
}

void Keyword::update()
{
    QSharedPointer<PackageIndex> index = d->connection.packageIndex();
    KeywordNode *node = nullptr;
    if (index && !d->keywordId.isEmpty())
        node = index->getKeyword(QStringRef(&d->keywordId));
    if (!node)
        index.reset();
    if (index == d->index && node == d->node)
        return;
    d->node = node;
    d->index = index;
    Q_EMIT keywordChanged();
}

} // namespace nk::pm
