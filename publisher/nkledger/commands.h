// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/cataloguescan.h"
#include "catalogue/problems.h"
#include "catalogue/progress.h"
#include "commandline.h"
#include "terminal/output.h"

#include <norvakcrypto/ed25519.h>

#include <QElapsedTimer>
#include <QMutex>

#include <optional>

namespace nk::pm::publisher {

using terminal::Output;

/// The subcommands. Each writes its result, or says on stderr why there is none.
ExitCode run(const KeygenOptions &options, Output &output);
ExitCode run(const IssueOptions &options, Output &output);
ExitCode run(const CheckOptions &options, Output &output);
ExitCode run(const PublishOptions &options, Output &output);
ExitCode run(const PruneOptions &options, Output &output);
ExitCode run(const InspectOptions &options, Output &output);
ExitCode run(const VerifyOptions &options, Output &output);
ExitCode run(const DiffOptions &options, Output &output);
ExitCode run(const ServeOptions &options, Output &output);
ExitCode run(const NginxOptions &options, Output &output);
ExitCode run(const CouchPushOptions &options, Output &output);

/// Shows how far a piece of work has come, on a terminal.
class TerminalProgress : public Progress
{
public:
    void begin(const QString &what, int total) override;
    void advance() override;
    void end() override;

private:
    QMutex m_mutex;
    terminal::ProgressLine m_line;
    QString m_what;
    int m_done = 0;
    int m_total = 0;
    QElapsedTimer m_shown;
};

/// How links of a catalogue are taken, by the option --follow-links.
inline Links linksOf(bool followLinks)
{
    return followLinks ? Links::Anywhere : Links::Within;
}

/// "1 package", "2 packages".
QString counted(int number, const QString &what);

/// One line of stderr for each problem.
void printProblems(const Problems &problems, Output &output);
/// The same for other programs.
QJsonArray describeProblems(const Problems &problems);

/// Whether \a path is a publication's directory; an error says why it isn't.
bool isPublication(const QString &path, Output &output);

/// The content of \a path, or nothing and an error.
std::optional<QByteArray> readFile(const QString &path, Output &output);
/// The public key in the PEM file \a path, or nothing and an error.
std::optional<crypto::ed25519::PublicKey> readPublicKey(const QString &path, Output &output);
std::optional<crypto::ed25519::PrivateKey> readPrivateKey(const QString &path, Output &output);
/// The public trust key in \a path; if that is empty, the one of this build.
std::optional<crypto::ed25519::PublicKey> readTrustKey(const QString &path, Output &output);

/// The names of the files that belong to the key pair \a name.
QString privateKeyFile(const QString &name);
QString publicKeyFile(const QString &name);
QString issuerRecordFile(const QString &name);
/// What a file's name is made from, if it ends in \a end; else empty.
QString keyName(const QString &file, QLatin1String end);
const QLatin1String privateKeyEnd("-private.pem");
const QLatin1String publicKeyEnd(".pem");

} // namespace nk::pm::publisher
