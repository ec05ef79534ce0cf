// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/linktypes.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTranslator>
#include <QtTest>

/// The example catalogue, read as plain files: whatever it names exists, in both languages.
class tst_ExampleCatalogue : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void hasTheSizeOfARealCatalogue();
    void filesNamedByManifestsExist();
    void fileNamesNeedNoEncoding();
    void manifestsShareTheirKeys();
    void textsAreTranslated_data();
    void textsAreTranslated();
    void keywordsSpeakBothLanguages();
    void linksJoinWhatExists();
    void everyKindAndLinkTypeIsUsed();
    void requirementsEnd();

private:
    int requiredDepth(const QString &id, QStringList path) const;

    QDir m_root{NKPM_EXAMPLE_CATALOGUE};
    QMap<QString, QString> m_directories;
    QMap<QString, QString> m_types;
    QMap<QString, QJsonObject> m_manifests;
    QMap<QString, QJsonObject> m_keywords;
    QVector<QJsonObject> m_links;
    QMultiMap<QString, QString> m_requires;
};

namespace {

QJsonObject readObject(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        qWarning() << path << error.errorString();
    return document.object();
}

} // namespace

void tst_ExampleCatalogue::initTestCase()
{
    QDirIterator manifests(
        m_root.filePath("packages"), {"manifest.json"}, QDir::Files, QDirIterator::Subdirectories);
    while (manifests.hasNext()) {
        const QFileInfo manifest(manifests.next());
        const QDir directory = manifest.dir();
        const QString id = directory.dirName();
        QVERIFY2(!m_directories.contains(id), qPrintable("twice: " + id));
        m_directories[id] = directory.path();
        QString type = QFileInfo(directory.path()).path();
        m_types[id] = QDir(m_root.filePath("packages")).relativeFilePath(type).replace('/', ':');
        m_manifests[id] = readObject(manifest.filePath());
        QVERIFY2(!m_manifests[id].isEmpty(), qPrintable(manifest.filePath()));
    }
    for (const auto &file : QDir(m_root.filePath("dictionary")).entryInfoList({"*.json"})) {
        QVERIFY2(!m_directories.contains(file.baseName()), qPrintable(file.filePath()));
        m_keywords[file.baseName()] = readObject(file.filePath());
    }
    for (const auto &file : QDir(m_root.filePath("links")).entryInfoList({"*.json"})) {
        const auto link = readObject(file.filePath());
        m_links.append(link);
        if (link["type"] == "requires")
            m_requires.insert(link["from"].toString(), link["to"].toString());
    }
}

void tst_ExampleCatalogue::hasTheSizeOfARealCatalogue()
{
    QSet<QString> topTypes;
    int deepest = 0;
    for (const auto &type : qAsConst(m_types)) {
        const auto parts = type.split(':');
        topTypes.insert(parts.first());
        deepest = qMax(deepest, parts.size());
    }
    QVERIFY(m_manifests.size() >= 40);
    QVERIFY(topTypes.size() >= 6);
    QCOMPARE(deepest, 3);
    QVERIFY(m_keywords.size() >= 50);
}

void tst_ExampleCatalogue::filesNamedByManifestsExist()
{
    const QStringList keys{"preview", "model", "material", "texture", "sound",
                           "preset",  "scene", "de",       "en"};
    for (auto it = m_manifests.cbegin(); it != m_manifests.cend(); ++it) {
        QVERIFY2(it->contains("preview"), qPrintable(it.key()));
        for (const auto &key : keys) {
            if (!it->contains(key))
                continue;
            const QFileInfo file(m_directories[it.key()], (*it)[key].toString());
            QVERIFY2(file.isFile() && file.size() > 0, qPrintable(file.filePath()));
        }
    }
}

void tst_ExampleCatalogue::fileNamesNeedNoEncoding()
{
    const QRegularExpression unreserved("^[A-Za-z0-9._-]+$");
    QDirIterator it(
        m_root.path(), QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        QVERIFY2(unreserved.match(it.fileName()).hasMatch(), qPrintable(it.filePath()));
    }
}

void tst_ExampleCatalogue::manifestsShareTheirKeys()
{
    for (auto it = m_manifests.cbegin(); it != m_manifests.cend(); ++it) {
        for (const char *key : {"name", "description", "author", "license", "version"})
            QVERIFY2(!(*it)[key].toString().isEmpty(), qPrintable(it.key() + ' ' + key));
        for (const char *key : {"year", "price", "rating"})
            QVERIFY2((*it)[key].toInt(-1) >= 0, qPrintable(it.key() + ' ' + key));
        if (it->contains("size"))
            QCOMPARE((*it)["size"].toArray().size(), 2);
    }
}

