// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "catalogue.h"
#include "exitcodes.h"
#include "interrupt.h"
#include "laydown.h"
#include "output.h"
#include "requirements.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "install/packageinstaller.h"
#include "references/packagereference.h"
#include "repository/packageaccessor.h"

#include <QEventLoop>
#include <QFutureWatcher>
#include <QJsonArray>
#include <QTimer>
#include <QtConcurrentRun>

#include <chrono>

namespace nk::pm::cli {
namespace {

constexpr std::chrono::milliseconds progressInterval{100};

/// One run of the command. Each step gives the reason why it failed, or an empty text.
class Install
{
public:
    Install(const InstallOptions &options, Catalogue &catalogue)
        : m_options(options)
        , m_catalogue(catalogue)
        , m_layDown(options.directory)
    {}

    QString run();
    int signalNumber() const { return m_interrupt.number(); }
    const QVector<LaidPackage> &packages() const { return m_packages; }
    const QVector<const PackageNode *> &nodes() const { return m_nodes; }

private:
    QString findPackages();
    QString waitForReferences();
    QString gather();
    QString stage();
    QString stagePackage(int number);
    void showProgress();

    const InstallOptions &m_options;
    Catalogue &m_catalogue;
    Interrupt m_interrupt;
    Progress m_progress;
    LayDown m_layDown;
    QVector<PackageReference *> m_references;
    QSharedPointer<PackageIndex> m_index; // holds the nodes, and what is installed on disk
    QVector<const PackageNode *> m_nodes;
    QVector<LaidPackage> m_packages;
};

QString Install::run()
{
    using Step = QString (Install::*)();
    for (const Step step :
         {&Install::findPackages, &Install::waitForReferences, &Install::gather, &Install::stage}) {
        QString fault = (this->*step)();
        if (m_interrupt.number() != 0)
            return QStringLiteral("stopped, nothing was installed");
        if (!fault.isEmpty())
            return fault;
    }
    return m_layDown.commit(m_packages);
}

QString Install::findPackages()
{
    if (m_catalogue.lacksFiles())
        return QStringLiteral("nothing was installed: it may lack what it requires");
    for (const auto &id : m_options.ids) {
        const auto *node = m_catalogue.index()->getPackage(QStringRef(&id));
        if (!node || id.isEmpty()) // a package may have such a name, but no reference leads to it
            return noPackage(m_catalogue, id);
    }
    QString fault = m_layDown.open();
    if (!fault.isEmpty())
        return fault;
    for (const auto &id : m_options.ids)
        m_references.append(m_catalogue.repository()->packageReference(id));
    return {};
}

/// Installed only if all are, failed as soon as one is.
PackageReference::Status commonStatus(const QVector<PackageReference *> &references)
{
    auto result = PackageReference::Installed;
    for (const auto *reference : references)
        result = qMin(result, reference->status());
    return result;
}

QString reasonOf(const PackageReference *reference)
{
    if (reference->status() == PackageReference::Unavailable)
        return QStringLiteral("%1 is not available any more").arg(reference->id());
    const auto errors = reference->installer()->errors();
    QString reason = QStringLiteral("can't install %1").arg(reference->id());
    if (!errors.isEmpty())
        reason += QLatin1String(": ") + errors.first().message;
    if (errors.size() > 1)
        reason += QStringLiteral(" (and %1 more errors)").arg(errors.size() - 1);
    return reason;
}

QString Install::waitForReferences()
{
    QEventLoop loop;
    const auto check = [this, &loop] {
        if (commonStatus(m_references) != PackageReference::Installing)
            loop.quit();
    };
    for (auto *reference : qAsConst(m_references))
        QObject::connect(reference, &PackageReference::statusChanged, &loop, check);
    QObject::connect(&m_interrupt, &Interrupt::raised, &loop, &QEventLoop::quit);
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, [this] { showProgress(); });
    timer.start(progressInterval);
    if (m_interrupt.number() == 0 && commonStatus(m_references) == PackageReference::Installing)
        loop.exec();
    for (const auto *reference : qAsConst(m_references)) {
        if (reference->status() < PackageReference::Installing)
            return reasonOf(reference);
    }
    return {};
}

void Install::showProgress()
{
    int all = 0, finished = 0;
    QVector<const QObject *> left; // no recursion: trees may be as deep as the catalogue is long
    for (const auto *reference : qAsConst(m_references))
        left.append(reference->installer());
    while (!left.isEmpty()) {
        const auto *installer = qobject_cast<const PackageInstaller *>(left.takeLast());
        if (!installer)
            continue;
        ++all;
        finished += installer->status() != PackageInstaller::InProgress ? 1 : 0;
        for (const QObject *child : installer->children())
            left.append(child);
    }
    m_progress.show(QStringLiteral("Fetching packages: %1 of %2").arg(finished).arg(all));
}

LaidPackage laidPackage(
    const QString &path, const QDir &source, const QVector<PackageFileInfo> &files)
{
    LaidPackage package{path, source, {}};
    for (const auto &file : files) {
        package.files.append(file.name);
        package.digests.insert(file.name, file.digest);
    }
    return package;
}

QString Install::gather()
{
    m_index = m_catalogue.index();
    for (const auto *reference : qAsConst(m_references))
        m_nodes.append(reference->node());
    m_nodes = withRequirements(m_nodes);
    for (const auto *node : qAsConst(m_nodes)) {
        const QString path = relativePackagePath(node->type().toString(), node->id().toString());
        if (path.isEmpty()) {
            return QStringLiteral(
                       "package \"%1\" of type \"%2\" can't be laid down: its name is no "
                       "file name")
                .arg(node->id(), node->type());
        }
        const auto files = node->files();
        if (!files)
            return QStringLiteral("can't read the list of the files of \"%1\"").arg(node->id());
        m_packages.append(laidPackage(path, node->installLocation().directory(false), *files));
    }
    return {};
}

QString Install::stage()
{
    for (int i = 0; i < m_packages.size() && m_interrupt.number() == 0; ++i) {
        m_progress.show(QStringLiteral("Laying down %1 (%2 of %3)")
                            .arg(m_nodes.at(i)->id())
                            .arg(i + 1)
                            .arg(m_packages.size()));
        QString fault = stagePackage(i);
        if (!fault.isEmpty())
            return fault;
    }
    m_progress.clear();
    return {};
}

/// On a worker, so that a signal is heard during the copy of a large file.
QString Install::stagePackage(int number)
{
    std::atomic<bool> cancelled{false};
    QEventLoop loop;
    QFutureWatcher<QString> watcher;
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &loop, &QEventLoop::quit);
    const auto cancel = [&cancelled] { cancelled = true; }; // called while the loop is there
    QObject::connect(&m_interrupt, &Interrupt::raised, &loop, cancel);
    const auto mode = m_options.link ? LayDown::Link : LayDown::Copy;
    watcher.setFuture(QtConcurrent::run([&, mode] {
        return m_layDown.stage(m_packages[number], mode, m_options.replace, cancelled);
    }));
    loop.exec();
    return watcher.result();
}

