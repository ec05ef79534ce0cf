// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/cataloguechecks.h"

#include "catalogue/ledgerlimits.h"
#include "catalogue/linkcycles.h"

#include <QHash>
#include <QSet>
#include <QUrl>

#include <tuple>

namespace nk::pm::publisher {

namespace {

/// The file that gives each identifier; complains of a second one.
QHash<QString, QString> collectIdentifiers(const Catalogue &catalogue, Problems &problems)
{
    QHash<QString, QString> owners;
    const auto claim = [&](const QString &id, const QString &file) {
        const QString owner = owners.value(id);
        if (owner.isEmpty())
            owners.insert(id, file);
        else
            problems.error(
                file,
                QStringLiteral("the identifier \"%1\" is taken already by %2").arg(id, owner));
    };
    for (const CataloguePackage &package : catalogue.packages)
        claim(package.id, package.manifestFile());
    for (const CatalogueKeyword &keyword : catalogue.keywords)
        claim(keyword.info.id, keyword.file);
    return owners;
}

void checkLinks(
    const Catalogue &catalogue, const QHash<QString, QString> &owners, Problems &problems)
{
    using Ends = std::tuple<int, QString, QString>;
    QMap<Ends, QString> seen;
    for (const CatalogueLink &link : catalogue.links) {
        for (const QString &end : {link.info.from, link.info.to}) {
            // The reader of the file has complained of an empty end.
            if (!end.isEmpty() && !owners.contains(end))
                problems.error(
                    link.file,
                    QStringLiteral("links to \"%1\", which is neither a package nor a keyword")
                        .arg(end));
        }
        const Ends ends(link.info.type, link.info.from, link.info.to);
        if (seen.contains(ends) && link.info.type != -1)
            problems.warning(
                link.file, QStringLiteral("says the same as %1").arg(seen.value(ends)));
        seen.insert(ends, link.file);
    }
}

void checkCycles(const Catalogue &catalogue, Problems &problems)
{
    const QString arrow = QStringLiteral(" -> ");
    const auto requirements = findCycles(catalogue.links, Requires);
    for (const LinkCycle &cycle : requirements)
        problems.error(
            cycle.file, QStringLiteral("\"%1\" requires itself: %2")
                            .arg(cycle.identifiers.first(), cycle.identifiers.join(arrow)));
    const auto kinds = findCycles(catalogue.links, IsA);
    for (const LinkCycle &cycle : kinds)
        problems.warning(
            cycle.file, QStringLiteral("\"%1\" is a kind of itself: %2")
                            .arg(cycle.identifiers.first(), cycle.identifiers.join(arrow)));
}

bool needsEncoding(const QString &name, const QByteArray &alsoAllowed)
{
    return QUrl::toPercentEncoding(name, "!$&'()*+,;=@" + alsoAllowed) != name.toUtf8();
}

/// The loopback proxy compares addresses as plain text, with the package's id as their first part.
void checkAddresses(const CataloguePackage &package, Problems &problems)
{
    if (needsEncoding(package.id, {}))
        return problems.warning(
            package.directory, QStringLiteral("the identifier needs percent-encoding in a URL: no "
                                              "file can be shown before the package is installed"));
    for (const PackageFile &file : package.files) {
        if (needsEncoding(file.name, ":"))
            problems.warning(
                package.filePath(file),
                QStringLiteral("the name needs percent-encoding in a URL: the file can't be shown "
                               "before the package is installed"));
    }
}

/// On a file system without upper and lower case the second of two such names is never laid down.
class CaseCheck
{
public:
    explicit CaseCheck(Problems &problems)
        : m_problems(problems)
    {}

    void add(const QString &path)
    {
        const QString folded = path.toCaseFolded();
        if (m_seen.contains(folded))
            m_problems.warning(
                path, QStringLiteral("differs from %1 in upper and lower case only, which some "
                                     "users' file systems don't tell apart")
                          .arg(m_seen.value(folded)));
        m_seen.insert(folded, path);
    }

private:
    Problems &m_problems;
    QHash<QString, QString> m_seen;
};

} // namespace

void checkCatalogue(const Catalogue &catalogue, Problems &problems)
{
    checkLinks(catalogue, collectIdentifiers(catalogue, problems), problems);
    checkCycles(catalogue, problems);
    checkLimits(catalogue, problems);
    CaseCheck directories(problems);
    for (const CataloguePackage &package : catalogue.packages) {
        checkAddresses(package, problems);
        directories.add(package.directory);
        CaseCheck files(problems);
        for (const PackageFile &file : package.files)
            files.add(package.filePath(file));
    }
}

void checkContents(const Catalogue &catalogue, Problems &problems)
{
    for (const CataloguePackage &package : catalogue.packages) {
        QHash<QByteArray, QString> names;
        for (const PackageFile &file : package.files) {
            if (names.contains(file.digest))
                problems.error(
                    package.filePath(file),
                    QStringLiteral("holds the same as \"%1\": of files with equal content only "
                                   "one would be installed")
                        .arg(names.value(file.digest)));
            else if (!file.digest.isEmpty())
                names.insert(file.digest, file.name);
        }
    }
}

} // namespace nk::pm::publisher
