// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/programcall.h"

#include <QJsonDocument>

namespace nk::pm::test {

QJsonObject CallResult::json() const
{
    return QJsonDocument::fromJson(output).object();
}

QStringList CallResult::firstWords() const
{
    QStringList words;
    for (const QString &line : QString::fromUtf8(output).split('\n', Qt::SkipEmptyParts))
        words.append(line.section(' ', 0, 0));
    return words;
}

QProcessEnvironment environmentWith(const QMap<QString, QString> &changes)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        if (change->isNull())
            environment.remove(change.key());
        else
            environment.insert(change.key(), *change);
    }
    return environment;
}

CallResult finish(QProcess &process, int patience)
{
    process.closeWriteChannel();
    const bool ended = process.waitForFinished(patience);
    const bool exited = ended && process.exitStatus() == QProcess::NormalExit;
    return {
        exited ? process.exitCode() : -1, process.readAllStandardOutput(),
        QString::fromUtf8(process.readAllStandardError())};
}

CallResult call(
    const QString &program, const QStringList &arguments, const QString &directory,
    const QMap<QString, QString> &environmentChanges)
{
    QProcess process;
    process.setWorkingDirectory(directory);
    process.setProcessEnvironment(environmentWith(environmentChanges));
    process.start(program, arguments);
    return finish(process);
}

} // namespace nk::pm::test
