// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "log.h"

#include "output.h"

#include <QLoggingCategory>

#include <cstdio>

namespace nk::pm::cli {
namespace {

void toStandardError(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QByteArray line = printable(qFormatLogMessage(type, context, message)).toUtf8() + '\n';
    fwrite(line.constData(), 1, size_t(line.size()), stderr);
}

} // namespace

void setUpLog(bool verbose)
{
    if (verbose) {
        qSetMessagePattern(QStringLiteral(
            "%{time process} %{if-category}%{category} %{endif}%{type}: %{message}"));
        QLoggingCategory::setFilterRules(QStringLiteral("norvak.*=true"));
    } else {
        qSetMessagePattern(QStringLiteral("nkpm: %{message}"));
        // The errors of an install are logged under norvak.packages, those of a poll and of a
        // ledger under norvak.packageserver; the commands report them.
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false\n"
                                                        "*.warning=false\n"
                                                        "norvak.packages.critical=false\n"
                                                        "norvak.packageserver*.critical=false"));
    }
    qInstallMessageHandler(toStandardError);
}

} // namespace nk::pm::cli
