// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QString>

namespace nk::pm::app {

class CollectionDocument;

/// What the user does with the collection as a whole, step by step, so that no change is lost
/// unasked: new, open and close first ask what becomes of unsaved changes, saving asks before it
/// writes over what somebody else has written.
///
/// A signal asks the user; the answer is given by a call whenever it comes. Each new wish ends the
/// one before it.
class CollectionActions : public QObject
{
    Q_OBJECT

public:
    explicit CollectionActions(CollectionDocument &document, QObject *parent = nullptr);

    Q_INVOKABLE void create() { begin(Step::Create); }
    Q_INVOKABLE void open() { begin(Step::Open); }
    Q_INVOKABLE void close() { begin(Step::Close); }
    Q_INVOKABLE void save();
    Q_INVOKABLE void saveAs();
    /// Puts a package in.
    Q_INVOKABLE void add(const QString &id);

    /// Answers to unsavedChangesFound(): save, or discard, and go on.
    Q_INVOKABLE void saveChanges();
    Q_INVOKABLE void discardChanges();
    /// Answers to foreignChangesFound(): write the file all the same, or another one.
    Q_INVOKABLE void overwrite();
    Q_INVOKABLE void saveElsewhere();
    /// Answers to fileToOpenWanted() and fileToSaveWanted().
    Q_INVOKABLE void openFile(const QString &path);
    Q_INVOKABLE void saveFile(const QString &path);
    /// Answer to any question: everything stays as it is.
    Q_INVOKABLE void cancel();

Q_SIGNALS:
    void unsavedChangesFound();
    void foreignChangesFound();
    void fileToOpenWanted();
    void fileToSaveWanted();
    /// \a fault says to the user what didn't work.
    void failed(const QString &fault);
    /// Nothing would be lost by leaving.
    void closeGranted();

private:
    enum class Step { Nothing, Create, Open, Close };

    void begin(Step step);
    void proceed();
    void saveInPlace();
    void report(const QString &fault);

    CollectionDocument &m_document;
    Step m_next = Step::Nothing; // what follows once the changes are saved or discarded
};

} // namespace nk::pm::app
