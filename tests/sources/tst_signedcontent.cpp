// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerformat.h"
#include "sources/signedcontent.h"
#include "support/ledgerbuilder.h"

#include <norvakcrypto/jsonsignature.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

const QByteArray hash(28, '\xab');

/// A package entry over bytes of its own.
struct Package
{
    QByteArray type;
    QByteArray manifest;
    QVector<QByteArray> names;

    QByteArray signedContent() const
    {
        PackageEntry entry;
        entry.manifest = {quint16(manifest.size()), manifest.constData()};
        QByteArray records(ledger::segmentFramingSize, ' ');
        for (const QByteArray &name : names)
            records += hash + ledgerString(name);
        LedgerCursor cursor(records);
        entry.files = *LedgerFiles::read(cursor, names.size());
        return nk::pm::signedContent(entry, {quint16(type.size()), type.constData()});
    }

    /// The same by the definition: one object with everything.
    QByteArray byDefinition() const
    {
        QJsonObject files;
        for (const QByteArray &name : names)
            files[QString::fromUtf8(name)] = QString(hash.toHex());
        QJsonObject object = QJsonDocument::fromJson(manifest).object();
        object.remove("type");
        return nk::crypto::JsonSignature::toByteArray(
            {{"type", QString::fromUtf8(type)}, {"manifest", object}, {"files", files}});
    }
};

} // namespace

class tst_SignedContent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isCanonical();
    void isOfOneFormForAllNames();
    void withoutForm();
};

void tst_SignedContent::isCanonical()
{
    const QByteArray hex = '"' + hash.toHex() + '"';
    const QPair<Package, QByteArray> packages[] = {
        {{"", "{}", {}}, R"({"files":{},"manifest":{},"type":""})"},
        // The manifest's own type is left out, on its first level only.
        {{"model", R"({"type":"x","a":{"type":1}})", {}},
         R"({"files":{},"manifest":{"a":{"type":1}},"type":"model"})"},
        {{"model:part", R"({ "b": 1.0, "a": [1E2] })", {"b/a.txt", "a", "z\xc3\xb6"}},
         R"({"files":{"a":)" + hex + R"(,"b/a.txt":)" + hex + ",\"z\xc3\xb6\":" + hex
             + R"(},"manifest":{"a":[100],"b":1},"type":"model:part"})"},
        {{"a\\b", "{}", {"a\"b\n"}},
         R"({"files":{"a\"b\n":)" + hex + R"(},"manifest":{},"type":"a\\b"})"},
        {{"model", "[1,2]", {}}, R"({"files":{},"manifest":{},"type":"model"})"},
        {{"model", "{\"a\":", {}}, R"({"files":{},"manifest":{},"type":"model"})"},
    };
    for (const auto &[package, content] : packages) {
        QCOMPARE(package.signedContent(), content);
        QCOMPARE(package.byDefinition(), content);
    }
}

void tst_SignedContent::isOfOneFormForAllNames()
{
    // Names with and without characters that JSON escapes take different ways to the same form.
    const auto pieces =
        QByteArray("a|b|/|.|\"|\\| "
                   "|\x1f|\x7f|\xc3\xa4|~|\xef\xbf\xbf|Z|0|\xef\xbb\xbf|\n|{}|\xf0\x9f\x98\x80")
            .split('|');
    QRandomGenerator random(8785);
    const auto word = [&] {
        QByteArray word("w");
        // Mostly of the plain pieces, so that either way is taken often.
        for (int i = random.bounded(6); i > 0; --i)
            word +=
                pieces.at(random.bounded(20) ? random.bounded(4) : random.bounded(pieces.size()));
        return word;
    };
    for (int round = 0; round < 5000; ++round) {
        QSet<QByteArray> names;
        for (int i = random.bounded(5); i > 0; --i)
            names.insert(word());
        const Package package{
            word(), R"({"type":1,"n":)" + QByteArray::number(round) + '}',
            QVector<QByteArray>(names.begin(), names.end())};
        QCOMPARE(package.signedContent(), package.byDefinition());
    }
}

void tst_SignedContent::withoutForm()
{
    const QByteArray surrogate = R"({"a":"\ud800"})";
    const Package packages[] = {
        {"model", surrogate, {"a"}},
        {"model", surrogate, {"\xc3\xa4"}},
        {"model", "{}", {"\xff", "\xfe"}},                        // names that are one as text
        {"model", "{}", {"a", QByteArray("\xef\xbb\xbf") + 'a'}}, // one but for a byte order mark
    };
    for (const Package &package : packages)
        QVERIFY2(package.signedContent().isEmpty(), package.names.last().constData());
}

QTEST_APPLESS_MAIN(tst_SignedContent)
#include "tst_signedcontent.moc"
