// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// Makes a model of the QML module below the directory that is the one argument, and names its
// class.

#include <QCoreApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QQmlEngine engine;
    engine.addImportPath(application.arguments().value(1));
    QQmlComponent component(&engine);
    component.setData("import Norvak.Packages 1.0\nPackageListModel {}", QUrl());
    const QScopedPointer<QObject> model(component.create());
    QTextStream(stdout) << (model ? model->metaObject()->className() : component.errorString())
                        << '\n';
    return model ? 0 : 1;
}
