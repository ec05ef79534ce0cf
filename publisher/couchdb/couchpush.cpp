// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "couchdb/couchpush.h"

#include "catalogue/cataloguechecks.h"
#include "catalogue/cataloguereader.h"
#include "couchdb/couchclient.h"
#include "couchdb/couchdocuments.h"

#include <QFile>
#include <QHash>
#include <QJsonArray>

namespace nk::pm::publisher {

namespace {

/// Files up to this many bytes travel inside their document, so that a package changes in one step;
/// larger ones are streamed before it.
constexpr qint64 maxInlineSize = 1024 * 1024;

/// Documents go up in batches of at most this many, with about this many bytes of files.
constexpr int maxBatchCount = 200;
constexpr qint64 maxBatchSize = 4 * maxInlineSize;

/// Readers take no larger view.
constexpr int maxViewSize = 0x400000;

const QString designPath = QStringLiteral("/_design/norvak");

/// The documents of one kind, such as "package:". Identifiers sort by their bytes, and ';' comes
/// right after ':'.
QString rangePath(const QString &kind)
{
    return QStringLiteral("/_all_docs?include_docs=true&startkey=%22") + kind
           + QStringLiteral(":%22&endkey=%22") + kind
           + QStringLiteral("%3B%22&inclusive_end=false");
}

QString revisionOf(const QJsonObject &stored)
{
    return stored.value(QLatin1String("_rev")).toString();
}

class Push
{
public:
    Push(const CouchPushOrder &order, Progress &progress)
        : m_client(order.database)
        , m_progress(progress)
    {}

    CouchPushReport carryOut(const QVector<CouchDocument> &documents);

private:
    bool prepareDatabase();
    bool readStored();
    bool pushDocument(const CouchDocument &document);
    bool sendLargeFiles(const CouchDocument &document, QVector<CouchAttachment> &missing);
    bool addDocument(const CouchDocument &document, const QVector<CouchAttachment> &missing);
    bool addToBatch(const QJsonObject &body, qint64 fileSize);
    bool sendBatch();
    bool removeRest();
    void checkView();
    bool isFine(const CouchClient::Answer &answer, const QString &what);
    void count(const QVector<CouchAttachment> &sent);

