// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testfiles.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr int patience = 20 * 60 * 1000; // milliseconds: a whole build on a busy machine

const QString sourceDirectory = NKPM_SOURCE_DIR;
const QString catalogue = sourceDirectory + "/examples/catalogue";

/// The output of a command; a failed one ends the test with it.
QString run(
    const QString &program, const QStringList &arguments,
    const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    const bool fine = process.waitForFinished(patience)
                      && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    const QString output = process.readAllStandardOutput();
    if (!fine) {
        qWarning().noquote() << program << arguments.join(' ') << '\n'
                             << output << process.readAllStandardError();
        return QString();
    }
    return output.isNull() ? QString("") : output;
}

/// The library here may be built with sanitizers, which its users then need too.
QString compilerFlags()
{
    const QString sanitizers = NKPM_SANITIZE;
    return sanitizers.isEmpty() ? QString() : "-fsanitize=" + sanitizers;
}

/// The first code block of \a language in \a page.
QByteArray codeBlock(const QString &page, const QString &language)
{
    const QString start = "```" + language + '\n';
    const int first = page.indexOf(start) + start.size();
    return page.mid(first, page.indexOf("```", first) - first).toUtf8();
}

} // namespace

class TestConsumer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void movedInstallTree();
    void pkgConfig();
    void buildTree();
    void embeddingGuide();
    void embeddedOnOwnPlatform();

private:
    /// Configures and builds the stranger's project, and gives what its program prints.
    QString buildAndRun(const QString &name, const QStringList &options);

    QTemporaryDir m_directory;
    QString m_prefix;
    QStringList m_packages;
};

void TestConsumer::initTestCase()
{
    const QString first = m_directory.filePath("first");
    QVERIFY(!run(NKPM_CMAKE, {"--install", NKPM_BINARY_DIR, "--prefix", first}).isNull());
    m_prefix = m_directory.filePath("moved");
    QVERIFY(QDir().rename(first, m_prefix));

    QDirIterator manifests(
        catalogue + "/packages", {"manifest.json"}, QDir::Files, QDirIterator::Subdirectories);
    while (manifests.hasNext()) {
        manifests.next();
        m_packages << manifests.fileInfo().dir().dirName();
    }
    m_packages.sort();
    QVERIFY(m_packages.size() > 30);
}

QString TestConsumer::buildAndRun(const QString &name, const QStringList &options)
{
    const QString build = m_directory.filePath(name);
    QStringList arguments{
        "-S",
        sourceDirectory + "/tests/consumer/project",
        "-B",
        build,
        "-G",
        "Ninja",
        "-DCMAKE_CXX_COMPILER=" NKPM_CXX_COMPILER,
        "-DCMAKE_CXX_FLAGS=" + compilerFlags()};
    if (run(NKPM_CMAKE, arguments + options).isNull()
        || run(NKPM_CMAKE, {"--build", build}).isNull())
        return QString();
    QStringList ids = run(build + "/consumer", {catalogue}).split('\n', Qt::SkipEmptyParts);
    ids.sort();
    return ids.join(' ');
}

void TestConsumer::movedInstallTree()
{
    QCOMPARE(buildAndRun("installed", {"-DCMAKE_PREFIX_PATH=" + m_prefix}), m_packages.join(' '));
    // Nothing of the tree remembers where it was first, or where it was built.
    QDirIterator files(
        m_prefix, {"*.cmake", "*.pc", "qmldir"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QByteArray content = nk::pm::test::readFile(files.next());
        QVERIFY2(!content.contains(sourceDirectory.toUtf8()), qPrintable(files.filePath()));
        QVERIFY2(!content.contains(m_directory.path().toUtf8()), qPrintable(files.filePath()));
    }
}

void TestConsumer::pkgConfig()
{
    QString pcFile;
    QDirIterator files(m_prefix, {"*.pc"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        pcFile = files.next();
    const QString libraries = QFileInfo(pcFile).dir().filePath("..");
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PKG_CONFIG_PATH", QFileInfo(pcFile).path());
    environment.insert("LD_LIBRARY_PATH", libraries);
    QString flags = run("pkg-config", {"--cflags", "--libs", "NorvakPackageManager"}, environment);
    QVERIFY(!flags.isNull());

    const QString program = m_directory.filePath("by-pkg-config");
    QStringList arguments{
        "-std=c++17", "-fPIC", sourceDirectory + "/tests/consumer/project/main.cpp", "-o", program};
    arguments += (compilerFlags() + ' ' + flags).simplified().split(' ', Qt::SkipEmptyParts);
    QVERIFY(!run(NKPM_CXX_COMPILER, arguments, environment).isNull());
    QStringList ids = run(program, {catalogue}, environment).split('\n', Qt::SkipEmptyParts);
    ids.sort();
    QCOMPARE(ids, m_packages);
}

void TestConsumer::buildTree()
{
    QCOMPARE(
        buildAndRun("from-build-tree", {"-DNorvakPackageManager_DIR=" NKPM_BINARY_DIR}),
        m_packages.join(' '));
}

/// Follows docs/embedding.md to the letter.
void TestConsumer::embeddingGuide()
{
    const QString page = nk::pm::test::readFile(sourceDirectory + "/docs/embedding.md");
    const QString project = m_directory.filePath("guide");
    const QString build = m_directory.filePath("guide-build");
    nk::pm::test::writeFile(project + "/CMakeLists.txt", codeBlock(page, "cmake"));
    nk::pm::test::writeFile(project + "/main.cpp", codeBlock(page, "cpp"));
    nk::pm::test::writeFile(project + "/main.qml", codeBlock(page, "qml"));
    QVERIFY(
        !run(NKPM_CMAKE,
             {"-S", project, "-B", build, "-G", "Ninja", "-DCMAKE_PREFIX_PATH=" + m_prefix,
              "-DCMAKE_CXX_COMPILER=" NKPM_CXX_COMPILER, "-DCMAKE_CXX_FLAGS=" + compilerFlags()})
             .isNull());
    QVERIFY(!run(NKPM_CMAKE, {"--build", build}).isNull());

    QProcess application;
    application.setWorkingDirectory(project);
    application.setProcessChannelMode(QProcess::MergedChannels);
    application.start(build + "/mycatalogue", {catalogue});
    QByteArray output;
    while (!output.contains(" packages") && application.waitForReadyRead(60000))
        output += application.readAll();
    application.kill();
    application.waitForFinished();
    QVERIFY2(
        output.contains(QByteArray::number(m_packages.size()) + " packages"), output.constData());
}

void TestConsumer::embeddedOnOwnPlatform()
{
    QCOMPARE(
        buildAndRun(
            "embedded", {"-DNKPM_SOURCE_DIR=" + sourceDirectory, "-DCMAKE_BUILD_TYPE=Debug"}),
        m_packages.join(' '));
}

QTEST_GUILESS_MAIN(TestConsumer)
#include "tst_consumer.moc"
