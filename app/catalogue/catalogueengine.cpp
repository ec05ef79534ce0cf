// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogueengine.h"

#include "packagedetails.h"

#include <norvakpackagesqml.h>

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTranslator>

// A static library's resources aren't there by themselves. Outside of any namespace.
static void initResources()
{
    Q_INIT_RESOURCE(catalogue);
    Q_INIT_RESOURCE(catalogue_translations);
}

namespace nk::pm::app {
namespace {

constexpr char uri[] = "Norvak.Catalogue";
constexpr int major = 1;
constexpr int minor = 0;

/// Makes \a member of the engine, whichever it is, a singleton of QML.
template<auto member>
void registerMember(const char *name)
{
    using Object = std::remove_reference_t<decltype((std::declval<CatalogueEngine &>().*member)())>;
    qmlRegisterSingletonType<Object>(
        uri, major, minor, name, [](QQmlEngine *engine, QJSEngine *) -> QObject * {
            auto *object = &(static_cast<CatalogueEngine *>(engine)->*member)();
            QQmlEngine::setObjectOwnership(object, QQmlEngine::CppOwnership);
            return object;
        });
}

void installTranslation()
{
    // Of what Qt says by itself: file dialogs, faults of the network.
    auto *ofQt = new QTranslator(QCoreApplication::instance());
    if (ofQt->load(
            QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
            QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(ofQt);
    auto *translator = new QTranslator(QCoreApplication::instance());
    const QString directory = QStringLiteral(":/i18n");
    // English is more than the texts as they stand: it has plural forms.
    if (translator->load(QLocale(), QStringLiteral("catalogue"), QStringLiteral("_"), directory)
        || translator->load(QStringLiteral("catalogue_en"), directory))
        QCoreApplication::installTranslator(translator);
}

} // namespace

void setUpCatalogueModule()
{
    initResources();
    QQuickStyle::setStyle(QStringLiteral("Default"));
    registerQmlTypes();
    registerMember<&CatalogueEngine::provider>("Catalogue");
    registerMember<&CatalogueEngine::collection>("Collection");
    registerMember<&CatalogueEngine::collectionActions>("CollectionActions");
    registerMember<&CatalogueEngine::fileChooser>("FileChooser");
    registerMember<&CatalogueEngine::installs>("Installs");
    registerMember<&CatalogueEngine::preferences>("Preferences");
    registerMember<&CatalogueEngine::sources>("Sources");
    registerMember<&CatalogueEngine::types>("Types");
    qmlRegisterType<PackageDetails>(uri, major, minor, "PackageDetails");
    qmlRegisterUncreatableType<InstallState>(
        uri, major, minor, "InstallState", QStringLiteral("Installs makes them"));
    qmlRegisterSingletonType(
        QUrl(QStringLiteral("qrc:/qml/Style.qml")), uri, major, minor, "Style");
    installTranslation();
}

CatalogueEngine::CatalogueEngine(const Options &options)
    : m_options(options)
    , m_preferences(
          options.passing ? Preferences::Lifetime::Passing : Preferences::Lifetime::Persistent)
    , m_installs(m_provider, m_preferences)
    , m_sources(m_provider, m_preferences)
    , m_types(m_provider)
    , m_collection(m_provider, m_installs)
    , m_collectionActions(m_collection)
    , m_fileChooser(m_preferences)
{
    setNetworkAccessManagerFactory(&m_pictures);
    if (!options.theme.isEmpty())
        m_preferences.setValue(QStringLiteral("theme"), options.theme);
    if (options.size.isValid()) {
        m_preferences.setValue(QStringLiteral("width"), options.size.width());
        m_preferences.setValue(QStringLiteral("height"), options.size.height());
    }
}

CatalogueEngine::~CatalogueEngine()
{
    // The window's objects go before what they are bound to.
    qDeleteAll(rootObjects());
    setNetworkAccessManagerFactory(nullptr); // the engine outlives it
}

QString CatalogueEngine::open()
{
    for (const SourceSpec &spec : m_options.sources) {
        QString fault = m_provider.addSource(spec);
        if (!fault.isEmpty())
            return fault;
    }
    if (m_options.sources.isEmpty())
        m_sources.restore();
    m_installs.restore();
    QString fault =
        m_options.collection.isEmpty() ? QString() : m_collection.open(m_options.collection);
    if (!fault.isEmpty())
        return fault;
    load(QUrl(QStringLiteral("qrc:/qml/Main.qml")));
    return window() ? QString() : tr("The user interface can't be loaded.");
}

QQuickWindow *CatalogueEngine::window() const
{
    const QList<QObject *> roots = rootObjects();
    return roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow *>(roots.first());
}

} // namespace nk::pm::app
