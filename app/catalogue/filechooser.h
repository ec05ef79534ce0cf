// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QString>

#include <memory>

class QFileDialog;
class QQuickWindow;

namespace nk::pm::app {

class Preferences;

/// Lets the user choose the file of a collection, in the desktop's own dialog where there is one.
/// Remembers the directory.
class FileChooser : public QObject
{
    Q_OBJECT

public:
    explicit FileChooser(Preferences &preferences, QObject *parent = nullptr);
    ~FileChooser() override;

    /// Asks for a file that is there.
    Q_INVOKABLE void chooseToOpen(QQuickWindow *window);
    /// Asks for a file to be written; \a suggestion is a path or a name, and may be empty.
    Q_INVOKABLE void chooseToSave(QQuickWindow *window, const QString &suggestion);

Q_SIGNALS:
    void chosenToOpen(const QString &path);
    void chosenToSave(const QString &path);
    void dismissed();

private:
    QFileDialog *prepare(QQuickWindow *window);
    void accept(const QString &path);

    Preferences &m_preferences;
    std::unique_ptr<QFileDialog> m_dialog; // the last one
};

} // namespace nk::pm::app
