// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"
#include "ledger/issuer.h"

#include <norvakutil/fileutils.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

namespace nk::pm::publisher {

using crypto::ed25519::PrivateKey;

namespace {

constexpr QFile::Permissions forEverybody =
    QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther;

/// Writes a new file whole, or none. Until \a permissions are widened only the owner may read it.
QString writeNewFile(const QString &path, const QByteArray &content, QFile::Permissions permissions)
{
    QTemporaryFile file(path + QStringLiteral(".XXXXXX")); // made for the owner alone
    const bool written = file.open() && file.write(content) == content.size() && file.flush()
                         && file.setPermissions(permissions);
    if (!written)
        return QStringLiteral("can't write \"%1\": %2").arg(path, file.errorString());
    if (!file.rename(path))
        return QStringLiteral("can't write \"%1\": %2")
            .arg(
                path,
                QFileInfo::exists(path) ? QStringLiteral("it exists already") : file.errorString());
    file.setAutoRemove(false);
    util::FileUtils::syncFile(path);
    return {};
}

} // namespace

ExitCode run(const KeygenOptions &options, Output &output)
{
    const QString privateFile = privateKeyFile(options.name);
    const QString publicFile = publicKeyFile(options.name);
    const PrivateKey key = PrivateKey::generate();
    QString fault;
    if (QFileInfo::exists(publicFile))
        fault = QStringLiteral("\"%1\" exists already").arg(publicFile);
    QByteArray secret = key.toPEM();
    if (fault.isEmpty())
        fault = writeNewFile(privateFile, secret, QFile::ReadOwner | QFile::WriteOwner);
    secret.fill('\0');
    if (fault.isEmpty()) {
        fault = writeNewFile(publicFile, key.publicKey().toPEM(), forEverybody);
        if (!fault.isEmpty())
            QFile::remove(privateFile); // half a pair would be in the way of the next try
    }
    if (!fault.isEmpty()) {
        output.error(fault);
        return Failed;
    }
    if (output.isJson())
        output.json(
            {{QStringLiteral("privateKey"), privateFile},
             {QStringLiteral("publicKey"), publicFile}});
    else
        output.lines({privateFile, publicFile});
    return Fine;
}

ExitCode run(const IssueOptions &options, Output &output)
{
    const QString name = keyName(options.issuerKey, publicKeyEnd);
    if (options.labels.size() > 2) {
        output.error(QStringLiteral("an issuer has two labels at most"));
        return Usage;
    }
    for (const QString &label : options.labels) {
        const QString fault = IssuerRecord::labelFault(label);
        if (!fault.isEmpty()) {
            output.error(fault);
            return Usage;
        }
    }
    if (options.output.isEmpty() && name.isEmpty()) {
        output.error(QStringLiteral("name the issuer record with --output, since \"%1\" doesn't "
                                    "end in \"%2\"")
                         .arg(options.issuerKey, publicKeyEnd));
        return Usage;
    }
    const auto issuerKey = readPublicKey(options.issuerKey, output);
    const auto trustKey = readPrivateKey(options.trustKey, output);
    if (!issuerKey || !trustKey)
        return Failed;
    const IssuerRecord record =
        IssuerRecord::issue(*issuerKey, options.labels.at(0), options.labels.value(1), *trustKey);
    const QString target = options.output.isEmpty() ? issuerRecordFile(name) : options.output;
    const QString fault = writeNewFile(target, record.toJson(), forEverybody);
    if (!fault.isEmpty()) {
        output.error(fault);
        return Failed;
    }
    if (output.isJson())
        output.json({{QStringLiteral("issuer"), target}});
    else
        output.lines({target});
    return Fine;
}

} // namespace nk::pm::publisher
