// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/nginxserver.h"

#include "support/testfiles.h"

#include <QDir>
#include <QSslCertificate>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/prctl.h>
#endif

namespace nk::pm::test {

namespace {

// nginx lives in a directory that isn't in every user's path.
QString findProgram(const QString &name)
{
    const QString program = QStandardPaths::findExecutable(name);
    return !program.isEmpty() ? program
                              : QStandardPaths::findExecutable(name, {QStringLiteral("/usr/sbin")});
}

// One process without a master, so that ending it by its id ends all of it.
const char configuration[] = R"(
daemon off;
master_process off;
pid nginx.pid;
error_log error.log warn;
events { worker_connections 1024; }
http {
    client_body_temp_path body;
    proxy_temp_path proxy;
    fastcgi_temp_path fastcgi;
    uwsgi_temp_path uwsgi;
    scgi_temp_path scgi;
    log_format line "$connection $status $request";
    access_log access.log line;
    default_type application/octet-stream;
    sendfile on;
    tcp_nopush off;
    keepalive_requests 100000;
    root root;
    server {
        listen 127.0.0.1:%PORT%;
        listen 127.0.0.1:%TLSPORT% ssl;
        server_name localhost;
        ssl_certificate server.crt;
        ssl_certificate_key server.key;
        location / { }
        location /gzip/ { alias root/; gzip on; gzip_types *; gzip_min_length 1; }
        location /quiet/ { alias root/; access_log off; }
        location /slow/ { alias root/; limit_rate 64k; limit_rate_after 64k; }
        location /closing/ { alias root/; keepalive_timeout 0; }
        location /busy/ { return 503; }
        location /moved/ { rewrite ^/moved(/.*)$ $1 redirect; }
        location /tls-moved/ { rewrite ^/tls-moved(/.*)$ https://localhost:%TLSPORT%$1 redirect; }
        location /plain-moved/ { rewrite ^/plain-moved(/.*)$ http://localhost:%PORT%$1 redirect; }
    }
}
)";

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

bool answers(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(1000);
}

void run(const QString &directory, const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(directory);
    process.start(findProgram(program), arguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        qFatal("%s failed: %s", qPrintable(program), process.readAllStandardError().constData());
}

} // namespace

void NginxServer::Process::setupChildProcess()
{
#ifdef Q_OS_LINUX
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
}

NginxServer::NginxServer()
{
    QDir().mkpath(root());
    makeCertificates();
    // Between the choice of a port and nginx's use of it another process may take it.
    for (int attempt = 0; attempt < 10; ++attempt) {
        m_port = freePort();
        m_tlsPort = freePort();
        writeConfiguration();
        if (start())
            return;
    }
    qFatal(
        "nginx doesn't start: %s",
        readFile(m_directory.filePath(QStringLiteral("error.log"))).constData());
}

NginxServer::~NginxServer()
{
    m_process.terminate();
    if (!m_process.waitForFinished(10000))
        m_process.kill();
    m_process.waitForFinished();
}

bool NginxServer::isInstalled()
{
    return !findProgram(QStringLiteral("nginx")).isEmpty()
           && !findProgram(QStringLiteral("openssl")).isEmpty();
}

void NginxServer::addFile(const QString &name, const QByteArray &content) const
{
    writeFile(root() + QLatin1Char('/') + name, content);
}

QUrl NginxServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path));
}

QUrl NginxServer::tlsUrl(const QString &path) const
{
    return QUrl(QStringLiteral("https://localhost:%1%2").arg(m_tlsPort).arg(path));
}

QSslConfiguration NginxServer::trust() const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(
        QSslCertificate::fromPath(m_directory.filePath(QStringLiteral("authority.crt"))));
    return configuration;
}

int NginxServer::requestCount() const
{
    return accessLog().size();
}

int NginxServer::connectionsOfLast(int count) const
{
    QSet<QByteArray> connections;
    for (const QByteArray &line : accessLog().mid(qMax(0, accessLog().size() - count)))
        connections.insert(line.left(line.indexOf(' ')));
    return connections.size();
}

QList<QByteArray> NginxServer::accessLog() const
{
    QList<QByteArray> lines =
        readFile(m_directory.filePath(QStringLiteral("access.log"))).split('\n');
    lines.removeLast(); // what comes after the last line's end
    return lines;
}

void NginxServer::makeCertificates() const
{
    const QString path = m_directory.path();
    const QStringList key{"-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes"};
    run(path, "openssl",
        QStringList{
            "req", "-x509", "-days", "2", "-subj", "/CN=Test authority", "-keyout", "authority.key",
            "-out", "authority.crt"}
            + key);
    run(path, "openssl",
        QStringList{"req", "-subj", "/CN=localhost", "-keyout", "server.key", "-out", "server.csr"}
            + key);
    writeFile(path + "/server.ext", "subjectAltName=DNS:localhost,IP:127.0.0.1\n");
    run(path, "openssl",
        {"x509", "-req", "-days", "2", "-in", "server.csr", "-CA", "authority.crt", "-CAkey",
         "authority.key", "-CAcreateserial", "-extfile", "server.ext", "-out", "server.crt"});
}

void NginxServer::writeConfiguration() const
{
    QByteArray text(configuration);
    text.replace("%PORT%", QByteArray::number(m_port));
    text.replace("%TLSPORT%", QByteArray::number(m_tlsPort));
    writeFile(m_directory.filePath(QStringLiteral("nginx.conf")), text);
}

void NginxServer::restart()
{
    m_process.kill();
    m_process.waitForFinished();
    for (int attempt = 0; attempt < 10; ++attempt) {
        if (start())
            return;
    }
    qFatal("nginx doesn't start again");
}

bool NginxServer::start()
{
    m_process.setProgram(findProgram(QStringLiteral("nginx")));
    m_process.setArguments({"-p", m_directory.path(), "-e", "error.log", "-c", "nginx.conf"});
    m_process.start();
    if (!m_process.waitForStarted())
        return false;
    // It is ready when it answers, and lost when it has ended, as it does if a port was taken.
    while (m_process.state() == QProcess::Running && !answers(m_port))
        m_process.waitForFinished(10);
    return m_process.state() == QProcess::Running;
}

} // namespace nk::pm::test
