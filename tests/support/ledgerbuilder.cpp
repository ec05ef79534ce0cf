// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/ledgerbuilder.h"

#include <norvakcrypto/jsonsignature.h>

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QtEndian>

namespace nk::pm::test {

namespace {

template<typename Integer>
QByteArray littleEndian(Integer value)
{
    QByteArray bytes(sizeof(Integer), '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray strings(const QVector<QByteArray> &list)
{
    QByteArray bytes;
    for (const QByteArray &string : list)
        bytes += ledgerString(string);
    return bytes;
}

QByteArray joined(const QVector<QByteArray> &records)
{
    QByteArray bytes;
    for (const QByteArray &record : records)
        bytes += record;
    return bytes;
}

QByteArray contentToSign(
    const QByteArray &type, const QByteArray &manifest, const LedgerBuilder::Files &files)
{
    QJsonObject hashes;
    for (auto file = files.begin(); file != files.end(); ++file)
        hashes[file.key()] = QString::fromLatin1(fileHash(file.value()).toHex());
    QJsonObject object = QJsonDocument::fromJson(manifest).object();
    object.remove("type");
    return nk::crypto::JsonSignature::toByteArray(
        {{"type", QString::fromUtf8(type)}, {"manifest", object}, {"files", hashes}});
}

} // namespace

QByteArray u8(int value)
{
    return QByteArray(1, char(value));
}

QByteArray u16(int value)
{
    return littleEndian(quint16(value));
}

QByteArray u32(quint32 value)
{
    return littleEndian(value);
}

QByteArray ledgerString(const QByteArray &bytes)
{
    return u16(bytes.size()) + bytes;
}

QByteArray fileHash(const QByteArray &content)
{
    return QCryptographicHash::hash(content, QCryptographicHash::Sha224);
}

QByteArray ledgerFile(
    const QVector<LedgerSegment> &segments, const QVector<QByteArray> &table,
    const QMap<int, QByteArray> &gaps)
{
    QMap<QByteArray, quint32> offsets;
    QVector<QByteArray> order = table;
    QByteArray body;
    for (int i = 0; i < segments.size(); ++i) {
        const auto &[identifier, payload] = segments.at(i);
        body += gaps.value(i);
        offsets[identifier] = quint32(38 + body.size());
        body += identifier + u32(quint32(payload.size())) + payload;
        if (table.isEmpty())
            order.append(identifier);
    }
    QByteArray header = QByteArray("ldgr") + u8(1) + u8(0);
    for (const QByteArray &identifier : std::as_const(order))
        header += identifier + u32(offsets.value(identifier));
    return header + body;
}

LedgerBuilder::LedgerBuilder(const PrivateKey &trustKey)
    : m_trustKey(trustKey)
{}

void LedgerBuilder::addIssuerRecord(
    const PrivateKey &signer, const PrivateKey &key, const QByteArray &keyField,
    const QByteArray &firstLabel, const QByteArray &secondLabel)
{
    m_issuerKeys.append(key);
    m_issuers.append(
        signer.sign(keyField) + ledgerString(firstLabel) + ledgerString(secondLabel)
        + ledgerString(keyField));
}

LedgerBuilder &LedgerBuilder::addIssuer(const QByteArray &firstLabel, const QByteArray &secondLabel)
{
    return addIssuerSignedBy(m_trustKey, firstLabel, secondLabel);
}

LedgerBuilder &LedgerBuilder::addIssuerSignedBy(
    const PrivateKey &signer, const QByteArray &firstLabel, const QByteArray &secondLabel)
{
    const PrivateKey key = PrivateKey::generate();
    addIssuerRecord(signer, key, key.publicKey().toDER(), firstLabel, secondLabel);
    return *this;
}

LedgerBuilder &LedgerBuilder::addIssuerWithKeyField(
    const QByteArray &keyField, const QByteArray &firstLabel, const QByteArray &secondLabel)
{
    addIssuerRecord(m_trustKey, PrivateKey::generate(), keyField, firstLabel, secondLabel);
    return *this;
}

LedgerBuilder &LedgerBuilder::addLanguage(const QByteArray &language)
{
    m_languages.append(language);
    return *this;
}

LedgerBuilder &LedgerBuilder::addKeyword(
    int type, const QByteArray &id, const QVector<Group> &groups)
{
    QByteArray record = u8(type) + ledgerString(id) + u16(groups.size());
    for (const Group &group : groups)
        record += u16(group.first) + u8(group.second.size()) + strings(group.second);
    m_keywords.append(record);
    return *this;
}

QByteArray LedgerBuilder::packageRecord(
    const QByteArray &id, const QByteArray &type, const QByteArray &manifest, const Files &files,
    int issuer) const
{
    const QByteArray signature = m_issuerKeys.at(issuer).sign(contentToSign(type, manifest, files));
    QByteArray record = u16(typeIndex(type)) + u16(issuer) + signature + ledgerString(id)
                        + ledgerString(manifest) + u16(files.size());
    for (auto file = files.begin(); file != files.end(); ++file)
        record += fileHash(file.value()) + ledgerString(file.key().toUtf8());
    return record;
}

LedgerBuilder &LedgerBuilder::addPackage(
    const QByteArray &id, const QByteArray &type, const QByteArray &manifest, const Files &files,
    int issuer)
{
    if (!m_types.contains(type))
        m_types.append(type);
    return addRawPackage(packageRecord(id, type, manifest, files, issuer));
}

LedgerBuilder &LedgerBuilder::addLink(int type, int endKinds, quint32 from, quint32 to)
{
    m_links.append(u8(type) + u8(endKinds) + u32(from) + u32(to));
    return *this;
}

LedgerBuilder &LedgerBuilder::addRawPackage(const QByteArray &record)
{
    m_packages.append(record);
    return *this;
}

QVector<LedgerSegment> LedgerBuilder::segments() const
{
    return {
        {".iss", u16(m_issuers.size()) + joined(m_issuers)},
        {".kwd", u16(m_languages.size()) + strings(m_languages) + u32(quint32(m_keywords.size()))
                     + joined(m_keywords)},
        {".pkg", u16(m_types.size()) + strings(m_types) + u32(quint32(m_packages.size()))
                     + joined(m_packages)},
        {".lnk", u32(quint32(m_links.size())) + joined(m_links)},
    };
}

} // namespace nk::pm::test
