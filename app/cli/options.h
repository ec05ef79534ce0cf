// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVector>

#include <variant>

namespace nk::pm::cli {

/// Where packages come from; each kind in the order of the command line.
struct SourceOptions
{
    QStringList localDirectories;
    QVector<QUrl> servers;
    QVector<QUrl> databases; ///< perhaps with user and password

    bool isEmpty() const
    {
        return localDirectories.isEmpty() && servers.isEmpty() && databases.isEmpty();
    }
};

struct ListOptions
{
    QString type;
    QStringList keywords; ///< identifiers, all of which must hold
    QString search;
    bool fullMatch = false;
    QStringList fields; ///< manifest keys, all of which must be there
    QString sortField;
};

struct ShowOptions
{
    QString id;
};

struct FileOptions
{
    QString id;
    QString name;
    QString output; ///< empty: stdout
};

struct KeywordsOptions
{
    QString type;
    QString search;
    bool categories = false;
};

struct InstallOptions
{
    QStringList ids;
    QString directory;
    bool link = false;
    bool replace = false;
};

struct CollectionOptions
{
    enum Action { Add, Remove, List, Install };

    QString file;
    Action action = List;
    QStringList ids;   ///< to add or remove
    QString directory; ///< to install into, as in InstallOptions
    bool link = false;
    bool replace = false;
};

struct SourcesOptions
{};

struct StoreOptions
{
    enum Action { Usage, Verify, Repair, Clean };

    Action action = Usage;
    qint64 maximumBytes = 0; ///< of what clean leaves

    /// The others do without a catalogue.
    bool needsSources() const { return action == Repair; }
};

/// One call of nkpm.
struct Invocation
{
    SourceOptions sources;
    QString dataDirectory; ///< empty: the default of the platform
    bool json = false;
    bool verbose = false;
    std::variant<
        ListOptions, ShowOptions, FileOptions, KeywordsOptions, InstallOptions, CollectionOptions,
        SourcesOptions, StoreOptions>
        command;

    /// Whether it is about a catalogue.
    bool needsSources() const
    {
        const auto *store = std::get_if<StoreOptions>(&command);
        return !store || store->needsSources();
    }
};

} // namespace nk::pm::cli
