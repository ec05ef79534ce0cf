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

/// What a command printed, its errors too, and how it ended.
struct Outcome
{
    bool fine = false;
    QString output;
};

Outcome attempt(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    Outcome outcome;
    outcome.fine = process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit
                   && process.exitCode() == 0;
    outcome.output = process.readAllStandardOutput();
    return outcome;
}

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
    void findsItselfWhereverItIs();
    void exportsWhatItMeansTo();
    void loadsTheQmlModule();
    void refusesAnotherVersion();
    void pkgConfig();
    void buildTree();
    void embeddingGuide();
    void embeddedStatically();
    void embeddedOnOwnPlatform();
    void refusesProgramsOnAnotherPlatform();

private:
    /// The arguments with which cmake configures the stranger's project in directory \a name.
    QStringList configuration(const QString &name, const QStringList &options) const;
    /// Configures and builds the stranger's project, and gives what its program prints.
    QString buildAndRun(const QString &name, const QStringList &options);
    QString library(const QString &name) const;

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

QStringList TestConsumer::configuration(const QString &name, const QStringList &options) const
{
    return QStringList{
               "-S",
               sourceDirectory + "/tests/consumer/project",
               "-B",
               m_directory.filePath(name),
               "-G",
               "Ninja",
               "-DCMAKE_CXX_COMPILER=" NKPM_CXX_COMPILER,
               "-DCMAKE_CXX_FLAGS=" + compilerFlags()}
           + options;
}

/// The file of that name below the moved tree's libraries, wherever these are.
QString TestConsumer::library(const QString &name) const
{
    QDirIterator files(m_prefix, {name}, QDir::NoFilter, QDirIterator::Subdirectories);
    return files.hasNext() ? files.next() : QString();
}

QString TestConsumer::buildAndRun(const QString &name, const QStringList &options)
{
    const QString build = m_directory.filePath(name);
    if (run(NKPM_CMAKE, configuration(name, options)).isNull()
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

void TestConsumer::findsItselfWhereverItIs()
{
    QDirIterator files(
        m_prefix, {"*.so", "nkpm", "nkledger", "norvak-catalogue"}, QDir::Files,
        QDirIterator::Subdirectories);
    int programs = 0;
    while (files.hasNext()) {
        const QString path = files.next();
        if (path.contains("/completions/"))
            continue;
        const QString dynamic = run("readelf", {"-d", path});
        QVERIFY(!dynamic.isNull());
        const auto match = QRegularExpression("R(?:UN)?PATH.*\\[(.*)\\]").match(dynamic);
        const QStringList directories = match.captured(1).split(':', Qt::SkipEmptyParts);
        for (const QString &directory : directories)
            QVERIFY2(directory.startsWith("$ORIGIN"), qPrintable(path + ": " + directory));
        if (!path.endsWith(".so"))
            ++programs;
        else if (path.contains("/libNorvak"))
            QVERIFY2(dynamic.contains("[" + files.fileName() + ".0]"), qPrintable(path + dynamic));
    }
    QCOMPARE(programs, 3);
}

void TestConsumer::exportsWhatItMeansTo()
{
    const QString symbols = run(
        "nm", {"--dynamic", "--defined-only", "--demangle", library("libNorvakPackageManager.so")});
    QVERIFY(symbols.contains("nk::pm::PackageRepository::addSource("));
    QVERIFY(!symbols.contains("nk::pm::PackageServerAccessor::load("));
    QVERIFY(!symbols.contains("nk::pm::PackageRepositoryPrivate::"));
    const QStringList lines = symbols.split('\n', Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        if (line.contains(" T "))
            QVERIFY2(line.contains("nk::"), qPrintable(line));
    }
}

/// By a program that knows nothing of the library: the plugin has to find it.
void TestConsumer::loadsTheQmlModule()
{
    const QString imports = QDir::cleanPath(library("qmldir") + "/../../..");
    const QString importer = m_directory.filePath("installed/importer");
    QCOMPARE(run(importer, {imports}), QString("nk::pm::PackageListModel\n"));
    QVERIFY(!attempt(importer, {m_prefix}).fine); // it isn't found elsewhere
}

void TestConsumer::refusesAnotherVersion()
{
    for (const QString version : {"99.0", "0.99"}) {
        const Outcome outcome = attempt(
            NKPM_CMAKE, configuration(
                            "version-" + version, {"-DCMAKE_PREFIX_PATH=" + m_prefix,
                                                   "-DNKPM_WANTED_VERSION=" + version}));
        QVERIFY(!outcome.fine);
        QVERIFY2(
            outcome.output.contains("requested version \"" + version + '"'),
            qPrintable(outcome.output));
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

/// As a static library inside another project, which installs it along; and from there once more.
void TestConsumer::embeddedStatically()
{
    QCOMPARE(
        buildAndRun(
            "static", {"-DNKPM_SOURCE_DIR=" + sourceDirectory, "-DBUILD_SHARED_LIBS=OFF",
                       "-DNKPM_INSTALL=ON", "-DCMAKE_BUILD_TYPE=Debug"}),
        m_packages.join(' '));
    const QString first = m_directory.filePath("static-first");
    const QString moved = m_directory.filePath("static-moved");
    const QString build = m_directory.filePath("static");
    QVERIFY(!run(NKPM_CMAKE, {"--install", build, "--prefix", first}).isNull());
    QVERIFY(QDir().rename(first, moved));
    QVERIFY(QDir(build).removeRecursively());
    QCOMPARE(
        buildAndRun("static-installed", {"-DCMAKE_PREFIX_PATH=" + moved}), m_packages.join(' '));
}

void TestConsumer::embeddedOnOwnPlatform()
{
    QCOMPARE(
        buildAndRun(
            "embedded", {"-DNKPM_SOURCE_DIR=" + sourceDirectory, "-DNKPM_PLATFORM=external",
                         "-DCMAKE_BUILD_TYPE=Debug"}),
        m_packages.join(' '));
}

void TestConsumer::refusesProgramsOnAnotherPlatform()
{
    const Outcome outcome = attempt(
        NKPM_CMAKE, configuration(
                        "programs", {"-DNKPM_SOURCE_DIR=" + sourceDirectory,
                                     "-DNKPM_PLATFORM=external", "-DNKPM_BUILD_APPS=ON"}));
    QVERIFY(!outcome.fine);
    QVERIFY2(outcome.output.contains("NKPM_BUILD_APPS needs"), qPrintable(outcome.output));
}

QTEST_GUILESS_MAIN(TestConsumer)
#include "tst_consumer.moc"
