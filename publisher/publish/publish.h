// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/cataloguescan.h"
#include "catalogue/problems.h"
#include "catalogue/progress.h"
#include "ledger/issuer.h"

namespace nk::pm::publisher {

struct PublishOrder
{
    QString catalogue; ///< directory
    QString target;    ///< directory of the publication, made if need be
    QVector<Issuer> issuers;
    nk::crypto::ed25519::PublicKey trustKey; ///< the one that the readers were built with
    Links links = Links::Within;
    bool force = false; ///< also into a directory that holds other things than a publication
};

struct PublishReport
{
    Problems problems;
    bool published = false;     ///< the publication is what the catalogue says, new or as before
    bool ledgerChanged = false; ///< the published ledger was replaced
    int packages = 0;
    int keywords = 0;
    int links = 0;
    int newFiles = 0;
    int keptFiles = 0;
    qint64 newBytes = 0; ///< of the new files
    int newSignatures = 0;
    int keptSignatures = 0;
    int ledgerSize = 0;      ///< bytes
    QByteArray ledgerDigest; ///< raw SHA-224
};

/// Publishes a catalogue. Nothing is made before it is found sound. With any error in the report
/// nothing was published and the old publication, if there is one, stands whole. Works on all cores
/// and blocks until done.
PublishReport publish(const PublishOrder &order, Progress &progress);

/// All that publish() would find wrong with the catalogue itself.
Problems checkCatalogueDirectory(const QString &directory, Links links, Progress &progress);

} // namespace nk::pm::publisher
