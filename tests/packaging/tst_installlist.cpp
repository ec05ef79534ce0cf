// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/programcall.h"
#include "support/testfiles.h"

#include <QDir>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace nk::pm::test;

namespace {

/// A file of the system, and what of ours takes it: a path below the source or the build directory.
struct Use
{
    QString user;
    QString file;
};
using Uses = QVector<Use>;
using Names = QSet<QString>;

Names matches(const QString &text, const char *pattern)
{
    Names names;
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    for (auto it = expression.globalMatch(text); it.hasNext();)
        names.insert(it.next().captured(1));
    return names;
}

QString ours(const QString &path)
{
    return readFile(NKPM_SOURCE_DIR "/" + path);
}

/// What no Debian is without.
Names base()
{
    const QString all =
        call("dpkg-query", {"-W", "-f", "${Package} ${Priority} ${Essential}\n"}).output;
    return matches(all, "^(\\S+) (?:required|\\S+ yes)");
}

/// What apt would install with \a packages on a bare machine, whatever is installed here.
Names closure(const Names &packages)
{
    static const QTemporaryDir cache;
    const QStringList options{"-s",     "--no-install-recommends",
                              "-o",     "Dir::State::status=/dev/null",
                              "-o",     "Dir::Cache=" + cache.path(),
                              "-o",     "Dir::Cache::pkgcache=pkgcache.bin",
                              "-o",     "Dir::Cache::srcpkgcache=srcpkgcache.bin",
                              "install"};
    const CallResult result = call("apt-get", options + packages.values());
    if (result.exitCode != 0)
        qWarning("%s", qPrintable(result.errors));
    return matches(result.output, "^Inst (\\S+)");
}

/// The packages of each file here, by its name: links lead from it to other names.
QHash<QString, Names> owners(const Uses &uses)
{
    QHash<QString, QStringList> paths;
    for (const Use &use : uses) {
        for (const QString &path : {use.file, QFileInfo(use.file).canonicalFilePath()})
            paths[use.file] << path << path.mid(path.startsWith("/usr/") ? 4 : 0);
    }
    QStringList arguments{"-S"};
    for (const QStringList &names : qAsConst(paths))
        arguments += names;
    QHash<QString, Names> byPath;
    const QStringList lines = QString(call("dpkg-query", arguments).output).split('\n');
    for (const QString &line : lines) {
        const int colon = line.lastIndexOf(": ");
        byPath[line.mid(colon + 2)] +=
            matches(line.left(colon), "([a-z0-9][a-z0-9+.-]+)(?::\\w+)?");
    }
    QHash<QString, Names> owners;
    for (auto it = paths.cbegin(); it != paths.cend(); ++it) {
        for (const QString &path : it.value())
            owners[it.key()] += byPath.value(path);
    }
    return owners;
}

/// Where an engine finds the module; a module without a directory may be part of the one above it.
QString moduleDirectory(const QString &module, const QString &version)
{
    const QString path = QLibraryInfo::location(QLibraryInfo::Qml2ImportsPath) + '/'
                         + QString(module).replace('.', '/');
    for (const QString &end : {"." + version, "." + version.section('.', 0, 0), QString()}) {
        if (QFileInfo::exists(path + end + "/qmldir"))
            return path + end;
    }
    const int dot = module.lastIndexOf('.');
    return dot < 0 ? QString() : moduleDirectory(module.left(dot), version);
}

} // namespace

/// All that is used here has to come with packaging/debian-packages.txt; this machine may have
/// more.
class tst_InstallList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void bringsLibraries();
    void bringsHeaders();
    void bringsQmlModules();
    void guideBringsQmlModules();
    void bringsCommands();
    void bringsWhatIsLoadedAtRunTime();

private:
    /// What of \a uses doesn't come with the packages: those for the tests are there for users in
    /// tests/ and bench/, and for ./test.
    QString missing(const Uses &uses) const;
    static QString missing(const Uses &uses, const Names &packages);

    Names m_run;
    Names m_test;
};

