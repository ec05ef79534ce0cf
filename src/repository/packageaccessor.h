// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVector>

#include <functional>
#include <memory>
#include <optional>

namespace nk {
class Request;
}

namespace nk::pm {

class InstallLocation;
class PackageInstaller;

/// One package as an accessor describes it to the index build.
struct PackageInfo
{
    QString id;   ///< unique within the merged index; a source of higher priority replaces it whole
    QString type; ///< hierarchical, levels joined with ":"
    QString revision; ///< version mark of this copy, empty where the source has none
};

/// One file of a package, as its installer lays it down.
struct PackageFileInfo
{
    QString name;     ///< in the package's directory
    qint64 size = -1; ///< bytes; -1 where the source doesn't know
    QString digest;   ///< of the content, hexadecimal: a SHA-224 or an MD5; empty likewise
};

/// One text of a keyword in one language.
struct KeywordString
{
    QString language; ///< language key as the data has it ("de"); empty for a literal
    QString string;   ///< the text; a noun's singular
    QString plural;   ///< a noun's plural, else empty
};

/// One keyword. A record with type -1 or without strings is legal and passed over by the build.
struct KeywordInfo
{
    QString id;                     ///< unique among packages and keywords of the merged index
    int type = -1;                  ///< a KeywordType
    QVector<KeywordString> strings; ///< of all languages, several of one in order of preference
};

/// One directed link between two nodes. A record with type -1 or an empty end is legal and passed
/// over.
struct LinkInfo
{
    int type = -1; ///< a LinkType
    QString from;  ///< identifier of a package or keyword, of this source or another
    QString to;    ///< likewise; a link to what no source has is passed over
};

/// Read-only snapshot of everything that a PackageSource holds at one moment.
///
/// An accessor stands alone: it neither refers to its source nor is disturbed by later changes of
/// it, and stays valid after the source was destroyed. It is made on the GUI thread, read once by
/// load() on the worker that builds the index, and owned by that index. After load() its const
/// operations are safe from several threads at once. Nothing throws; an accessor that can't be read
/// is empty.
class NK_PM_EXPORT PackageAccessor
{
public:
    PackageAccessor();
    /// For the use of subclasses; the library copies no accessor.
    PackageAccessor(const PackageAccessor &);
    /// For the use of subclasses, likewise.
    PackageAccessor &operator=(const PackageAccessor &);
    virtual ~PackageAccessor();

    /// Reads the snapshot. Called exactly once, before every operation but languages().
    virtual void load() = 0;

    /// 0 if the snapshot can't be read.
    virtual int packageCount() const = 0;
    /// The package at \a index, from 0 up to packageCount() - 1.
    virtual PackageInfo packageInfo(int index) const = 0;
    /// The package's manifest; an empty object if it can't be read.
    virtual QJsonObject manifest(int index) const = 0;
    /// Where the package's file \a fileName can be had while it isn't installed: a local file, a
    /// URL of the source or of the local file proxy. Invalid if the package has no such file.
    virtual QUrl fileUrl(int index, const QString &fileName) const = 0;
    /// A new, already working installer of this one package into \a location, which is the
    /// package's own directory. Null counts as an install that failed. GUI thread.
    virtual std::unique_ptr<PackageInstaller> createInstaller(
        int index, const InstallLocation &location) const = 0;

    /// 0 if the snapshot can't be read.
    virtual int keywordCount() const = 0;
    /// The keyword at \a index, from 0 up to keywordCount() - 1.
    virtual KeywordInfo keywordInfo(int index) const = 0;
    /// The language keys that the keywords' strings may use. Called before load(): an accessor that
    /// learns its languages from its data answers with an empty list then.
    virtual QStringList languages() const = 0;

    /// 0 if the snapshot can't be read.
    virtual int linkCount() const = 0;
    /// The link at \a index, from 0 up to linkCount() - 1. The index keeps their order.
    virtual LinkInfo linkInfo(int index) const = 0;

    /// The public key, in DER, of who signed the package: load() has verified that signature, and
    /// that the key may sign. Empty where packages aren't signed.
    virtual QByteArray issuerKey(int index) const;
    /// Whether there was data that couldn't be taken: refused by load(), as damaged or not signed by
    /// whom it should be, in which case the snapshot is empty; or parts of a directory that can't be
    /// read, which are missing, and of which the last may show while the index is built.
    virtual bool isRefused() const;

    /// All files that an installer of the package lays down, by name; of files that an installer
    /// takes for one, that one. A source that reads a directory looks at it now, which may block.
    /// Nothing if the source can't tell, or its disk doesn't.
    virtual std::optional<QVector<PackageFileInfo>> files(int index) const;

    /// Starts the download of the file that has the hexadecimal \a digest in the file store, on the
    /// GUI thread; the request, null if it can't be sent, becomes the caller's. Empty if no package
    /// of the snapshot has such a file. Needs neither the snapshot nor its source to live.
    virtual std::function<nk::Request *()> fileDownload(const QString &digest) const;
};

} // namespace nk::pm
