// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakcrypto/jsonsignature.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <vector>

namespace nk::crypto {

namespace {

// Every integer below it is a double of its own.
constexpr double exactIntegers = 9007199254740992.0;

// A finite number cut into the shortest digits that read back as it, and the power of ten in front
// of which they stand: 0.digits times 10 to the power of `point`.
struct Decimal
{
    QByteArray digits;
    int point = 0;
};

Decimal decimalOf(double positive)
{
    std::array<char, 32> text;
    const auto end =
        std::to_chars(text.begin(), text.end(), positive, std::chars_format::scientific).ptr;
    const auto mark = std::find(text.begin(), end, 'e');
    const char *exponentText = mark + (mark[1] == '+' ? 2 : 1);
    int exponent = 0;
    std::from_chars(exponentText, end, exponent);
    Decimal decimal{QByteArray(text.data(), int(mark - text.begin())), exponent + 1};
    decimal.digits.replace('.', QByteArray());
    return decimal;
}

// Number::toString of ECMAScript for a finite number above 0.
QByteArray ecmaScriptNumber(double positive)
{
    Decimal number = decimalOf(positive);
    const int count = number.digits.size();
    if (number.point > 21 || number.point < -5) {
        const int exponent = number.point - 1;
        if (count > 1)
            number.digits.insert(1, '.');
        return number.digits + (exponent < 0 ? "e-" : "e+")
               + QByteArray::number(std::abs(exponent));
    }
    if (number.point <= 0)
        return "0." + QByteArray(-number.point, '0') + number.digits;
    if (number.point < count)
        return number.digits.insert(number.point, '.');
    return number.digits + QByteArray(number.point - count, '0');
}

// Of an object, or an element of an array, which has no name.
struct Member
{
    QString name;
    QJsonValue value;
};

// Members are taken by walking the object: looking a name up can miss one that is there.
std::vector<Member> membersOf(const QJsonObject &object)
{
    std::vector<Member> members;
    members.reserve(size_t(object.size()));
    for (auto member = object.begin(); member != object.end(); ++member)
        members.push_back({member.key(), member.value()});
    return members;
}

std::vector<Member> membersOf(const QJsonArray &array)
{
    std::vector<Member> members;
    members.reserve(size_t(array.size()));
    for (const QJsonValue &element : array)
        members.push_back({QString(), element});
    return members;
}

// False for a name that is there twice. Qt's parser may leave one that came more than once in an
// object more than once; which of the values a reader gets is chance then.
bool sortByUniqueName(std::vector<Member> &members)
{
    const auto before = [](const Member &a, const Member &b) { return a.name < b.name; };
    const auto notBefore = [](const Member &a, const Member &b) { return !(a.name < b.name); };
    if (std::adjacent_find(members.cbegin(), members.cend(), notBefore) == members.cend())
        return true;
    std::sort(members.begin(), members.end(), before);
    return std::adjacent_find(members.cbegin(), members.cend(), notBefore) == members.cend();
}

// An object or array that is being written.
struct Level
{
    std::vector<Member> members;
    bool isObject;
    size_t next = 0;
};

bool needsNoEscape(QChar character)
{
    return character >= QLatin1Char(' ') && character != QLatin1Char('"')
           && character != QLatin1Char('\\') && character < QLatin1Char('\x7f');
}

// Keeps the open objects and arrays in a list of its own: their depth must not be that of the
// stack.
class CanonicalWriter
{
public:
    CanonicalWriter() { m_out.reserve(1024); }
    bool write(const QJsonObject &object);
    QByteArray result() const { return QByteArray(m_out.data(), int(m_out.size())); }

private:
    bool openObject(const QJsonObject &object);
    void openArray(const QJsonArray &array);
    void close();
    bool writeMember();
    bool writeValue(const QJsonValue &value);
    bool writeNumber(double number);
    bool writeString(const QString &string);
    void writePlain(const QString &ascii);
    void writeEscaped(const QByteArray &utf8);

