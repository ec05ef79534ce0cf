// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "collectionactions.h"

#include "collectiondocument.h"

#include <utility>

namespace nk::pm::app {

CollectionActions::CollectionActions(CollectionDocument &document, QObject *parent)
    : QObject(parent)
    , m_document(document)
{}

void CollectionActions::begin(Step step)
{
    m_next = step;
    if (m_document.isModified())
        Q_EMIT unsavedChangesFound();
    else
        proceed();
}

void CollectionActions::proceed()
{
    switch (std::exchange(m_next, Step::Nothing)) {
    case Step::Nothing:
        break;
    case Step::Create:
        m_document.clear();
        break;
    case Step::Open:
        Q_EMIT fileToOpenWanted();
        break;
    case Step::Close:
        Q_EMIT closeGranted();
        break;
    }
}

void CollectionActions::save()
{
    m_next = Step::Nothing;
    saveInPlace();
}

void CollectionActions::saveAs()
{
    m_next = Step::Nothing;
    Q_EMIT fileToSaveWanted();
}

void CollectionActions::add(const QString &id)
{
    report(m_document.add(id));
}

void CollectionActions::saveChanges()
{
    saveInPlace();
}

void CollectionActions::saveInPlace()
{
    if (m_document.path().isEmpty())
        Q_EMIT fileToSaveWanted();
    else if (m_document.hasChangedOnDisk())
        Q_EMIT foreignChangesFound();
    else
        overwrite();
}

void CollectionActions::discardChanges()
{
    proceed();
}

void CollectionActions::overwrite()
{
    saveFile(m_document.path());
}

void CollectionActions::saveElsewhere()
{
    Q_EMIT fileToSaveWanted();
}

void CollectionActions::openFile(const QString &path)
{
    report(m_document.open(path));
}

void CollectionActions::saveFile(const QString &path)
{
    const QString fault = m_document.save(path);
    if (fault.isEmpty()) {
        proceed();
        return;
    }
    m_next = Step::Nothing;
    report(fault);
}

void CollectionActions::report(const QString &fault)
{
    if (!fault.isEmpty())
        Q_EMIT failed(fault);
}

void CollectionActions::cancel()
{
    m_next = Step::Nothing;
}

} // namespace nk::pm::app
