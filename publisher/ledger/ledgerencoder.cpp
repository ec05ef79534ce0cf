// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "ledger/ledgerencoder.h"

#include "catalogue/ledgerlimits.h"
#include "ledger/bytewriter.h"
#include "sources/ledgerformat.h"

#include <QHash>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace nk::pm::publisher {

namespace {

/// Texts in a fixed order, and the place of each.
class TextTable
{
public:
    explicit TextTable(const QSet<QString> &texts)
        : m_texts(texts.cbegin(), texts.cend())
    {
        std::sort(m_texts.begin(), m_texts.end());
        for (int i = 0; i < m_texts.size(); ++i)
            m_places.insert(m_texts.at(i), i);
    }

    int place(const QString &text) const { return m_places.value(text, -1); }

    void write(ByteWriter &out) const
    {
        out.u16(m_texts.size());
        for (const QString &text : m_texts)
            out.string(text.toUtf8());
    }

private:
    QVector<QString> m_texts;
    QHash<QString, int> m_places;
};

class Encoder
{
public:
    Encoder(const Catalogue &catalogue, const QVector<Issuer> &issuers)
        : m_catalogue(catalogue)
        , m_issuers(issuers)
    {}

    QByteArray run();
    bool fits() const { return m_out.fits(); }

private:
    void writeSegment(int number, void (Encoder::*writePayload)());
    void writeIssuers();
    void writeKeywords();
    void writeKeyword(const KeywordInfo &keyword, const TextTable &languages);
    void writePackages();
    void writePackage(const CataloguePackage &package, const TextTable &types);
    void writeLinks();

    const Catalogue &m_catalogue;
    const QVector<Issuer> &m_issuers;
    ByteWriter m_out;
};

QByteArray Encoder::run()
{
    m_out.raw(QByteArray(ledger::magic, ledger::magicSize));
    m_out.u8(ledger::majorVersion);
    m_out.u8(ledger::minorVersion);
    for (const char *identifier : ledger::segmentIdentifiers) {
        m_out.raw(QByteArray(identifier, ledger::identifierSize));
        m_out.u32(0);
    }
    writeSegment(0, &Encoder::writeIssuers);
    writeSegment(1, &Encoder::writeKeywords);
    writeSegment(2, &Encoder::writePackages);
    writeSegment(3, &Encoder::writeLinks);
    return m_out.result();
}

void Encoder::writeSegment(int number, void (Encoder::*writePayload)())
{
    const int start = m_out.position();
    m_out.raw(QByteArray(ledger::segmentIdentifiers.at(size_t(number)), ledger::identifierSize));
    m_out.u32(0);
    const int payload = m_out.position();
    (this->*writePayload)();

    const int offsetField =
        ledger::offsetTableStart + number * ledger::offsetTableEntrySize + ledger::identifierSize;
    m_out.patchU32(offsetField, quint32(start));
    m_out.patchU32(start + ledger::identifierSize, quint32(m_out.position() - payload));
}

void Encoder::writeIssuers()
{
    m_out.u16(m_issuers.size());
    for (const Issuer &issuer : m_issuers) {
        m_out.raw(issuer.record.signature);
        m_out.string(issuer.record.firstLabel.toUtf8());
        m_out.string(issuer.record.secondLabel.toUtf8());
        m_out.string(issuer.record.publicKey);
    }
}

void Encoder::writeKeywords()
{
    QSet<QString> names;
    for (const CatalogueKeyword &keyword : m_catalogue.keywords) {
        for (const KeywordString &string : keyword.info.strings)
            names.insert(string.language);
    }
    const TextTable languages(names);
    languages.write(m_out);
    m_out.u32(m_catalogue.keywords.size());
    for (const CatalogueKeyword &keyword : m_catalogue.keywords)
        writeKeyword(keyword.info, languages);
}

void Encoder::writeKeyword(const KeywordInfo &keyword, const TextTable &languages)
{
    QMap<int, QVector<QByteArray>> groups;
    for (const KeywordString &string : keyword.strings)
        groups[languages.place(string.language)].append(displayString(string));
    m_out.u8(keyword.type);
    m_out.string(keyword.id.toUtf8());
    m_out.u16(groups.size());
    for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
        m_out.u16(group.key());
        m_out.u8(group->size());
        for (const QByteArray &string : *group)
            m_out.string(string);
    }
}

void Encoder::writePackages()
{
    QSet<QString> names;
    for (const CataloguePackage &package : m_catalogue.packages)
        names.insert(package.type);
    const TextTable types(names);
    types.write(m_out);
    m_out.u32(m_catalogue.packages.size());
    for (const CataloguePackage &package : m_catalogue.packages)
        writePackage(package, types);
}

void Encoder::writePackage(const CataloguePackage &package, const TextTable &types)
{
    m_out.u16(types.place(package.type));
    m_out.u16(issuerFor(m_issuers, package.type));
    m_out.raw(QByteArray(ledger::signatureSize, '\0'));
    m_out.string(package.id.toUtf8());
    m_out.string(package.manifest);
    m_out.u16(package.files.size());
    for (const PackageFile &file : package.files) {
        m_out.raw(file.digest);
        m_out.string(file.name.toUtf8());
    }
}

void Encoder::writeLinks()
{
    QHash<QString, int> packages;
    for (int i = 0; i < m_catalogue.packages.size(); ++i)
        packages.insert(m_catalogue.packages.at(i).id, i);
    QHash<QString, int> keywords;
    for (int i = 0; i < m_catalogue.keywords.size(); ++i)
        keywords.insert(m_catalogue.keywords.at(i).info.id, i);

    m_out.u32(m_catalogue.links.size());
    for (const CatalogueLink &link : m_catalogue.links) {
        const bool fromPackage = packages.contains(link.info.from);
        const bool toPackage = packages.contains(link.info.to);
        m_out.u8(link.info.type);
        m_out.u8((fromPackage ? ledger::fromPackage : 0) | (toPackage ? ledger::toPackage : 0));
        m_out.u32((fromPackage ? packages : keywords).value(link.info.from, -1));
        m_out.u32((toPackage ? packages : keywords).value(link.info.to, -1));
    }
}

} // namespace

EncodedLedger encodeLedger(const Catalogue &catalogue, const QVector<Issuer> &issuers)
{
    Encoder encoder(catalogue, issuers);
    const QByteArray bytes = encoder.run();
    if (!encoder.fits())
        return {{}, QStringLiteral("the catalogue doesn't fit into a ledger of 1 GiB")};
    return {bytes, {}};
}

} // namespace nk::pm::publisher
