// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace nk::pm::test {

/// What a call of nkledger gave.
struct CallResult
{
    int exitCode = -1; ///< -1 if it crashed
    QByteArray output;
    QString errors;

    QJsonObject json() const;
};

/// Calls nkledger with \a arguments in \a directory and waits for its end.
CallResult callNkledger(const QString &directory, const QStringList &arguments);

/// A running "nkledger serve"; it ends with this object.
class ServedPublication
{
public:
    explicit ServedPublication(const QString &publication);
    ~ServedPublication();

    /// With "/" at its end; empty if the server doesn't run.
    QString url() const { return m_url; }
    /// Ends it as Ctrl-C would, and gives its exit code.
    int interrupt();

private:
    Q_DISABLE_COPY(ServedPublication)
    QProcess m_process;
    QString m_url;
};

/// Makes keys in \a directory: a trust key "trust" and an issuer "studio" that it has signed.
void makeKeys(const QString &directory);

/// The arguments after "publish CATALOGUE_DIR OUT_DIR" that use these keys.
QStringList keyArguments();

} // namespace nk::pm::test
