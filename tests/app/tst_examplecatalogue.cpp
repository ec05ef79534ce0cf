// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/cataloguechecks.h"
#include "catalogue/cataloguereader.h"
#include "index/keywordtypes.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTranslator>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::publisher;

/// The example catalogue: nothing is wrong with it, it shows everything that a catalogue can have,
/// and whatever its manifests name exists, in both languages.
class tst_ExampleCatalogue : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void manifestsAreComplete();
    void textsAreTranslated();
    void keywordsSpeakBothLanguages();
    void everyKindAndLinkTypeIsUsed();

private:
    QDir directoryOf(const CataloguePackage &package) const
    {
        return QDir(m_catalogue.absolutePath(package.directory));
    }

    Catalogue m_catalogue;
    QMap<QString, QJsonObject> m_manifests;
};

void tst_ExampleCatalogue::initTestCase()
{
    Problems problems;
    Progress progress;
    m_catalogue = readCatalogue(NKPM_EXAMPLE_CATALOGUE, Links::Within, problems, progress);
    checkCatalogue(m_catalogue, problems);
    for (const Problem &problem : problems.sorted())
        QFAIL(qPrintable(problem.file + ": " + problem.text));
    for (const CataloguePackage &package : qAsConst(m_catalogue.packages))
        m_manifests[package.id] = QJsonDocument::fromJson(package.manifest).object();
}

void tst_ExampleCatalogue::manifestsAreComplete()
{
    const QStringList fileKeys{"preview", "model", "material", "texture", "sound",
                               "preset",  "scene", "de",       "en"};
    for (const CataloguePackage &package : qAsConst(m_catalogue.packages)) {
        const QJsonObject manifest = m_manifests[package.id];
        for (const char *key : {"name", "description", "author", "license", "version", "preview"})
            QVERIFY2(!manifest[key].toString().isEmpty(), qPrintable(package.id + ' ' + key));
        for (const char *key : {"year", "price", "rating"})
            QVERIFY2(manifest[key].toInt(-1) >= 0, qPrintable(package.id + ' ' + key));
        if (manifest.contains("size"))
            QCOMPARE(manifest["size"].toArray().size(), 2);
        for (const QString &key : fileKeys) {
            const QFileInfo file(directoryOf(package), manifest[key].toString());
            if (manifest.contains(key))
                QVERIFY2(file.isFile() && file.size() > 0, qPrintable(file.filePath()));
        }
    }
}

/// Each text by one of the two translation packages, and by one only.
void tst_ExampleCatalogue::textsAreTranslated()
{
    for (const QString language : {"de", "en"}) {
        QVector<QSharedPointer<QTranslator>> translators;
        for (const CataloguePackage &package : qAsConst(m_catalogue.packages)) {
            const QString file = m_manifests[package.id][language].toString();
            if (!file.isEmpty()) {
                translators.append(QSharedPointer<QTranslator>::create());
                QVERIFY(translators.last()->load(file, directoryOf(package).path()));
            }
        }
        QCOMPARE(translators.size(), 2);
        int translated = 0;
        for (const QJsonObject &manifest : qAsConst(m_manifests)) {
            for (const QJsonValue &value : manifest) {
                const QByteArray text = value.toString().toLatin1();
                if (!text.startsWith("id:"))
                    continue;
                const QString first = translators[0]->translate(nullptr, text.mid(3));
                const QString second = translators[1]->translate(nullptr, text.mid(3));
                QVERIFY2(first.isEmpty() != second.isEmpty(), text);
                ++translated;
            }
        }
        QVERIFY(translated > 80);
    }
}

void tst_ExampleCatalogue::keywordsSpeakBothLanguages()
{
    for (const CatalogueKeyword &keyword : qAsConst(m_catalogue.keywords)) {
        QSet<QString> languages;
        for (const KeywordString &text : keyword.info.strings) {
            QVERIFY2(!text.string.isEmpty(), qPrintable(keyword.file));
            languages.insert(text.language);
        }
        const bool isLiteral = keyword.info.type == int(KeywordType::Literal);
        const QSet<QString> wanted = isLiteral ? QSet<QString>{""} : QSet<QString>{"de", "en"};
        QVERIFY2(languages == wanted, qPrintable(keyword.file));
    }
}

void tst_ExampleCatalogue::everyKindAndLinkTypeIsUsed()
{
    QSet<int> kinds, linkTypes;
    for (const CatalogueKeyword &keyword : qAsConst(m_catalogue.keywords))
        kinds.insert(keyword.info.type);
    for (const CatalogueLink &link : qAsConst(m_catalogue.links))
        linkTypes.insert(link.info.type);
    QCOMPARE(kinds.size(), 5);
    QCOMPARE(linkTypes.size(), 7);
}

QTEST_GUILESS_MAIN(tst_ExampleCatalogue)
#include "tst_examplecatalogue.moc"