QString stateText(LaidPackage::State state)
{
    switch (state) {
    case LaidPackage::New:
        return QStringLiteral("new");
    case LaidPackage::Present:
        return QStringLiteral("present");
    case LaidPackage::Replaced:
        return QStringLiteral("replaced");
    }
    return {};
}

Table asTable(const Install &install, const QDir &directory)
{
    Table table{
        {QStringLiteral("STATE"), QStringLiteral("FILES"), QStringLiteral("BYTES"),
         QStringLiteral("DIRECTORY")},
        {},
        {1, 2}};
    for (const auto &package : install.packages()) {
        table.rows.append(
            {stateText(package.state), QString::number(package.files.size()),
             QString::number(package.bytes), directory.filePath(package.path)});
    }
    return table;
}

QJsonObject asJson(const Install &install, const QDir &directory)
{
    QJsonArray packages;
    for (int i = 0; i < install.packages().size(); ++i) {
        const auto &package = install.packages().at(i);
        packages.append(QJsonObject{
            {QStringLiteral("id"), install.nodes().at(i)->id().toString()},
            {QStringLiteral("type"), install.nodes().at(i)->type().toString()},
            {QStringLiteral("state"), stateText(package.state)},
            {QStringLiteral("path"), package.path},
            {QStringLiteral("files"), QJsonArray::fromStringList(package.files)},
            {QStringLiteral("bytes"), package.bytes}});
    }
    return {
        {QStringLiteral("directory"), directory.absolutePath()},
        {QStringLiteral("packages"), packages}};
}

} // namespace

int run(const InstallOptions &options, Catalogue &catalogue, Output &output)
{
    Install install(options, catalogue);
    QString fault = install.run();
    if (!fault.isEmpty()) {
        output.error(fault);
        return install.signalNumber() != 0 ? SignalBase + install.signalNumber() : NotMet;
    }
    const QDir directory(options.directory);
    if (output.isJson())
        output.json(asJson(install, directory));
    else
        output.table(asTable(install, directory));
    return Fine;
}

} // namespace nk::pm::cli