    CouchClient m_client;
    Progress &m_progress;
    QHash<QString, QJsonObject> m_stored; // by _id; what is left at the end is to go
    QJsonArray m_batch;
    qint64 m_batchSize = 0; // bytes of its files
    CouchPushReport m_report;
};

CouchPushReport Push::carryOut(const QVector<CouchDocument> &documents)
{
    if (!prepareDatabase() || !readStored())
        return m_report;
    m_progress.begin(QStringLiteral("Pushing"), documents.size());
    bool good = true;
    for (auto document = documents.begin(); good && document != documents.end(); ++document) {
        good = pushDocument(*document);
        m_progress.advance();
    }
    m_progress.end();
    m_report.pushed = good && removeRest() && sendBatch();
    if (m_report.pushed)
        checkView();
    return m_report;
}

bool Push::prepareDatabase()
{
    if (m_client.get(QString()).status == 404 && !isFine(m_client.put(QString()), {}))
        return false;
    const CouchClient::Answer answer = m_client.get(designPath);
    if (answer.status != 404 && !isFine(answer, QStringLiteral("_design/norvak")))
        return false;
    const QJsonObject stored = answer.isFine() ? answer.object() : QJsonObject();
    const QJsonObject design = couchDesignDocument(stored);
    return design == stored
           || isFine(m_client.put(designPath, design), QStringLiteral("_design/norvak"));
}

bool Push::readStored()
{
    for (const char *kind : {"keyword", "link", "package"}) {
        const CouchClient::Answer answer = m_client.get(rangePath(QLatin1String(kind)));
        if (!isFine(answer, {}))
            return false;
        const QJsonArray rows = answer.object().value(QLatin1String("rows")).toArray();
        for (const QJsonValue &row : rows) {
            const QJsonObject stored = row.toObject().value(QLatin1String("doc")).toObject();
            m_stored.insert(stored.value(QLatin1String("_id")).toString(), stored);
        }
    }
    return true;
}

bool Push::pushDocument(const CouchDocument &document)
{
    const bool isNew = !m_stored.contains(document.id);
    if (!isNew && isUpToDate(document, m_stored.value(document.id))) {
        ++m_report.keptDocuments;
        m_stored.remove(document.id);
        return true;
    }
    QVector<CouchAttachment> missing = missingAttachments(document, m_stored.value(document.id));
    if (!sendLargeFiles(document, missing) || !addDocument(document, missing))
        return false;
    ++(isNew ? m_report.newDocuments : m_report.changedDocuments);
    m_stored.remove(document.id);
    return true;
}

/// Takes what was sent out of \a missing.
bool Push::sendLargeFiles(const CouchDocument &document, QVector<CouchAttachment> &missing)
{
    QVector<CouchAttachment> small;
    bool streamed = false;
    for (const CouchAttachment &attachment : qAsConst(missing)) {
        if (attachment.size <= maxInlineSize) {
            small.append(attachment);
            continue;
        }
        QFile file(attachment.path);
        if (!file.open(QIODevice::ReadOnly)) {
            m_report.problems.error({}, attachment.path + QStringLiteral(" can't be read"));
            return false;
        }
        QString path = CouchClient::path(document.id) + CouchClient::path(attachment.name);
        QJsonObject &stored = m_stored[document.id];
        if (!stored.isEmpty())
            path += QStringLiteral("?rev=") + revisionOf(stored);
        const CouchClient::Answer answer = m_client.putAttachment(path, file);
        if (!isFine(answer, document.id + u'/' + attachment.name))
            return false;
        stored.insert(QStringLiteral("_rev"), answer.object().value(QLatin1String("rev")));
        count({attachment});
        streamed = true;
    }
    missing = small;
    if (!streamed)
        return true;
    const CouchClient::Answer answer = m_client.get(CouchClient::path(document.id));
    m_stored.insert(document.id, answer.object());
    return isFine(answer, document.id);
}

bool Push::addDocument(const CouchDocument &document, const QVector<CouchAttachment> &missing)
{
    const QJsonObject stored = m_stored.value(document.id);
    const QJsonObject held = stored.value(QLatin1String("_attachments")).toObject();
    QJsonObject attachments;
    for (const CouchAttachment &attachment : document.attachments)
        attachments.insert(attachment.name, held.value(attachment.name)); // a stub: stays
    qint64 size = 0;
    for (const CouchAttachment &attachment : missing) {
        QFile file(attachment.path);
        if (!file.open(QIODevice::ReadOnly)) {
            m_report.problems.error({}, attachment.path + QStringLiteral(" can't be read"));
            return false;
        }
        attachments.insert(
            attachment.name,
            QJsonObject{
                {QStringLiteral("content_type"), QLatin1String(couchAttachmentType)},
                {QStringLiteral("data"), QString::fromLatin1(file.readAll().toBase64())}});
        size += attachment.size;
    }
    QJsonObject body = document.content;
    body.insert(QStringLiteral("_id"), document.id);
    if (!attachments.isEmpty())
        body.insert(QStringLiteral("_attachments"), attachments);
    if (!stored.isEmpty())
        body.insert(QStringLiteral("_rev"), revisionOf(stored));
    count(missing);
    return addToBatch(body, size);
}

bool Push::addToBatch(const QJsonObject &body, qint64 fileSize)
{
    m_batch.append(body);
    m_batchSize += fileSize;
    return (m_batch.size() < maxBatchCount && m_batchSize < maxBatchSize) || sendBatch();
}

bool Push::sendBatch()
{
    if (m_batch.isEmpty())
        return true;
    const CouchClient::Answer answer = m_client.post(
        QStringLiteral("/_bulk_docs"), QJsonObject{{QStringLiteral("docs"), m_batch}});
    m_batch = QJsonArray();
    m_batchSize = 0;
    bool good = isFine(answer, {});
    const QJsonArray results = answer.array();
    for (const QJsonValue &result : results) {
        const QJsonObject object = result.toObject();
        if (!object.contains(QLatin1String("error")))
            continue;
        m_report.problems.error(
            {}, QStringLiteral("%1 %2: %3")
                    .arg(
                        m_client.shownUrl(), object.value(QLatin1String("id")).toString(),
                        object.value(QLatin1String("reason")).toString()));
        good = false;
    }
    return good;
}

bool Push::removeRest()
{
    for (auto stored = m_stored.cbegin(); stored != m_stored.cend(); ++stored) {
        const QJsonObject grave{
            {QStringLiteral("_id"), stored.key()},
            {QStringLiteral("_rev"), revisionOf(stored.value())},
            {QStringLiteral("_deleted"), true}};
        if (!addToBatch(grave, 0))
            return false;
        ++m_report.removedDocuments;
    }
    return true;
}

/// Asking for the view also makes the server build it, so that no reader waits for that.
void Push::checkView()
{
    const CouchClient::Answer answer = m_client.get(designPath + QStringLiteral("/_view/packages"));
    if (isFine(answer, QStringLiteral("the view")) && answer.body.size() > maxViewSize) {
        m_report.problems.warning(
            {}, QStringLiteral("the view has %1 bytes; readers take at most %2 and will find "
                               "nothing")
                    .arg(answer.body.size())
                    .arg(maxViewSize));
    }
}

bool Push::isFine(const CouchClient::Answer &answer, const QString &what)
{
    if (answer.isFine())
        return true;
    const QString place = what.isEmpty() ? m_client.shownUrl() : m_client.shownUrl() + u' ' + what;
    m_report.problems.error({}, QStringLiteral("%1: %2").arg(place, answer.fault));
    return false;
}

void Push::count(const QVector<CouchAttachment> &sent)
{
    for (const CouchAttachment &attachment : sent) {
        ++m_report.sentFiles;
        m_report.sentBytes += attachment.size;
    }
}

} // namespace

CouchPushReport couchPush(const CouchPushOrder &order, Progress &progress)
{
    Problems problems;
    const Catalogue catalogue = readCatalogue(order.catalogue, order.links, problems, progress);
    checkCatalogue(catalogue, problems);
    const QVector<CouchDocument> documents = couchDocuments(catalogue, problems);
    CouchPushReport report;
    if (!problems.hasErrors())
        report = Push(order, progress).carryOut(documents);
    report.problems.append(problems);
    return report;
}

} // namespace nk::pm::publisher