void tst_ExampleCatalogue::textsAreTranslated_data()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("German") << "de";
    QTest::newRow("English") << "en";
}

void tst_ExampleCatalogue::textsAreTranslated()
{
    QFETCH(QString, language);
    QTranslator objects, studio;
    QTranslator *translators[] = {&objects, &studio};
    const QString names[] = {"translation-objects", "translation-studio"};
    for (int i = 0; i < 2; ++i)
        QVERIFY(translators[i]->load(
            m_manifests[names[i]][language].toString(), m_directories[names[i]]));
    int translated = 0;
    for (const auto &manifest : qAsConst(m_manifests)) {
        for (const auto &value : manifest) {
            const QByteArray text = value.toString().toLatin1();
            if (!text.startsWith("id:"))
                continue;
            const QByteArray id = text.mid(3);
            const QString first = objects.translate(nullptr, id);
            const QString second = studio.translate(nullptr, id);
            QVERIFY2(first.isEmpty() != second.isEmpty(), id);
            ++translated;
        }
    }
    QVERIFY(translated > 80);
}

void tst_ExampleCatalogue::keywordsSpeakBothLanguages()
{
    for (auto it = m_keywords.cbegin(); it != m_keywords.cend(); ++it) {
        const QString type = (*it)["type"].toString();
        if (type == "literal") {
            QVERIFY2(!(*it)["string"].toString().isEmpty(), qPrintable(it.key()));
            continue;
        }
        for (const char *language : {"de", "en"}) {
            const auto strings = (*it)["strings"].toObject()[language].toArray();
            QVERIFY2(!strings.isEmpty(), qPrintable(it.key() + ' ' + language));
            for (const auto &string : strings) {
                const auto text = type == "noun" ? string.toObject()["sg"] : QJsonValue(string);
                QVERIFY2(!text.toString().isEmpty(), qPrintable(it.key() + ' ' + language));
            }
        }
    }
}

void tst_ExampleCatalogue::linksJoinWhatExists()
{
    const auto exists = [this](const QString &id) {
        return m_manifests.contains(id) || m_keywords.contains(id);
    };
    QSet<QString> seen;
    for (const auto &link : qAsConst(m_links)) {
        const QString from = link["from"].toString(), to = link["to"].toString();
        const QString text = from + ' ' + link["type"].toString() + ' ' + to;
        QVERIFY2(exists(from) && exists(to), qPrintable(text));
        QVERIFY2(nk::pm::linkTypeFromString(link["type"].toString()) >= 0, qPrintable(text));
        QVERIFY2(!seen.contains(text), qPrintable(text));
        seen.insert(text);
        if (link["type"] == "requires")
            QVERIFY2(m_manifests.contains(from) && m_manifests.contains(to), qPrintable(text));
    }
}

void tst_ExampleCatalogue::everyKindAndLinkTypeIsUsed()
{
    QSet<QString> kinds, linkTypes;
    for (const auto &keyword : qAsConst(m_keywords))
        kinds.insert(keyword["type"].toString());
    for (const auto &link : qAsConst(m_links))
        linkTypes.insert(link["type"].toString());
    QCOMPARE(kinds, (QSet<QString>{"noun", "name", "adjective", "literal", "category"}));
    QCOMPARE(
        linkTypes,
        (QSet<QString>{"is_a", "contains", "relates_to", "is_not_a", "is", "uses", "requires"}));
}

int tst_ExampleCatalogue::requiredDepth(const QString &id, QStringList path) const
{
    if (path.contains(id))
        return -1000;
    path.append(id);
    int deepest = 0;
    for (const auto &required : m_requires.values(id)) {
        const int depth = requiredDepth(required, path);
        if (depth < 0)
            return depth;
        deepest = qMax(deepest, depth + 1);
    }
    return deepest;
}

void tst_ExampleCatalogue::requirementsEnd()
{
    int deepest = 0;
    for (const auto &id : m_manifests.keys()) {
        const int depth = requiredDepth(id, {});
        QVERIFY2(depth >= 0, qPrintable("requires itself: " + id));
        deepest = qMax(deepest, depth);
    }
    QCOMPARE(deepest, 3);
}

QTEST_GUILESS_MAIN(tst_ExampleCatalogue)
#include "tst_examplecatalogue.moc"
