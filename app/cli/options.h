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

/// One call of nkpm.
struct Invocation
{
    SourceOptions sources;
    QString dataDirectory; ///< empty: the default of the platform
    bool json = false;
    bool verbose = false;
    std::variant<
        ListOptions, ShowOptions, FileOptions, KeywordsOptions, InstallOptions, CollectionOptions,
        SourcesOptions>
        command;
};

} // namespace nk::pm::cli