void tst_InstallList::initTestCase()
{
    if (!readFile("/etc/os-release").contains("VERSION_CODENAME=bookworm"))
        QSKIP("This isn't Debian 12.");
    if (QDir("/var/lib/apt/lists").entryList({"*_Packages*"}).isEmpty())
        QSKIP("apt knows no packages here: apt-get update");
    const QString list = ours("packaging/debian-packages.txt");
    m_run = base() + closure(matches(list, "^run +(\\S+)"));
    m_test = base() + closure(matches(list, "^(?:run|test) +(\\S+)"))
             + matches(list, "^node +(\\S+)"); // by themselves, or of another origin
    QVERIFY(m_run.contains("qtbase5-dev") && m_test.contains("nginx-light"));
}

QString tst_InstallList::missing(const Uses &uses, const Names &packages)
{
    const auto all = owners(uses);
    QString missing;
    for (const Use &use : uses) {
        const Names owners = all.value(use.file);
        if (!owners.intersects(packages))
            missing += '\n' + use.user + ": " + use.file + " of " + owners.values().join(' ');
    }
    return missing;
}

QString tst_InstallList::missing(const Uses &uses) const
{
    static const QRegularExpression ofTests("^(tests?|bench)(/|$)");
    Uses tests, others;
    for (const Use &use : uses)
        (ofTests.match(use.user).hasMatch() ? tests : others).append(use);
    return missing(tests, m_test) + missing(others, m_run);
}

void tst_InstallList::bringsLibraries()
{
    const QDir build(NKPM_BINARY_DIR);
    QStringList programs;
    for (const QString folder : {"app", "platform", "publisher", "qml", "src", "tests", "bench"}) {
        for (const QString &path : filesBelow(build.filePath(folder))) {
            static const QRegularExpression program("/(tst_|bench_|nk|norvak-)[^./]*$|\\.so$");
            if (program.match(path).hasMatch() && !path.contains("/consumer/built/")
                && QFileInfo(path).isExecutable())
                programs.append(path);
        }
    }
    Uses uses;
    QString user;
    const QStringList lines = QString(call("ldd", programs).output).split('\n');
    for (const QString &line : lines) {
        if (line.endsWith(':'))
            user = build.relativeFilePath(line.chopped(1));
        const QString library = line.section(" => ", 1).section(" (", 0, 0);
        if (library.startsWith('/') && !library.startsWith(build.path()))
            uses.append({user, library});
    }
    QVERIFY(uses.size() > 50);
    QCOMPARE(missing(uses), QString());
}

void tst_InstallList::bringsHeaders()
{
    QMap<QString, QString> users; // by the part of the tree and the header
    QString user;
    const QStringList lines =
        QString(call("ninja", {"-C", NKPM_BINARY_DIR, "-t", "deps"}).output).split('\n');
    for (const QString &line : lines) {
        if (!line.startsWith(' '))
            user = line.section(": #deps", 0, 0);
        else if (line.startsWith("    /usr/"))
            users.insert(user.section('/', 0, 0) + line, user);
    }
    Uses uses;
    for (auto it = users.cbegin(); it != users.cend(); ++it)
        uses.append({it.value(), it.key().section("    ", 1)});
    QVERIFY(uses.size() > 500);
    QCOMPARE(missing(uses), QString());
}

/// The modules that \a text, of the file \a user, imports.
static Uses imports(const QString &user, const QString &text)
{
    Uses uses;
    static const QRegularExpression import(
        "^import (?!Norvak)([\\w.]+) ([\\d.]+)", QRegularExpression::MultilineOption);
    for (auto it = import.globalMatch(text); it.hasNext();) {
        const auto match = it.next();
        const QString directory = moduleDirectory(match.captured(1), match.captured(2));
        uses.append(
            {user, directory.isEmpty() ? "module " + match.captured(1) : directory + "/qmldir"});
    }
    return uses;
}

