// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/syntheticcatalogue.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace nk::pm::test {

namespace {

constexpr int families = 6;
constexpr int groupsPerFamily = 8;
constexpr int typesPerGroup = 5;
constexpr int branching = 5; // words that are directly more special than one word

QString packageId(int number)
{
    return QString("package-%1").arg(number, 6, 10, QChar('0'));
}

QString keywordId(int number)
{
    return QString("word-%1").arg(number, 6, 10, QChar('0'));
}

bool writeJson(const QDir &directory, const QString &name, const QJsonObject &object)
{
    QFile file(directory.filePath(name));
    const QByteArray bytes = QJsonDocument(object).toJson(QJsonDocument::Compact);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

QString nameOf(KeywordType type)
{
    static const QStringList names{"noun", "name", "adjective", "literal", "category"};
    return names.at(int(type));
}

QString nameOf(LinkType type)
{
    static const QStringList names{"is_a", "contains", "relates_to", "is_not_a",
                                   "is",   "uses",     "requires"};
    return names.at(type);
}

QJsonObject toJson(const KeywordInfo &info)
{
    const auto type = KeywordType(info.type);
    if (type == KeywordType::Literal)
        return {{"type", nameOf(type)}, {"string", info.strings.first().string}};
    QJsonObject strings;
    for (const KeywordString &text : info.strings) {
        QJsonArray texts = strings.value(text.language).toArray();
        if (type == KeywordType::Noun)
            texts.append(QJsonObject{{"sg", text.string}, {"pl", text.plural}});
        else
            texts.append(text.string);
        strings.insert(text.language, texts);
    }
    return {{"type", nameOf(type)}, {"strings", strings}};
}

QJsonObject toJson(const LinkInfo &info)
{
    return {{"from", info.from}, {"type", nameOf(LinkType(info.type))}, {"to", info.to}};
}

} // namespace

SyntheticCatalogue::SyntheticCatalogue(const CatalogueSize &size, quint32 seed)
    : m_size(size)
    , m_random(seed)
{
    for (int family = 0; family < families; ++family) {
        const QString familyName = word();
        for (int group = 0; group < groupsPerFamily; ++group) {
            const QString groupName = familyName + ':' + word();
            for (int type = 0; type < typesPerGroup; ++type)
                m_types.append(groupName + ':' + word());
        }
    }
    for (int i = 0; i < size.packages; ++i)
        addPackage(i);
    for (int i = 0; i < size.keywords; ++i)
        addKeyword(i);
    if (size.packages > 1 && size.keywords > 1) {
        for (int i = 0; i < size.links; ++i)
            addLink(i);
    }
}

QString SyntheticCatalogue::word()
{
    static const QStringList syllables{"ba", "dor", "fin", "gel", "ho",  "kar", "lu",  "mes",
                                       "no", "pir", "ra",  "sta", "tel", "vo",  "wen", "zu"};
    QString word;
    for (int i = 0; i < 4; ++i)
        word += syllables.at(m_random.bounded(syllables.size()));
    return word;
}

void SyntheticCatalogue::addPackage(int number)
{
    const QString type = m_types.at(m_random.bounded(m_types.size()));
    const QJsonObject manifest{
        {"name", QString("%1 %2").arg(word(), word())},
        {"author", word()},
        {"size", QJsonArray{m_random.bounded(4096), m_random.bounded(4096)}},
        {"preview", "preview.png"},
        {"price", number * 7919 % 1000}, // in no order, and without another random number
    };
    m_contents.package(packageId(number), type, manifest);
}

void SyntheticCatalogue::addKeyword(int number)
{
    static const QVector<KeywordType> types{
        KeywordType::Noun,     KeywordType::Noun, KeywordType::Noun,   KeywordType::Adjective,
        KeywordType::Category, KeywordType::Name, KeywordType::Literal};
    const KeywordType type = types.at(m_random.bounded(types.size()));
    QVector<KeywordString> strings;
    for (const QString language : {"de", "en"}) {
        const QString text = word();
        strings.append({language, text, type == KeywordType::Noun ? text + 's' : QString()});
    }
    if (type == KeywordType::Literal)
        strings = {{QString(), word(), QString()}};
    m_contents.keyword(keywordId(number), type, strings);
}

/// Each keyword is a special case of one before it and each package is something; what is left of
/// the links goes to traits, relations and requirements, always from a higher to a lower number.
void SyntheticCatalogue::addLink(int number)
{
    if (number < m_size.keywords - 1) {
        m_contents.link(keywordId(number + 1), IsA, keywordId(number / branching));
        return;
    }
    number -= m_size.keywords - 1;
    const QString keyword = keywordId(m_random.bounded(m_size.keywords));
    if (number < m_size.packages) {
        m_contents.link(packageId(number), IsA, keyword);
        return;
    }
    const int package = m_random.bounded(1, m_size.packages);
    const int kind = m_random.bounded(20);
    if (kind < 3) {
        m_contents.link(packageId(package), Requires, packageId(m_random.bounded(package)));
    } else if (kind < 5) {
        const int from = m_random.bounded(1, m_size.keywords);
        m_contents.link(
            keywordId(from), kind == 3 ? RelatesTo : Contains, keywordId(m_random.bounded(from)));
    } else {
        static const QVector<int> types{Is, Is, Is, Contains, Contains, Uses, RelatesTo, IsNotA};
        m_contents.link(packageId(package), types.at(m_random.bounded(types.size())), keyword);
    }
}

bool SyntheticCatalogue::writeTo(const QString &directory) const
{
    const QDir root(directory);
    if (!root.mkpath("packages") || !root.mkpath("dictionary") || !root.mkpath("links"))
        return false;
    for (int i = 0; i < m_contents.packages.size(); ++i) {
        const PackageInfo &info = m_contents.packages.at(i);
        const QString path = "packages/" + QString(info.type).replace(':', '/') + '/' + info.id;
        if (!root.mkpath(path)
            || !writeJson(root.filePath(path), "manifest.json", m_contents.manifests.at(i)))
            return false;
    }
    for (const KeywordInfo &info : m_contents.keywords) {
        if (!writeJson(root.filePath("dictionary"), info.id + ".json", toJson(info)))
            return false;
    }
    for (int i = 0; i < m_contents.links.size(); ++i) {
        if (!writeJson(
                root.filePath("links"), QString::number(i) + ".json",
                toJson(m_contents.links.at(i))))
            return false;
    }
    return true;
}

} // namespace nk::pm::test
