// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commandline.h"

#include "exitcodes.h"
#include "sources/trustkey.h"
#include "terminal/sourceurls.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <iostream>
#include <limits>

namespace nk::pm::cli {
namespace {

/// Options of the whole program, as CLI11 fills them in.
struct Global
{
    std::vector<std::string> local, servers, databases;
    std::string data;
    bool json = false;
    bool verbose = false;
};

QString text(const std::string &value)
{
    return QString::fromLocal8Bit(value.data(), int(value.size()));
}

QStringList texts(const std::vector<std::string> &values)
{
    QStringList result;
    for (const auto &value : values)
        result.append(text(value));
    return result;
}

std::string namesDirectory(const std::string &value)
{
    return value.empty() ? "names no directory" : std::string();
}

CLI::App &addCommand(CLI::App &app, const char *name, const char *summary, const char *examples)
{
    auto *command = app.add_subcommand(name, summary);
    command->footer(examples);
    command->fallthrough();
    return *command;
}

/// What adds one of several actions to \a command, which notes it in \a values.
template<typename Values>
auto actionsOf(CLI::App &command, const std::shared_ptr<Values> &values)
{
    command.require_subcommand(1);
    return [&command, values](const char *name, const char *summary, auto action) -> CLI::App & {
        auto &added = *command.add_subcommand(name, summary);
        added.fallthrough();
        added.callback([values, action] { values->action = action; });
        return added;
    };
}

using Command = decltype(Invocation::command);
/// Makes the chosen command once everything is parsed.
using Finish = std::function<Command()>;

Finish addList(CLI::App &app)
{
    struct Values
    {
        std::string type, search, sort;
        std::vector<std::string> keywords, fields;
        bool full = false;
    };
    auto values = std::make_shared<Values>();
    auto &command = addCommand(
        app, "list", "List packages: identifier, type and name",
        "Examples:\n"
        "  nkpm --local catalogue list furniture:seating\n"
        "  nkpm --local catalogue list --search oak --sort price --field price\n"
        "  nkpm --local catalogue list --keyword living-room --json");
    command.add_option("TYPE", values->type, "Only this type and the types below it");
    command
        .add_option(
            "--keyword", values->keywords,
            "Only packages with this keyword, by its "
            "identifier; repeatable")
        ->type_name("ID")
        ->allow_extra_args(false);
    auto *search =
        command
            .add_option(
                "--search", values->search, "Only packages with a keyword that holds this text")
            ->type_name("TEXT");
    command.add_flag("--full", values->full, "The keyword has to be the text, not just hold it")
        ->needs(search);
    command
        .add_option(
            "--field", values->fields,
            "Only packages whose manifest has this field, and "
            "show it; repeatable")
        ->type_name("NAME")
        ->allow_extra_args(false);
    command.add_option("--sort", values->sort, "Order by this integer field, ascending")
        ->type_name("FIELD");
    return [values] {
        return ListOptions{text(values->type), texts(values->keywords), text(values->search),
                           values->full,       texts(values->fields),   text(values->sort)};
    };
}

Finish addShow(CLI::App &app)
{
    auto id = std::make_shared<std::string>();
    auto &command = addCommand(
        app, "show", "Show all that is known of one package",
        "Example:\n"
        "  nkpm --local catalogue show armchair-nora");
    command.add_option("ID", *id, "The package's identifier")->required();
    return [id] { return ShowOptions{text(*id)}; };
}

Finish addFile(CLI::App &app)
{
    struct Values
    {
        std::string id, name, output;
    };
    auto values = std::make_shared<Values>();
    auto &command = addCommand(
        app, "file", "Write one file of a package, without installing the package",
        "A file of a package server is kept in the store, so it is fetched once.\n"
        "\n"
        "Example:\n"
        "  nkpm --local examples/catalogue file armchair-nora armchair-nora.svg > preview.svg");
    command.add_option("ID", values->id, "The package's identifier")->required();
    command.add_option("NAME", values->name, "The file's name")->required();
    command.add_option("--output", values->output, "Write it there instead of to stdout")
        ->type_name("FILE");
    return [values] {
        return FileOptions{text(values->id), text(values->name), text(values->output)};
    };
}

Finish addKeywords(CLI::App &app)
{
    struct Values
    {
        std::string type, search;
        bool categories = false;
    };
    auto values = std::make_shared<Values>();
    auto &command = addCommand(
        app, "keywords", "List keywords: identifier, kind and text in your language",
        "Examples:\n"
        "  nkpm --local catalogue keywords --search chair\n"
        "  nkpm --local catalogue keywords furniture --categories");
    command.add_option("TYPE", values->type, "Only keywords that a package of this type has");
    command.add_option("--search", values->search, "Only keywords that hold this text")
        ->type_name("TEXT");
    command.add_flag("--categories", values->categories, "Only categories");
    return [values] {
        return KeywordsOptions{text(values->type), text(values->search), values->categories};
    };
}

/// The options that say how packages are laid down.
struct LayDownValues
{
    std::string into;
    bool link = false, replace = false;
};

void addLayDownOptions(CLI::App &command, LayDownValues &values)
{
    command.add_option("--into", values.into, "The directory; made if it is missing")
        ->required()
        ->check(namesDirectory)
        ->type_name("DIR");
    command.add_flag(
        "--link", values.link,
        "Hard links instead of copies, where possible: saves space, but who changes "
        "such a file changes the catalogue's too");
    command.add_flag(
        "--replace", values.replace,
        "Replace the files of packages that stand there with other content");
}

Finish addInstall(CLI::App &app)
{
    struct Values : LayDownValues
    {
        std::vector<std::string> ids;
    };
    auto values = std::make_shared<Values>();
    auto &command = addCommand(
        app, "install", "Install packages and all that they require into a directory",
        "Each package gets the directory DIR/TYPE/ID, with \"/\" between the levels of its type.\n"
        "All packages are laid down or none: nothing is left behind by a failure or by Ctrl-C.\n"
        "\n"
        "Example:\n"
        "  nkpm --local catalogue install scene-reading-corner --into project");
    command.add_option("ID", values->ids, "Identifiers of packages")->required();
    addLayDownOptions(command, *values);
    return [values] {
        return InstallOptions{
            texts(values->ids), text(values->into), values->link, values->replace};
    };
}

Finish addCollection(CLI::App &app)
{
    struct Values : LayDownValues
    {
        std::string file;
        std::vector<std::string> ids;
        CollectionOptions::Action action = CollectionOptions::List;
    };
    auto values = std::make_shared<Values>();
    auto &command = addCommand(
        app, "collection", "Keep a list of packages in a file",
        "Examples:\n"
        "  nkpm --local catalogue collection room.json add armchair-nora table-disc\n"
        "  nkpm --local catalogue collection room.json list\n"
        "  nkpm --local catalogue collection room.json install --into project");
    command.add_option("FILE", values->file, "The collection; add makes it")->required();
    const auto addAction = actionsOf(command, values);
    for (auto *changing :
         {&addAction("add", "Put packages in", CollectionOptions::Add),
          &addAction("remove", "Take packages out", CollectionOptions::Remove)})
        changing->add_option("ID", values->ids, "Identifiers of packages")->required();
    addAction("list", "Show the packages", CollectionOptions::List);
    addLayDownOptions(
        addAction(
            "install", "Install the packages and all that they require",
            CollectionOptions::Install),
        *values);
    return [values] {
        return CollectionOptions{text(values->file), values->action, texts(values->ids),
                                 text(values->into), values->link,   values->replace};
    };
}

Finish addSources(CLI::App &app)
{
    addCommand(
        app, "sources", "Show what each source contributes",
        "Example:\n"
        "  nkpm --local catalogue --local my-packages sources");
    return [] { return SourcesOptions{}; };
}

Finish addStore(CLI::App &app)
{
    struct Values
    {
        StoreOptions::Action action = StoreOptions::Usage;
        qint64 maximumBytes = 0;
    };
    auto values = std::make_shared<Values>();
    auto &command = addCommand(
        app, "store", "Look after the files that were downloaded",
        "Examples:\n"
        "  nkpm store verify\n"
        "  nkpm --server https://catalogue.example.org/ store repair\n"
        "  nkpm store clean --max-size 500M");
    const auto addAction = actionsOf(command, values);
    addAction("usage", "Show how much the store holds", StoreOptions::Usage);
    addAction("verify", "Compare every file with its digest", StoreOptions::Verify);
    addAction(
        "repair", "Verify, and fetch damaged files again from the sources", StoreOptions::Repair);
    addAction(
        "clean", "Remove files that no program has installed, the longest unused first",
        StoreOptions::Clean)
        .add_option(
            "--max-size", values->maximumBytes,
            "So much may stay: 500M, 2G, or 2Gi with a factor of 1024")
        ->required()
        ->transform(CLI::AsSizeValue(true).description({}))
        ->check(CLI::Range(std::numeric_limits<qint64>::max()).description({}))
        ->type_name("SIZE");
    return [values] { return StoreOptions{values->action, values->maximumBytes}; };
}

void addGlobalOptions(CLI::App &app, Global &global)
{
    app.add_option("--local", global.local, "A directory of packages; repeatable")
        ->type_name("DIR")
        ->check(namesDirectory)
        ->allow_extra_args(false);
    app.add_option("--server", global.servers, "The address of a package server; repeatable")
        ->type_name("URL")
        ->allow_extra_args(false);
    app.add_option(
           "--couchdb", global.databases,
           "A CouchDB database; user and password stand in the URL or in NKPM_COUCHDB_USER and "
           "NKPM_COUCHDB_PASSWORD; repeatable")
        ->type_name("URL")
        ->allow_extra_args(false);
    app.add_option(
           "--data", global.data,
           "Where nkpm keeps its own files, instead of your data "
           "directory")
        ->type_name("DIR")
        ->check(namesDirectory);
    app.add_flag("--json", global.json, "Print JSON");
    app.add_flag("--verbose", global.verbose, "Print the library's log to stderr");
    app.set_version_flag(
        "--version", ledger::trustsDevelopmentKey() ? "nkpm " NKPM_VERSION
                                                      " (trusts the development key)"
                                                    : "nkpm " NKPM_VERSION);
    app.footer("Global options may stand before or behind the command.\n"
               "\n"
               "Exit codes: 0 fine, 1 the request could not be met, 2 wrong usage,\n"
               "128 + N an install or the care of the store was stopped by signal N.\n"
               "\n"
               "Examples:\n"
               "  nkpm --local catalogue list\n"
               "  nkpm --local catalogue install scene-reading-corner --into project\n"
               "  nkpm list --help");
}

int refuse(const CLI::App &app, const std::string &reason)
{
    std::string command = "nkpm";
    for (const auto *chosen : app.get_subcommands())
        command += " " + chosen->get_name();
    std::cerr << "nkpm: " << reason << " (" << command << " --help)\n";
    return Usage;
}

int explain(const CLI::App &app, const CLI::ParseError &error)
{
    if (error.get_exit_code() == int(CLI::ExitCodes::Success))
        return app.exit(error, std::cout, std::cerr);
    if (!app.get_subcommands().empty())
        return refuse(app, error.what());
    if (app.remaining_size() > 0) {
        const std::string first = app.remaining().front();
        const char *kind = first.front() == '-' ? "option" : "command";
        return refuse(app, std::string("there is no ") + kind + " \"" + first + "\"");
    }
    return refuse(app, "a command is missing");
}

} // namespace

std::variant<Invocation, int> parseCommandLine(int argc, const char *const *argv)
{
    CLI::App app("Lists, shows and installs packages of a catalogue.", "nkpm");
    Global global;
    addGlobalOptions(app, global);
    app.require_subcommand(1);
    const std::vector<std::pair<const char *, Finish>> commands{
        {"list", addList(app)},       {"show", addShow(app)},
        {"file", addFile(app)},       {"keywords", addKeywords(app)},
        {"install", addInstall(app)}, {"collection", addCollection(app)},
        {"sources", addSources(app)}, {"store", addStore(app)},
    };
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return explain(app, error);
    }
    Invocation invocation;
    for (const auto &[name, finish] : commands) {
        if (app.got_subcommand(name))
            invocation.command = finish();
    }
    invocation.sources.localDirectories = texts(global.local);
    const auto servers = texts(global.servers);
    for (const QString &server : servers) {
        invocation.sources.servers.append(terminal::serverUrl(server));
        if (invocation.sources.servers.last().isEmpty())
            return refuse(
                app, "a package server has an address such as https://catalogue.example.org/");
    }
    const auto databases = texts(global.databases);
    for (const QString &database : databases) {
        invocation.sources.databases.append(terminal::databaseUrl(database));
        if (invocation.sources.databases.last().isEmpty())
            return refuse(app, "a database has a URL such as http://127.0.0.1:5984/catalogue");
    }
    if (invocation.needsSources() && invocation.sources.isEmpty())
        return refuse(app, "a source is missing: --local DIR, --server URL or --couchdb URL");
    invocation.dataDirectory = text(global.data);
    invocation.json = global.json;
    invocation.verbose = global.verbose;
    return invocation;
}

} // namespace nk::pm::cli
