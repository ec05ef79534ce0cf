// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "fuzztarget.h"
#include "sources/ledgerstructure.h"
#include "sources/packageserveraccessor.h"
#include "sources/signedcontent.h"
#include "support/ledgerbuilder.h"
#include "support/testfiles.h"

using namespace nk::pm::test;

namespace nk::pm::fuzz {

namespace {

using nk::crypto::ed25519::PrivateKey;

// Fixed, so that an input means the same in each run.
const PrivateKey &trustKey()
{
    static const PrivateKey key = PrivateKey::fromPEM(
        readFile(QStringLiteral(NKPM_SOURCE_DIR "/keys/development-trust-private.pem")));
    return key;
}

/// Keywords and links aren't signed, so that these are read of many damaged ledgers.
void readVerified(const QByteArray &ledger)
{
    PackageServerAccessor accessor(nullptr, ledger, trustKey().publicKey());
    accessor.load();
    readAll(accessor);
}

/// Packages are: what a changed one holds has to be looked at before its signature is.
void readUnverified(const QByteArray &ledger)
{
    const LedgerStructure structure = readLedgerStructure(ledger);
    LedgerTables tables;
    readIssuers(structure.segments.value(".iss"), tables);
    readKeywords(structure.segments.value(".kwd"), tables);
    readPackages(structure.segments.value(".pkg"), tables);
    readLinks(structure.segments.value(".lnk"), tables);
    for (const PackageEntry &package : std::as_const(tables.packages)) {
        require(package.typeIndex < tables.types.size(), "A package is of a type that isn't there");
        require(package.issuerIndex < tables.issuers.size(), "A package is of no issuer");
        signedContent(package, tables.types.at(package.typeIndex));
    }
}

LedgerBuilder catalogue()
{
    LedgerBuilder builder(trustKey());
    builder.addIssuer("Norvak", "Studio").addIssuer("Guest");
    builder.addLanguage("en").addLanguage("de");
    builder.addKeyword(0, "chair", {{0, {QByteArray("chair\0chairs", 12)}}, {1, {"Stuhl"}}});
    builder.addKeyword(2, "red", {{0, {"red", "crimson"}}, {1, {"rot"}}});
    builder.addPackage(
        "nora", "furniture:chairs", R"({"name":"Nora","size":[1.5,2]})",
        {{"scene.bin", "alpha"}, {"deep/picture.png", "beta"}});
    builder.addPackage("lamp", "lighting", R"({"type":"x","name":"L\u00e4mp"})", {}, 1);
    builder.addLink(1, 0x01, 0, 0).addLink(3, 0x11, 1, 0).addLink(0, 0x00, 1, 0);
    return builder;
}

} // namespace

void runOnce(const QByteArray &input)
{
    readVerified(input);
    readUnverified(input);
}

QVector<Seed> seeds()
{
    LedgerBuilder oneIssuer(trustKey());
    oneIssuer.addIssuer("Norvak");
    LedgerBuilder nameless(trustKey());
    nameless.addIssuer("Norvak").addPackage("", "", "", {{"", ""}});
    const QVector<LedgerSegment> segments = catalogue().segments();
    return {
        {"empty", LedgerBuilder(trustKey()).build()},
        {"issuer", oneIssuer.build()},
        {"nameless", nameless.build()},
        {"catalogue", catalogue().build()},
        {"turned", ledgerFile(
                       {segments.at(3), segments.at(2), segments.at(1), segments.at(0)},
                       {".iss", ".lnk", ".kwd", ".pkg"})},
        {"gap", ledgerFile(segments, {}, {{2, "gap"}})},
    };
}

} // namespace nk::pm::fuzz
