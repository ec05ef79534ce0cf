// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "references/packagereference.h"
#include "repository/packagerepository.h"
#include "sources/localpackagesource.h"
#include "support/columns.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QTranslator>
#include <QtEndian>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

template<typename T>
QByteArray bigEndian(T value)
{
    QByteArray bytes(sizeof value, 0);
    qToBigEndian(value, bytes.data());
    return bytes;
}

quint32 hashOf(const QByteArray &source)
{
    quint32 hash = 0;
    for (const char c : source) {
        hash = (hash << 4) + uchar(c);
        const quint32 top = hash & 0xf0000000;
        hash = (hash ^ (top >> 24)) & ~top;
    }
    return hash;
}

/// The translation file that says \a text for \a source.
QByteArray translationFile(const QByteArray &source, const QString &text)
{
    QByteArray utf16;
    for (const QChar c : text)
        utf16 += bigEndian(c.unicode());
    const QByteArray message =
        '\x03' + bigEndian(quint32(utf16.size())) + utf16 + '\x01'; // translation, end
    const QByteArray hashes = bigEndian(hashOf(source)) + bigEndian(quint32(0));
    return QByteArray::fromHex("3cb86418caef9c95cd211cbf60a1bddd") + '\x42'
           + bigEndian(quint32(hashes.size())) + hashes + '\x69'
           + bigEndian(quint32(message.size())) + message;
}

QString greeting()
{
    return QCoreApplication::translate("context", "hello");
}

} // namespace

/// Translation packages: found in the index, loaded when installed, in the user's language.
class TranslationsTest : public QObject
{
    Q_OBJECT

private:
    ScopedDataLocation m_data;

    static void writePackage(
        const QTemporaryDir &tree, const QString &id, const QByteArray &manifest,
        const QStringList &languages)
    {
        const QString directory = tree.filePath("packages/translation/" + id + "/");
        for (const QString &language : languages)
            writeFile(directory + language + ".qm", translationFile("hello", language));
        writeFile(directory + "manifest.json", manifest);
    }
    static int installedTranslators(const PackageRepository &repository)
    {
        return repository.findChildren<QTranslator *>().size();
    }

private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }
    void languageIsChosenByTheManifest_data();
    void languageIsChosenByTheManifest();
    void newPackagesAreTakenUpAndOldOnesKept();
};

void TranslationsTest::languageIsChosenByTheManifest_data()
{
    const QByteArray all = R"({"de": "de.qm", "de_AT": "de_AT.qm", "en": "en.qm"})";
    Columns<QString, QByteArray, QString>("locale", "manifest", "greeting")
        .row("country first", "de_AT", all, "de_AT")
        .row("then the language", "de_CH", all, "de")
        .row("then English", "fr_FR", all, "en")
        .row("none of them", "fr_FR", R"({"de": "de.qm"})", "hello")
        .row(
            "a missing file has no fallback", "de_AT",
            R"({"de_AT": "gone.qm", "de": "de.qm", "en": "en.qm"})", "hello")
        .row("no text", "de_DE", R"({"de": 7, "en": "en.qm"})", "hello")
        .row("not a translation", "de_DE", R"({"de": "manifest.json"})", "hello");
}

void TranslationsTest::languageIsChosenByTheManifest()
{
    QFETCH(QString, locale);
    QFETCH(QByteArray, manifest);
    QLocale::setDefault(QLocale(locale));
    QTemporaryDir tree;
    writePackage(tree, "texts", manifest, {"de", "de_AT", "en"});
    LocalPackageSource source(tree.path());
    {
        PackageRepository repository(PackageRepository::DoNotPersistSources);
        repository.addSource(&source);
        QTRY_COMPARE(installedTranslators(repository), 1);
        QTEST(greeting(), "greeting");
    }
    QCOMPARE(greeting(), QString("hello"));
}

void TranslationsTest::newPackagesAreTakenUpAndOldOnesKept()
{
    QLocale::setDefault(QLocale("de_DE"));
    QTemporaryDir tree;
    writePackage(tree, "texts", R"({"de": "de.qm"})", {"de"});
    LocalPackageSource source(tree.path());
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    repository.addSource(&source);
    QTRY_COMPARE(greeting(), QString("de"));
    PackageReference *reference = repository.packageReference("texts");
    QTranslator *translator = reference->findChild<QTranslator *>();

    writePackage(tree, "texts", R"({"de": "new.qm"})", {"new"});
    writePackage(tree, "more", "{}", {});
    Q_EMIT source.updateRequired();
    QTRY_COMPARE(greeting(), QString("new"));
    QTRY_COMPARE(installedTranslators(repository), 2);
    QCOMPARE(reference->findChildren<QTranslator *>(), QList<QTranslator *>{translator});
}

QTEST_GUILESS_MAIN(TranslationsTest)
#include "tst_translations.moc"
