// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "publish/layout.h"
#include "sources/trustkey.h"

#include <QFileInfo>
#include <QJsonArray>

namespace nk::pm::publisher {

using crypto::ed25519::PrivateKey;
using crypto::ed25519::PublicKey;

namespace {

constexpr int refreshMilliseconds = 50;

QString label(const Problem &problem)
{
    return problem.severity == Problem::Error ? QStringLiteral("error") : QStringLiteral("warning");
}

} // namespace

void TerminalProgress::begin(const QString &what, int total)
{
    m_what = what;
    m_done = 0;
    m_total = total;
    m_shown.invalidate();
}

void TerminalProgress::advance()
{
    if (!m_line.isEnabled())
        return;
    const QMutexLocker locker(&m_mutex);
    ++m_done;
    if (m_shown.isValid() && m_shown.elapsed() < refreshMilliseconds)
        return;
    m_shown.start();
    m_line.show(QStringLiteral("%1: %2 of %3").arg(m_what).arg(m_done).arg(m_total));
}

void TerminalProgress::end()
{
    m_line.clear();
}

QString counted(int number, const QString &what)
{
    return QStringLiteral("%1 %2%3").arg(number).arg(
        what, number == 1 ? QString() : QStringLiteral("s"));
}

void printProblems(const Problems &problems, Output &output)
{
    const auto sorted = problems.sorted();
    for (const Problem &problem : sorted)
        output.remark(
            problem.severity == Problem::Error ? terminal::Emphasis::Error
                                               : terminal::Emphasis::Warning,
            problem.file, label(problem), problem.text);
}

QJsonArray describeProblems(const Problems &problems)
{
    QJsonArray list;
    const auto sorted = problems.sorted();
    for (const Problem &problem : sorted)
        list.append(QJsonObject{
            {QStringLiteral("severity"), label(problem)},
            {QStringLiteral("subject"), problem.file},
            {QStringLiteral("text"), problem.text},
        });
    return list;
}

bool isPublication(const QString &path, Output &output)
{
    if (QFileInfo::exists(Layout(path).ledgerFile()))
        return true;
    output.error(QStringLiteral("\"%1\" is no publication: there is no \"%2\"")
                     .arg(path, Layout(path).ledgerFile()));
    return false;
}

std::optional<QByteArray> readFile(const QString &path, Output &output)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        return file.readAll();
    output.error(QStringLiteral("can't read \"%1\": %2").arg(path, file.errorString()));
    return {};
}

std::optional<PublicKey> readPublicKey(const QString &path, Output &output)
{
    const auto pem = readFile(path, output);
    if (!pem)
        return {};
    const PublicKey key = PublicKey::fromPEM(*pem);
    if (key.isValid())
        return key;
    output.error(QStringLiteral("\"%1\" is not the PEM file of an Ed25519 public key").arg(path));
    return {};
}

std::optional<PrivateKey> readPrivateKey(const QString &path, Output &output)
{
    auto pem = readFile(path, output);
    if (!pem)
        return {};
    const PrivateKey key = PrivateKey::fromPEM(*pem);
    pem->fill('\0');
    if (key.isValid())
        return key;
    output.error(QStringLiteral("\"%1\" is not the PEM file of an Ed25519 private key").arg(path));
    return {};
}

std::optional<PublicKey> readTrustKey(const QString &path, Output &output)
{
    if (!path.isEmpty())
        return readPublicKey(path, output);
    if (ledger::trustsDevelopmentKey()) {
        output.remark(
            terminal::Emphasis::Warning, {}, QStringLiteral("warning"),
            QStringLiteral("trusts the development key"));
    }
    return PublicKey::fromPEM(ledger::trustKeyPem());
}

QString privateKeyFile(const QString &name)
{
    return name + privateKeyEnd;
}

QString publicKeyFile(const QString &name)
{
    return name + publicKeyEnd;
}

QString issuerRecordFile(const QString &name)
{
    return name + QStringLiteral("-issuer.json");
}

QString keyName(const QString &file, QLatin1String end)
{
    return file.endsWith(end) ? file.chopped(end.size()) : QString();
}

} // namespace nk::pm::publisher
