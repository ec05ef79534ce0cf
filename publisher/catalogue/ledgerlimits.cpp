// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/ledgerlimits.h"

#include "sources/ledgerformat.h"

#include <QMap>
#include <QSet>

#include <limits>

namespace nk::pm::publisher {

namespace {

constexpr int mostTypes = std::numeric_limits<quint16>::max();
constexpr int mostLanguages = std::numeric_limits<quint16>::max();
constexpr int mostFiles = std::numeric_limits<quint16>::max();
constexpr int mostStrings = std::numeric_limits<quint8>::max();

class LimitCheck
{
public:
    LimitCheck(const QString &file, Problems &problems)
        : m_file(file)
        , m_problems(problems)
    {}

    void text(const QString &what, const QByteArray &utf8) const
    {
        if (utf8.size() > ledger::maximumStringSize)
            m_problems.error(
                m_file, QStringLiteral("%1 has %2 bytes, a ledger holds %3 at most")
                            .arg(what)
                            .arg(utf8.size())
                            .arg(ledger::maximumStringSize));
    }

    void text(const QString &what, const QString &string) const { text(what, string.toUtf8()); }

    void count(const QString &what, int number, int limit) const
    {
        if (number > limit)
            m_problems.error(
                m_file, QStringLiteral("%1 %2, a ledger holds %3 at most")
                            .arg(number)
                            .arg(what)
                            .arg(limit));
    }

private:
    QString m_file;
    Problems &m_problems;
};

void checkPackage(const CataloguePackage &package, Problems &problems)
{
    const QString manifest = package.manifestFile();
    const LimitCheck check(manifest, problems);
    check.text(QStringLiteral("the identifier"), package.id);
    check.text(QStringLiteral("the type"), package.type);
    check.text(QStringLiteral("the manifest, without white space,"), package.manifest);
    check.count(QStringLiteral("files in one package"), package.files.size(), mostFiles);
    for (const PackageFile &file : package.files)
        LimitCheck(package.filePath(file), problems).text(QStringLiteral("the name"), file.name);
}

void checkKeyword(const CatalogueKeyword &keyword, Problems &problems)
{
    const LimitCheck check(keyword.file, problems);
    check.text(QStringLiteral("the identifier"), keyword.info.id);
    QMap<QString, int> counts;
    for (const KeywordString &string : keyword.info.strings) {
        ++counts[string.language];
        check.text(QStringLiteral("a text of \"%1\"").arg(string.language), displayString(string));
        check.text(QStringLiteral("the name of a language"), string.language);
    }
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        check.count(QStringLiteral("texts of \"%1\"").arg(it.key()), it.value(), mostStrings);
}

} // namespace

QByteArray displayString(const KeywordString &string)
{
    QByteArray text = string.string.toUtf8();
    if (!string.plural.isEmpty())
        text += ledger::formSeparator + string.plural.toUtf8();
    return text;
}

void checkLimits(const Catalogue &catalogue, Problems &problems)
{
    QSet<QString> types;
    for (const CataloguePackage &package : catalogue.packages) {
        types.insert(package.type);
        checkPackage(package, problems);
    }
    QSet<QString> languages;
    for (const CatalogueKeyword &keyword : catalogue.keywords) {
        for (const KeywordString &string : keyword.info.strings)
            languages.insert(string.language);
        checkKeyword(keyword, problems);
    }
    const LimitCheck check(QString(), problems);
    check.count(QStringLiteral("types of packages"), types.size(), mostTypes);
    check.count(QStringLiteral("languages"), languages.size(), mostLanguages);
}

} // namespace nk::pm::publisher
