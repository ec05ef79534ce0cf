// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/syntheticcatalogue.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

using namespace nk::pm::test;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Writes a made-up catalogue as a directory tree: the same numbers give the same tree.");
    parser.addHelpOption();
    parser.addPositionalArgument("directory", "Where to write to.");
    const QCommandLineOption packages("packages", "Number of packages.", "n", "1000");
    const QCommandLineOption keywords("keywords", "Number of keywords.", "n", "400");
    const QCommandLineOption links("links", "Number of links.", "n", "4000");
    const QCommandLineOption seed("seed", "Another catalogue of that size.", "n", "1");
    parser.addOptions({packages, keywords, links, seed});
    parser.process(application);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);

    const auto number = [&parser](const QCommandLineOption &option) {
        return parser.value(option).toInt();
    };
    const QString directory = parser.positionalArguments().first();
    const SyntheticCatalogue catalogue(
        {number(packages), number(keywords), number(links)}, quint32(number(seed)));
    if (catalogue.writeTo(directory))
        return 0;
    QTextStream(stderr) << "Cannot write everything to " << directory << '\n';
    return 1;
}