    std::string m_out; // its appending is inline
    std::vector<Level> m_levels;
};

bool CanonicalWriter::write(const QJsonObject &object)
{
    if (!openObject(object))
        return false;
    while (!m_levels.empty()) {
        const Level &level = m_levels.back();
        if (level.next == level.members.size())
            close();
        else if (!writeMember())
            return false;
    }
    return true;
}

bool CanonicalWriter::openObject(const QJsonObject &object)
{
    m_levels.push_back({membersOf(object), true});
    m_out += '{';
    return sortByUniqueName(m_levels.back().members);
}

void CanonicalWriter::openArray(const QJsonArray &array)
{
    m_levels.push_back({membersOf(array), false});
    m_out += '[';
}

void CanonicalWriter::close()
{
    m_out += m_levels.back().isObject ? '}' : ']';
    m_levels.pop_back();
}

bool CanonicalWriter::writeMember()
{
    Level &level = m_levels.back();
    const Member member = std::move(level.members[level.next]);
    if (level.next++ > 0)
        m_out += ',';
    if (level.isObject) {
        if (!writeString(member.name))
            return false;
        m_out += ':';
    }
    return writeValue(member.value);
}

bool CanonicalWriter::writeValue(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Object:
        return openObject(value.toObject());
    case QJsonValue::Array:
        openArray(value.toArray());
        return true;
    case QJsonValue::String:
        return writeString(value.toString());
    case QJsonValue::Double:
        return writeNumber(value.toDouble());
    case QJsonValue::Bool:
        m_out += value.toBool() ? "true" : "false";
        return true;
    case QJsonValue::Null:
        m_out += "null";
        return true;
    case QJsonValue::Undefined:
        return false;
    }
    return false;
}

bool CanonicalWriter::writeNumber(double number)
{
    if (!std::isfinite(number))
        return false;
    if (std::abs(number) < exactIntegers && number == std::trunc(number)) {
        m_out += std::to_string(qint64(number)); // also what makes 0 of -0
        return true;
    }
    if (std::signbit(number))
        m_out += '-';
    m_out += ecmaScriptNumber(std::abs(number)).toStdString();
    return true;
}

bool CanonicalWriter::writeString(const QString &string)
{
    m_out += '"';
    if (std::all_of(string.cbegin(), string.cend(), needsNoEscape))
        writePlain(string);
    else if (string.isValidUtf16())
        writeEscaped(string.toUtf8());
    else
        return false;
    m_out += '"';
    return true;
}

// Most names and strings are like that.
void CanonicalWriter::writePlain(const QString &ascii)
{
    const size_t size = m_out.size();
    m_out.resize(size + size_t(ascii.size()));
    std::transform(
        ascii.cbegin(), ascii.cend(), m_out.begin() + qptrdiff(size),
        [](QChar character) { return char(character.unicode()); });
}

void CanonicalWriter::writeEscaped(const QByteArray &utf8)
{
    static constexpr char hexDigits[] = "0123456789abcdef";
    static constexpr char shortForms[] = "btn\0fr"; // from U+0008 on; U+000B has none
    for (const char byte : utf8) {
        if (byte == '"' || byte == '\\') {
            m_out += '\\';
            m_out += byte;
        } else if (uchar(byte) >= 0x20) {
            m_out += byte;
        } else if (byte >= '\b' && byte <= '\r' && byte != '\v') {
            m_out += '\\';
            m_out += shortForms[byte - '\b'];
        } else {
            m_out += "\\u00";
            m_out += hexDigits[byte >> 4];
            m_out += hexDigits[byte & 0xf];
        }
    }
}

} // namespace

QByteArray JsonSignature::toByteArray(const QJsonObject &object)
{
    CanonicalWriter writer;
    return writer.write(object) ? writer.result() : QByteArray();
}

} // namespace nk::crypto
