// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogueprovider.h"
#include "collectionactions.h"
#include "collectiondocument.h"
#include "filechooser.h"
#include "installs.h"
#include "options.h"
#include "preferences.h"
#include "sourcelistmodel.h"
#include "typetreemodel.h"

#include <QQmlApplicationEngine>
#include <picturenetwork.h>

class QQuickWindow;

namespace nk::pm::app {

/// The QML engine and the objects that its files name: "import Norvak.Catalogue 1.0" has Catalogue,
/// Collection, CollectionActions, FileChooser, Installs, Preferences, Sources, Style and Types as
/// singletons, one of each an engine.
class CatalogueEngine : public QQmlApplicationEngine
{
    Q_OBJECT

public:
    explicit CatalogueEngine(const Options &options);
    ~CatalogueEngine() override;

    /// Opens the sources of the command line, else those remembered, the collection of the command
    /// line, and the window. Gives what is wrong with a source or the collection, or an empty text;
    /// the window isn't opened then.
    QString open();

    CatalogueProvider &provider() { return m_provider; }
    CollectionDocument &collection() { return m_collection; }
    CollectionActions &collectionActions() { return m_collectionActions; }
    FileChooser &fileChooser() { return m_fileChooser; }
    Installs &installs() { return m_installs; }
    Preferences &preferences() { return m_preferences; }
    SourceListModel &sources() { return m_sources; }
    TypeTreeModel &types() { return m_types; }

    /// Null before open().
    QQuickWindow *window() const;

private:
    const Options m_options;
    PictureNetworkFactory m_pictures;
    Preferences m_preferences;
    CatalogueProvider m_provider;
    Installs m_installs;
    SourceListModel m_sources;
    TypeTreeModel m_types;
    CollectionDocument m_collection;
    CollectionActions m_collectionActions;
    FileChooser m_fileChooser;
};

/// Makes QML's types and singletons known, and the application's translations. Once a process.
void setUpCatalogueModule();

} // namespace nk::pm::app
