// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "support/programcall.h"

namespace nk::pm::test {

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

enum class Trust {
    Nobody,         ///< a new trust key that no program knows
    DefaultPrograms ///< the development key, which the programs of this build trust
};

/// Makes keys in \a directory: a trust key "trust" and an issuer "studio" that it has signed.
void makeKeys(const QString &directory, Trust trust = Trust::Nobody);

/// The call of nkledger that publishes \a catalogue in \a target with these keys.
QStringList publishArguments(const QString &catalogue, const QString &target);
/// Calls it; whatever goes wrong is fatal.
void publishWithKeys(
    const QString &directory, const QString &catalogue, const QString &target = "public");

} // namespace nk::pm::test
