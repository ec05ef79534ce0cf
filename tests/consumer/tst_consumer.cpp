// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/programcall.h"
#include "support/testfiles.h"

#include <QDirIterator>
#include <QtTest>

using namespace nk::pm::test;

namespace {

constexpr int patience = 20 * 60 * 1000; // milliseconds: a whole build on a busy machine

const QString sourceDirectory = NKPM_SOURCE_DIR;
const QString catalogue = sourceDirectory + "/examples/catalogue";

CallResult attempt(
    const QString &program, const QStringList &arguments,
    const QMap<QString, QString> &environmentChanges = {})
{
    QProcess process;
    process.setProcessEnvironment(environmentWith(environmentChanges));
    process.start(program, arguments);
    return finish(process, patience);
}

/// The output of a command; null of one that fails, which is told.
QString run(
    const QString &program, const QStringList &arguments,
    const QMap<QString, QString> &environmentChanges = {})
{
    const CallResult result = attempt(program, arguments, environmentChanges);
    if (result.exitCode == 0)
        return result.output.isEmpty() ? QString("") : QString(result.output);
    qWarning().noquote() << program << arguments.join(' ') << '\n'
                         << result.output << result.errors;
    return QString();
}

QString sortedLines(const QString &text)
{
    QStringList lines = text.split('\n', Qt::SkipEmptyParts);
    lines.sort();
    return lines.join(' ');
}

QStringList filesBelow(const QString &directory, const QStringList &names)
{
    QStringList files;
    QDirIterator it(directory, names, QDir::NoFilter, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    return files;
}

/// The library is built anew, as fast as can be.
const QStringList embedding{
    "-DNKPM_SOURCE_DIR=" + sourceDirectory, "-DCMAKE_BUILD_TYPE=Debug",
    "-DCMAKE_CXX_FLAGS=", "-DCMAKE_CXX_FLAGS_DEBUG=-O0"};

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
    /// The one file of that name in the moved tree, wherever it is.
    QString installed(const QString &name) const { return filesBelow(m_prefix, {name}).value(0); }

    /// Always the same place, so that a compiler cache knows what is built in it.
    const QDir m_directory{NKPM_CONSUMER_DIR};
    QString m_prefix;
    QString m_packages; ///< of the example catalogue, as sortedLines()
};

void TestConsumer::initTestCase()
{
    QVERIFY(QDir(m_directory).removeRecursively() && m_directory.mkpath("."));
    QVERIFY(QDir::setCurrent(m_directory.path()));
    const QString first = m_directory.filePath("first");
    QVERIFY(!run(NKPM_CMAKE, {"--install", NKPM_BINARY_DIR, "--prefix", first}).isNull());
    m_prefix = m_directory.filePath("moved");
    QVERIFY(QDir().rename(first, m_prefix));

    QString ids;
    const QStringList manifests = filesBelow(catalogue + "/packages", {"manifest.json"});
    for (const QString &manifest : manifests)
        ids += manifest.section('/', -2, -2) + '\n';
    m_packages = sortedLines(ids);
    QVERIFY(manifests.size() > 30);
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

QString TestConsumer::buildAndRun(const QString &name, const QStringList &options)
{
    const QString build = m_directory.filePath(name);
    if (run(NKPM_CMAKE, configuration(name, options)).isNull()
        || run(NKPM_CMAKE, {"--build", build}).isNull())
        return QString();
    return sortedLines(run(build + "/consumer", {catalogue}));
}

void TestConsumer::movedInstallTree()
{
    QCOMPARE(buildAndRun("installed", {"-DCMAKE_PREFIX_PATH=" + m_prefix}), m_packages);
    // Nothing of the tree remembers where it was first, or where it was built.
    for (const QString &file : filesBelow(m_prefix, {"*.cmake", "*.pc", "qmldir"})) {
        const QByteArray content = readFile(file);
        QVERIFY2(!content.contains(sourceDirectory.toUtf8()), qPrintable(file));
        QVERIFY2(!content.contains(m_directory.path().toUtf8()), qPrintable(file));
    }
}

void TestConsumer::findsItselfWhereverItIs()
{
    QStringList programs;
    for (const QString &path :
         filesBelow(m_prefix, {"*.so", "nkpm", "nkledger", "norvak-catalogue"})) {
        if (path.contains("/completions/"))
            continue;
        const QString dynamic = run("readelf", {"-d", path});
        QVERIFY(!dynamic.isNull());
        const auto match = QRegularExpression("R(?:UN)?PATH.*\\[(.*)\\]").match(dynamic);
        const QStringList directories = match.captured(1).split(':', Qt::SkipEmptyParts);
        for (const QString &directory : directories)
            QVERIFY2(directory.startsWith("$ORIGIN"), qPrintable(path + ": " + directory));
        const QString name = path.section('/', -1);
        if (!name.endsWith(".so"))
            programs.append(name);
        else if (name.startsWith("libNorvak"))
            QVERIFY2(dynamic.contains("[" + name + ".0]"), qPrintable(path + dynamic));
    }
    QCOMPARE(programs.size(), 3);
}

void TestConsumer::exportsWhatItMeansTo()
{
    const QString symbols =
        run("nm",
            {"--dynamic", "--defined-only", "--demangle", installed("libNorvakPackageManager.so")});
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
    const QString imports = QDir::cleanPath(installed("qmldir") + "/../../..");
    const QString importer = m_directory.filePath("installed/importer");
    QCOMPARE(run(importer, {imports}), QString("nk::pm::PackageListModel\n"));
    QVERIFY(attempt(importer, {m_prefix}).exitCode != 0); // it isn't found elsewhere
}

void TestConsumer::refusesAnotherVersion()
{
    for (const QString version : {"99.0", "0.99"}) {
        const CallResult result = attempt(
            NKPM_CMAKE, configuration(
                            "version-" + version, {"-DCMAKE_PREFIX_PATH=" + m_prefix,
                                                   "-DNKPM_WANTED_VERSION=" + version}));
        QVERIFY(result.exitCode != 0);
        QVERIFY2(
            result.errors.contains("requested version \"" + version + '"'),
            qPrintable(result.errors));
    }
}

void TestConsumer::pkgConfig()
{
    const QString pcFiles = QFileInfo(installed("*.pc")).path();
    const QMap<QString, QString> changes{
        {"PKG_CONFIG_PATH", pcFiles}, {"LD_LIBRARY_PATH", pcFiles + "/.."}};
    const QString flags =
        run("pkg-config", {"--cflags", "--libs", "NorvakPackageManager"}, changes);
    QVERIFY(!flags.isNull());

    const QString program = m_directory.filePath("by-pkg-config");
    QStringList arguments{
        "-std=c++17", "-fPIC", sourceDirectory + "/tests/consumer/project/main.cpp", "-o", program};
    arguments += (compilerFlags() + ' ' + flags).simplified().split(' ', Qt::SkipEmptyParts);
    QVERIFY(!run(NKPM_CXX_COMPILER, arguments, changes).isNull());
    QCOMPARE(sortedLines(run(program, {catalogue}, changes)), m_packages);
}

void TestConsumer::buildTree()
{
    QCOMPARE(
        buildAndRun("from-build-tree", {"-DNorvakPackageManager_DIR=" NKPM_BINARY_DIR}),
        m_packages);
}

/// Follows docs/embedding.md to the letter.
void TestConsumer::embeddingGuide()
{
    const QString page = readFile(sourceDirectory + "/docs/embedding.md");
    const QString project = m_directory.filePath("guide");
    const QString build = m_directory.filePath("guide-build");
    writeFile(project + "/CMakeLists.txt", codeBlock(page, "cmake"));
    writeFile(project + "/main.cpp", codeBlock(page, "cpp"));
    writeFile(project + "/main.qml", codeBlock(page, "qml"));
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
        output.contains(QByteArray::number(m_packages.count(' ') + 1) + " packages"),
        output.constData());
}

/// As a static library that another project fetches, installs along, and finds there once more.
void TestConsumer::embeddedStatically()
{
    const QStringList settings{
        "-DNKPM_FETCH=ON", "-DBUILD_SHARED_LIBS=OFF", "-DNKPM_INSTALL=ON",
        "-DCMAKE_CXX_STANDARD=14", "-DCMAKE_UNITY_BUILD=ON"};
    QCOMPARE(buildAndRun("static", embedding + settings), m_packages);
    const QString first = m_directory.filePath("static-first");
    const QString moved = m_directory.filePath("static-moved");
    const QString build = m_directory.filePath("static");
    QVERIFY(!run(NKPM_CMAKE, {"--install", build, "--prefix", first}).isNull());
    QVERIFY(QDir().rename(first, moved));
    QVERIFY(QDir(build).removeRecursively());
    QCOMPARE(buildAndRun("static-installed", {"-DCMAKE_PREFIX_PATH=" + moved}), m_packages);
}

/// As a shared one beside the installed library.
void TestConsumer::embeddedOnOwnPlatform()
{
    const QStringList settings{
        "-DNKPM_PLATFORM=external", "-DCMAKE_PREFIX_PATH=" + m_prefix, "-DCMAKE_CXX_STANDARD=20"};
    QCOMPARE(buildAndRun("embedded", embedding + settings), m_packages);
    QVERIFY(!m_directory.exists("packages")); // the library knows where the program's data is
    const QString libraries = run("ldd", {m_directory.filePath("embedded/consumer")});
    QVERIFY(libraries.contains(m_directory.filePath("embedded/nkpm/src/libNorvak")));
    QVERIFY(!libraries.contains(m_prefix));
}

void TestConsumer::refusesProgramsOnAnotherPlatform()
{
    const QStringList settings{"-DNKPM_PLATFORM=external", "-DNKPM_BUILD_APPS=ON"};
    const CallResult result = attempt(NKPM_CMAKE, configuration("programs", embedding + settings));
    QVERIFY(result.exitCode != 0);
    QVERIFY2(result.errors.contains("NKPM_BUILD_APPS needs"), qPrintable(result.errors));
}

QTEST_GUILESS_MAIN(TestConsumer)
#include "tst_consumer.moc"
