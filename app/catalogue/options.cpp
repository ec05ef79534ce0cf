// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "options.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>

#include <cstdio>
#include <cstdlib>

namespace nk::pm::app {
namespace {

constexpr int wrongUsage = 2;

QStringList views()
{
    return {QStringLiteral("grid"),   QStringLiteral("list"),    QStringLiteral("detail"),
            QStringLiteral("search"), QStringLiteral("sources"), QStringLiteral("collection")};
}

QStringList themes()
{
    return {QStringLiteral("light"), QStringLiteral("dark")};
}

[[noreturn]] void refuse(const QString &what)
{
    std::fprintf(
        stderr, "norvak-catalogue: %s\nTry norvak-catalogue --help.\n", qUtf8Printable(what));
    std::exit(wrongUsage);
}

/// The options, and what reads them.
struct Parser
{
    QCommandLineOption local{
        QStringLiteral("local"), QStringLiteral("A catalogue directory. Can be repeated."),
        QStringLiteral("directory")};
    QCommandLineOption couchdb{
        QStringLiteral("couchdb"),
        QStringLiteral(
            "A CouchDB database. User and password come from the URL or from NKPM_COUCHDB_USER and "
            "NKPM_COUCHDB_PASSWORD. Can be repeated."),
        QStringLiteral("url")};
    QCommandLineOption server{
        QStringLiteral("server"), QStringLiteral("A package server. Can be repeated."),
        QStringLiteral("url")};
    QCommandLineOption data{
        QStringLiteral("data"), QStringLiteral("Where packages are installed."),
        QStringLiteral("directory")};
    QCommandLineOption collection{
        QStringLiteral("collection"),
        QStringLiteral("A collection to open; what of it is missing gets installed."),
        QStringLiteral("file")};
    QCommandLineOption screenshot{
        QStringLiteral("screenshot"),
        QStringLiteral("Writes a picture of the window to the file and quits; needs no display."),
        QStringLiteral("file")};
    QCommandLineOption view{
        QStringLiteral("view"),
        QStringLiteral("What to show: %1.").arg(views().join(QStringLiteral(", "))),
        QStringLiteral("view"), QStringLiteral("grid")};
    QCommandLineOption theme{
        QStringLiteral("theme"), QStringLiteral("light or dark; else the system's."),
        QStringLiteral("theme")};
    QCommandLineOption size{
        QStringLiteral("size"), QStringLiteral("Size of the window, for example 1200x800."),
        QStringLiteral("size")};
    QCommandLineOption measure{
        QStringLiteral("measure"),
        QStringLiteral(
            "Searches, sorts and updates by itself, prints how long the window stood still, and "
            "quits.")};
    QCommandLineParser parser;

    Parser()
    {
        parser.setApplicationDescription(QStringLiteral("Browses and installs packages."));
        parser.addHelpOption();
        parser.addVersionOption();
        parser.addOptions(
            {local, couchdb, server, data, collection, screenshot, view, theme, size, measure});
    }

    /// The value of \a option, which has to be one of \a allowed if it is given.
    QString choice(const QCommandLineOption &option, const QStringList &allowed) const
    {
        QString value = parser.value(option);
        if (!value.isEmpty() && !allowed.contains(value)) {
            refuse(
                QStringLiteral("--%1 takes %2, not %3")
                    .arg(option.names().constFirst(), allowed.join(QStringLiteral(", ")), value));
        }
        return value;
    }

    QSize windowSize() const
    {
        if (!parser.isSet(size))
            return {};
        static const QRegularExpression form(QStringLiteral("^(\\d{3,4})x(\\d{3,4})$"));
        const auto match = form.match(parser.value(size));
        if (!match.hasMatch())
            refuse(QStringLiteral("--size takes WIDTHxHEIGHT, not %1").arg(parser.value(size)));
        return {match.captured(1).toInt(), match.captured(2).toInt()};
    }
};

} // namespace

Options parseOptions(const QStringList &arguments)
{
    Parser p;
    if (!p.parser.parse(arguments))
        refuse(p.parser.errorText());
    if (p.parser.isSet(QStringLiteral("help")))
        p.parser.showHelp();
    if (p.parser.isSet(QStringLiteral("version")))
        p.parser.showVersion();
    if (!p.parser.positionalArguments().isEmpty())
        refuse(QStringLiteral("%1 is no option").arg(p.parser.positionalArguments().constFirst()));

    Options options;
    const auto addSources = [&](const QCommandLineOption &option, SourceKind kind) {
        const QStringList locations = p.parser.values(option);
        for (const QString &location : locations)
            options.sources.append({kind, location});
    };
    addSources(p.local, SourceKind::Local);
    addSources(p.couchdb, SourceKind::CouchDB);
    addSources(p.server, SourceKind::Server);
    options.dataDirectory = p.parser.value(p.data);
    options.collection = p.parser.value(p.collection);
    options.screenshot = p.parser.value(p.screenshot);
    options.view = p.choice(p.view, views());
    options.theme = p.choice(p.theme, themes());
    options.size = p.windowSize();
    options.measure = p.parser.isSet(p.measure);
    options.passing = options.measure || !options.screenshot.isEmpty();
    return options;
}

} // namespace nk::pm::app
