// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "options.h"
#include "output.h"

namespace nk::pm::cli {

class Catalogue;

/// The subcommands, one source file each. Each answers one request on an open catalogue, writes its
/// result, or says on stderr why it can't, and gives the exit code.
int run(const ListOptions &options, Catalogue &catalogue, Output &output);
int run(const ShowOptions &options, Catalogue &catalogue, Output &output);
int run(const FileOptions &options, Catalogue &catalogue, Output &output);
int run(const KeywordsOptions &options, Catalogue &catalogue, Output &output);
int run(const InstallOptions &options, Catalogue &catalogue, Output &output);
int run(const CollectionOptions &options, Catalogue &catalogue, Output &output);
int run(const SourcesOptions &options, Catalogue &catalogue, Output &output);
/// The catalogue is open only if the options need it.
int run(const StoreOptions &options, Catalogue &catalogue, Output &output);

/// "No such ..." with the remedy, for an identifier or a type that the catalogue doesn't have.
QString noPackage(const Catalogue &catalogue, const QString &id);
QString noType(const QString &type);

} // namespace nk::pm::cli
