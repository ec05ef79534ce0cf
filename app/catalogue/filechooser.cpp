// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "filechooser.h"

#include "preferences.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QQuickWindow>
#include <QStandardPaths>

namespace nk::pm::app {
namespace {

const QString directoryKey = QStringLiteral("collectionDirectory");
const QString suffix = QStringLiteral("json");

} // namespace

FileChooser::FileChooser(Preferences &preferences, QObject *parent)
    : QObject(parent)
    , m_preferences(preferences)
{}

FileChooser::~FileChooser() = default;

void FileChooser::chooseToOpen(QQuickWindow *window)
{
    QFileDialog *dialog = prepare(window);
    dialog->setWindowTitle(tr("Open a collection"));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->open();
}

void FileChooser::chooseToSave(QQuickWindow *window, const QString &suggestion)
{
    QFileDialog *dialog = prepare(window);
    dialog->setWindowTitle(tr("Save the collection"));
    dialog->setAcceptMode(QFileDialog::AcceptSave); // asks before it takes a file that is there
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDefaultSuffix(suffix);
    dialog->selectFile(
        suggestion.isEmpty() ? tr("collection", "name of a file") + QLatin1Char('.') + suffix
                             : suggestion);
    dialog->open();
}

QFileDialog *FileChooser::prepare(QQuickWindow *window)
{
    m_dialog = std::make_unique<QFileDialog>();
    QFileDialog *dialog = m_dialog.get();
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->setNameFilters({tr("Collections (*.json)"), tr("All files (*)")});
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    dialog->setDirectory(m_preferences.value(directoryKey, documents).toString());
    dialog->winId(); // or else there is no window yet to be put before the other
    if (dialog->windowHandle())
        dialog->windowHandle()->setTransientParent(window);
    connect(dialog, &QFileDialog::fileSelected, this, &FileChooser::accept);
    connect(dialog, &QFileDialog::rejected, this, &FileChooser::dismissed);
    return dialog;
}

void FileChooser::accept(const QString &path)
{
    m_preferences.setValue(directoryKey, QFileInfo(path).absolutePath());
    if (m_dialog->acceptMode() == QFileDialog::AcceptSave)
        Q_EMIT chosenToSave(path);
    else
        Q_EMIT chosenToOpen(path);
}

} // namespace nk::pm::app
