// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "ledger/issuer.h"

#include "sources/ledgerformat.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace nk::pm::publisher {

using nk::crypto::ed25519::PrivateKey;
using nk::crypto::ed25519::PublicKey;

namespace {

const QLatin1String formatKey("format");
const QLatin1String formatName("norvak-issuer-1");
const QLatin1String labelsKey("labels");
const QLatin1String publicKeyKey("publicKey");
const QLatin1String signatureKey("signature");

QByteArray fromBase64(const QJsonValue &value)
{
    const auto result = QByteArray::fromBase64Encoding(
        value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return result ? *result : QByteArray();
}

bool isOrIsBelow(const QString &type, const QString &above)
{
    return above.isEmpty() || type == above || type.startsWith(above + u':');
}

} // namespace

IssuerRecord IssuerRecord::issue(
    const PublicKey &issuer, const QString &firstLabel, const QString &secondLabel,
    const PrivateKey &trustKey)
{
    const QByteArray der = issuer.toDER();
    return {der, trustKey.sign(der), firstLabel, secondLabel};
}

QByteArray IssuerRecord::toJson() const
{
    const QJsonObject object{
        {formatKey, formatName},
        {labelsKey, QJsonArray{firstLabel, secondLabel}},
        {publicKeyKey, QString::fromLatin1(publicKey.toBase64())},
        {signatureKey, QString::fromLatin1(signature.toBase64())},
    };
    return QJsonDocument(object).toJson();
}

IssuerRecord IssuerRecord::fromJson(const QByteArray &json, QString *fault)
{
    QJsonParseError error{};
    const QJsonObject object = QJsonDocument::fromJson(json, &error).object();
    const QJsonArray labels = object.value(labelsKey).toArray();
    IssuerRecord record{
        fromBase64(object.value(publicKeyKey)), fromBase64(object.value(signatureKey)),
        labels.at(0).toString(), labels.at(1).toString()};
    if (error.error != QJsonParseError::NoError)
        *fault = QStringLiteral("not valid JSON: ") + error.errorString();
    else if (object.value(formatKey) != formatName)
        *fault = QStringLiteral("not an issuer record of nkledger");
    else if (!PublicKey::fromDER(record.publicKey).isValid())
        *fault = QStringLiteral("its public key is unusable");
    else if (record.signature.size() != ledger::signatureSize)
        *fault = QStringLiteral("its signature is unusable");
    else
        *fault = labelFault(record.firstLabel) + labelFault(record.secondLabel);
    return fault->isEmpty() ? record : IssuerRecord();
}

QString IssuerRecord::labelFault(const QString &label)
{
    if (label.startsWith(QChar(QChar::ByteOrderMark)))
        return QStringLiteral("a label begins with U+FEFF, which readers of a ledger lose");
    if (label.toUtf8().size() > ledger::maximumStringSize)
        return QStringLiteral("a label has more than the %1 bytes that a ledger holds")
            .arg(ledger::maximumStringSize);
    return {};
}

bool IssuerRecord::isSignedBy(const PublicKey &trustKey) const
{
    return trustKey.verify(signature, publicKey);
}

int issuerFor(const QVector<Issuer> &issuers, const QString &type)
{
    int best = -1;
    for (int i = 0; i < issuers.size(); ++i) {
        const QString &own = issuers.at(i).type;
        if (isOrIsBelow(type, own) && (best < 0 || own.size() > issuers.at(best).type.size()))
            best = i;
    }
    return best;
}

} // namespace nk::pm::publisher
