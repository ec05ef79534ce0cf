// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "backgroundpriority.h"
#include "catalogueengine.h"
#include "display.h"
#include "measurement.h"
#include "options.h"
#include "screenshot.h"

#include "install/openfilelimit.h"
#include "install/storepolicy.h"
#include "network/directoryfault.h"
#include "proxy/proxyhostcheck.h"

#include <norvak/locations.h>

#include <QApplication>
#include <QQuickWindow>

#include <cstdio>
#include <memory>

using namespace nk::pm::app;

static int failed(const QString &fault)
{
    std::fprintf(stderr, "norvak-catalogue: %s\n", qUtf8Printable(fault));
    return 1;
}

int main(int argc, char *argv[])
{
    nk::pm::raiseOpenFileLimit();
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    makeDoWithoutDisplay();
    QApplication application(argc, argv); // has the file dialogs
    QCoreApplication::setApplicationName(QStringLiteral("norvak-catalogue"));
    QCoreApplication::setOrganizationName(QStringLiteral("norvak"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NKPM_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.norvak.catalogue"));
    // There is nothing to draw with but the processor.
    if (QGuiApplication::platformName() == QLatin1String("offscreen"))
        QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software);
    setUpCatalogueModule();
    nk::pm::setProxyHostCheck(true);
    nk::pm::setStorePolicy(nk::pm::StorePolicy::Strict);

    lowerPoolPriority();
    const Options options = parseOptions(QCoreApplication::arguments());
    if (!options.passing && !hasDisplay()) {
        return failed(QStringLiteral(
            "There is no display to open a window on. Set DISPLAY or WAYLAND_DISPLAY, take "
            "--screenshot FILE, or use nkpm, which needs none."));
    }
    if (!options.dataDirectory.isEmpty())
        nk::Locations::setDataLocation(options.dataDirectory);
    const QString dataFault = dataDirectoryFault(nk::Locations::dataLocation().path());
    if (!dataFault.isEmpty())
        return failed(dataFault);
    CatalogueEngine engine(options);
    const QString fault = engine.open();
    if (!fault.isEmpty())
        return failed(fault);
    std::unique_ptr<Screenshot> screenshot;
    if (!options.screenshot.isEmpty())
        screenshot = std::make_unique<Screenshot>(engine, options.view, options.screenshot);
    std::unique_ptr<Measurement> measurement;
    if (options.measure)
        measurement = std::make_unique<Measurement>(engine);
    return QApplication::exec();
}