void tst_InstallList::bringsQmlModules()
{
    Uses uses;
    const QDir source(NKPM_SOURCE_DIR);
    for (const QString &path : filesBelow(source.filePath("app"))) {
        if (path.endsWith(".qml"))
            uses += imports(source.relativeFilePath(path), readFile(path));
    }
    QVERIFY(uses.size() > 50);
    QCOMPARE(missing(uses), QString());
}

/// With the packages that the page names itself.
void tst_InstallList::guideBringsQmlModules()
{
    const QString page = ours("docs/embedding.md");
    const QString named = page.section("on Debian 12:", 1).section(')', 0, 0);
    const auto packages = closure(matches(named, "([a-z0-9][a-z0-9.+-]+)"));
    const Uses uses = imports("docs/embedding.md", page);
    QCOMPARE(uses.size(), 2);
    QCOMPARE(missing(uses, packages), QString());
}

void tst_InstallList::bringsCommands()
{
    constexpr char inScripts[] =
        "(?:^|[|;&({!]|\\b(?:then|do|else|exec|env|xargs)\\b|\\bstep \"[^\"]*\")"
        "(?:\\s|\\w+=\\S* )*([a-z][a-z0-9._+-]*)(?=[\\s);]|$)";
    constexpr char inTests[] = "(?:\\b(?:call|run|attempt|start|execute|find(?:Executable|Program))"
                               "\\((?:QStringLiteral\\()?\\s*\""
                               "|COMMAND |QStringList \\w+\\{\")([a-z][a-z0-9._+-]*)\\b";
    const QStringList systemPaths{"/usr/bin", "/usr/sbin"};
    const QDir source(NKPM_SOURCE_DIR);
    QStringList files = filesBelow(source.filePath("tests"));
    for (const char *script : {"run", "test", "scripts/common.sh", "scripts/tour.sh"})
        files.append(source.filePath(script));
    Uses uses;
    for (const QString &path : qAsConst(files)) {
        const bool isTest = path.endsWith(".cpp") || path.endsWith("CMakeLists.txt");
        if (path.contains("/node_modules/") || (!isTest && path.contains("/tests/")))
            continue;
        QString text = readFile(path);
        text.replace("\\\n", " ");
        text.remove(QRegularExpression("(?ms)^\\s*#.*?$|<<'?(\\w+)'?$.*?^\\1$"));
        Names commands = matches(text, isTest ? inTests : inScripts);
        commands -= matches(text, "command -v ([a-z-]+)"); // asked for before it is used
        for (const QString &command : qAsConst(commands)) {
            const QString file = QStandardPaths::findExecutable(command, systemPaths);
            if (!file.isEmpty())
                uses.append({source.relativeFilePath(path), file});
        }
    }
    // What CMakeLists.txt looks for; the other such programs are for those who change the code.
    const QString cache = readFile(NKPM_BINARY_DIR "/CMakeCache.txt");
    for (const QString &file : matches(cache, "^NKPM_(?:CCACHE|LRELEASE):FILEPATH=(/.*)$"))
        uses.append({"CMakeLists.txt", file});
    QVERIFY(uses.size() > 30);
    QCOMPARE(missing(uses), QString());
}

/// No file of ours names these: each with the program that asks for it.
void tst_InstallList::bringsWhatIsLoadedAtRunTime()
{
    const QString plugins = QLibraryInfo::location(QLibraryInfo::PluginsPath);
    const QString translations = QLibraryInfo::location(QLibraryInfo::TranslationsPath);
    const Uses uses{
        {"app/catalogue", plugins + "/imageformats/libqsvg.so"},
        {"app/catalogue", plugins + "/platforms/libqoffscreen.so"},
        {"app/catalogue", translations + "/qtbase_de.qm"},
        {"tests/reuse", "/usr/bin/git"}};
    QCOMPARE(missing(uses), QString());
}

QTEST_GUILESS_MAIN(tst_InstallList)
#include "tst_installlist.moc"
