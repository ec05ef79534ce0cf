// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>

#include <variant>

namespace nk::pm::publisher {

struct KeygenOptions
{
    QString name; ///< path of the files without what follows the name
};

struct IssueOptions
{
    QString issuerKey; ///< public
    QString trustKey;  ///< private
    QStringList labels;
    QString output; ///< empty: beside the issuer's key
};

struct CheckOptions
{
    QString catalogue;
    bool strict = false; ///< warnings are errors
    bool followLinks = false;
};

struct PublishOptions
{
    QString catalogue;
    QString target;
    QStringList issuers; ///< KEY or TYPE=KEY
    QString trustKey;    ///< public; empty: the one that this build was made with
    bool followLinks = false;
    bool force = false;
};

struct PruneOptions
{
    QString publication;
    bool dryRun = false;
};

struct InspectOptions
{
    QString ledger;
    QStringList ids;
};

struct VerifyOptions
{
    QString ledger;
    QString trustKey; ///< as above
};

struct DiffOptions
{
    QString before;
    QString after;
};

struct ServeOptions
{
    QString publication;
    int port = 0; ///< 0: any that is free
};

struct CouchPushOptions
{
    QString catalogue;
    QString database; ///< URL, perhaps with user and password
    bool followLinks = false;
};

struct NginxOptions
{
    QString publication;
    QString listen;
    QString serverName;
    QString prefix;
};

/// One call of nkledger.
struct Invocation
{
    bool json = false;
    std::variant<
        KeygenOptions, IssueOptions, CheckOptions, PublishOptions, PruneOptions, InspectOptions,
        VerifyOptions, DiffOptions, ServeOptions, NginxOptions, CouchPushOptions>
        command;
};

} // namespace nk::pm::publisher
