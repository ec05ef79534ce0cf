// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakdataabstraction/document.h>

#include <QByteArray>
#include <QJsonValue>
#include <QMap>
#include <QStringList>

namespace nk::data {

/// A document of structs, each under a key, of JSON values, each under a name. Values may be
/// references, strings that lead to live objects of the application.
///
/// In the file the structs stand in an object "structs". Whatever else a file holds, members beside
/// that and values under unknown names, say of a newer version, is kept and saved again.
class NORVAK_DATA_EXPORT LinkedDocument : public Document
{
    Q_OBJECT

public:
    using Document::Document;
    ~LinkedDocument() override;

    /// The keys of all structs, in ascending order.
    QStringList structKeys() const;
    /// Removes the struct \a key with all its values.
    void removeStruct(const QString &key);

    /// The value \a name of the struct \a key; undefined if there is none.
    QJsonValue getStructValue(const QString &key, const QString &name) const;
    /// Stores \a value, with the struct \a key if there is none yet. An undefined value removes.
    void setStructValue(const QString &key, const QString &name, const QJsonValue &value);

    /// The reference string of \a object, "ref:<type id>:<identifier>", by the first registered
    /// type that knows its class. Empty for null, for other classes and for an empty identifier.
    QString encodeReference(QObject *object) const;
    /// The object that the string \a reference leads to in this document's context. Null if it is
    /// none, if nobody registered its type or if the type finds no object. Not owned.
    QObject *decodeReference(const QString &reference) const;
    /// Has the type of each reference in the document get hold of its object, so that it is at work
    /// before anybody reads it.
    void attachReferences();

    /// Makes references to \a Object known to all documents, under the number Type::typeId(); a
    /// later type replaces an earlier one of the same number. \a Type is a class of static
    /// functions:
    ///
    ///   int typeId();
    ///   QByteArray identifier(Object *);
    ///   Object *getReference(const LinkedDocument *, const QByteArray &identifier);
    ///   void attachReference(LinkedDocument *, const QByteArray &identifier);
    template<class Type, class Object>
    static void registerReferenceType()
    {
        ReferenceType type;
        type.accepts = [](QObject *object) { return qobject_cast<Object *>(object) != nullptr; };
        type.identifier = [](QObject *object) {
            return Type::identifier(static_cast<Object *>(object));
        };
        type.get = [](const LinkedDocument *document, const QByteArray &identifier) -> QObject * {
            return Type::getReference(document, identifier);
        };
        type.attach = [](LinkedDocument *document, const QByteArray &identifier) {
            Type::attachReference(document, identifier);
        };
        addReferenceType(Type::typeId(), type);
    }

protected:
    bool setContent(const QJsonObject &content, QString *reason) override;
    QJsonObject content() const override;

private:
    using Values = QMap<QString, QJsonValue>; ///< by name

    struct ReferenceType
    {
        bool (*accepts)(QObject *object);
        QByteArray (*identifier)(QObject *object);
        QObject *(*get)(const LinkedDocument *document, const QByteArray &identifier);
        void (*attach)(LinkedDocument *document, const QByteArray &identifier);
    };

    static void addReferenceType(int typeId, const ReferenceType &type);
    static QMap<int, ReferenceType> &referenceTypes();
    static const ReferenceType *parseReference(const QString &reference, QByteArray *identifier);

    QMap<QString, Values> m_structs; ///< by key
    Values m_otherMembers;
};

} // namespace nk::data
