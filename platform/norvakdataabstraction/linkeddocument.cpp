// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakdataabstraction/linkeddocument.h"

namespace nk::data {

namespace {

const QLatin1String structsMember("structs");
const QLatin1String referencePrefix("ref");

// Objects are read and written by iteration: a look-up in a parsed object can miss a member that is
// there, where the file has the same letters now as they are and now escaped.
QMap<QString, QJsonValue> membersOf(const QJsonObject &object)
{
    QMap<QString, QJsonValue> members;
    for (auto member = object.begin(); member != object.end(); ++member)
        members.insert(member.key(), member.value());
    return members;
}

QJsonObject objectOf(const QMap<QString, QJsonValue> &members)
{
    QJsonObject object;
    for (auto member = members.begin(); member != members.end(); ++member)
        object.insert(member.key(), member.value());
    return object;
}

} // namespace

LinkedDocument::~LinkedDocument() = default;

QStringList LinkedDocument::structKeys() const
{
    return m_structs.keys();
}

void LinkedDocument::removeStruct(const QString &key)
{
    m_structs.remove(key);
}

QJsonValue LinkedDocument::getStructValue(const QString &key, const QString &name) const
{
    return m_structs.value(key).value(name, QJsonValue(QJsonValue::Undefined));
}

void LinkedDocument::setStructValue(
    const QString &key, const QString &name, const QJsonValue &value)
{
    if (!value.isUndefined())
        m_structs[key].insert(name, value);
    else if (m_structs.contains(key))
        m_structs[key].remove(name);
}

QString LinkedDocument::encodeReference(QObject *object) const
{
    const auto &types = referenceTypes();
    for (auto type = types.begin(); type != types.end(); ++type) {
        if (!type->accepts(object))
            continue;
        const QByteArray identifier = type->identifier(object);
        if (identifier.isEmpty())
            return QString();
        // Latin-1 carries every byte, and the usual identifiers stay readable.
        return QStringLiteral("%1:%2:%3")
            .arg(referencePrefix, QString::number(type.key()), QString::fromLatin1(identifier));
    }
    return QString();
}

QObject *LinkedDocument::decodeReference(const QString &reference) const
{
    QByteArray identifier;
    const ReferenceType *type = parseReference(reference, &identifier);
    return type ? type->get(this, identifier) : nullptr;
}

void LinkedDocument::attachReferences()
{
    const auto structs = m_structs; // a type may write to the document
    for (const Values &values : structs) {
        for (const QJsonValue &value : values) {
            QByteArray identifier;
            if (const ReferenceType *type = parseReference(value.toString(), &identifier))
                type->attach(this, identifier);
        }
    }
}

bool LinkedDocument::setContent(const QJsonObject &content, QString *reason)
{
    Values members = membersOf(content);
    const QJsonValue list = members.take(structsMember);
    if (!list.isObject()) {
        *reason = QStringLiteral("not a document: it has no object \"%1\"").arg(structsMember);
        return false;
    }
    QMap<QString, Values> structs;
    const QJsonObject objects = list.toObject();
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        if (!object.value().isObject()) {
            *reason = QStringLiteral("struct \"%1\" is not an object").arg(object.key());
            return false;
        }
        structs.insert(object.key(), membersOf(object.value().toObject()));
    }
    m_structs = structs;
    m_otherMembers = members;
    return true;
}

QJsonObject LinkedDocument::content() const
{
    QJsonObject structs;
    for (auto values = m_structs.begin(); values != m_structs.end(); ++values)
        structs.insert(values.key(), objectOf(*values));
    QJsonObject object = objectOf(m_otherMembers);
    object.insert(structsMember, structs);
    return object;
}

void LinkedDocument::addReferenceType(int typeId, const ReferenceType &type)
{
    referenceTypes().insert(typeId, type);
}

QMap<int, LinkedDocument::ReferenceType> &LinkedDocument::referenceTypes()
{
    static QMap<int, ReferenceType> types;
    return types;
}

/// Null if \a reference is no reference or of an unknown type.
const LinkedDocument::ReferenceType *LinkedDocument::parseReference(
    const QString &reference, QByteArray *identifier)
{
    const QStringList parts = reference.split(QLatin1Char(':'));
    if (parts.size() < 3 || parts.first() != referencePrefix)
        return nullptr;
    const int number = parts.at(1).toInt();
    const auto type = referenceTypes().constFind(number);
    // Read leniently, " +7" would be 7 as well.
    if (parts.at(1) != QString::number(number) || type == referenceTypes().constEnd())
        return nullptr;
    *identifier = reference.section(QLatin1Char(':'), 2).toLatin1();
    return &*type;
}

} // namespace nk::data
