// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakcrypto/jsonsignature.h"

#include <QJsonArray>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace nk::crypto {

namespace {

constexpr int maximumDepth = 2048;

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

struct Member
{
    QString name;
    QJsonValue value;
};

// Members are taken by walking the object: looking a name up can miss one that is there.
QVarLengthArray<Member, 16> sortedMembers(const QJsonObject &object)
{
    QVarLengthArray<Member, 16> members;
    for (auto member = object.begin(); member != object.end(); ++member)
        members.append({member.key(), member.value()});
    const auto before = [](const Member &a, const Member &b) { return a.name < b.name; };
    if (!std::is_sorted(members.cbegin(), members.cend(), before))
        std::stable_sort(members.begin(), members.end(), before);
    return members;
}

// Qt's parser may leave a name that came more than once in an object more than once; which of the
// values a reader gets is chance then.
bool areUnique(const QVarLengthArray<Member, 16> &sorted)
{
    const auto same = [](const Member &a, const Member &b) { return a.name == b.name; };
    return std::adjacent_find(sorted.cbegin(), sorted.cend(), same) == sorted.cend();
}

bool needsNoEscape(QChar character)
{
    return character >= QLatin1Char(' ') && character != QLatin1Char('"')
           && character != QLatin1Char('\\') && character < QLatin1Char('\x7f');
}

class CanonicalWriter
{
public:
    CanonicalWriter() { m_out.reserve(1024); }
    bool writeObject(const QJsonObject &object, int depth);
    QByteArray result() const { return QByteArray(m_out.data(), int(m_out.size())); }

private:
    bool writeValue(const QJsonValue &value, int depth);
    bool writeArray(const QJsonArray &array, int depth);
    bool writeNumber(double number);
    bool writeString(const QString &string);
    void writePlain(const QString &ascii);
    void writeEscaped(const QByteArray &utf8);

    std::string m_out; // its appending is inline
};

bool CanonicalWriter::writeObject(const QJsonObject &object, int depth)
{
    if (depth > maximumDepth)
        return false;
    const auto members = sortedMembers(object);
    if (!areUnique(members))
        return false;
    char separator = '{';
    for (const Member &member : members) {
        m_out += separator;
        separator = ',';
        if (!writeString(member.name))
            return false;
        m_out += ':';
        if (!writeValue(member.value, depth + 1))
            return false;
    }
    m_out += members.isEmpty() ? "{}" : "}";
    return true;
}

bool CanonicalWriter::writeArray(const QJsonArray &array, int depth)
{
    if (depth > maximumDepth)
        return false;
    char separator = '[';
    for (const QJsonValue &element : array) {
        m_out += separator;
        separator = ',';
        if (!writeValue(element, depth + 1))
            return false;
    }
    m_out += array.isEmpty() ? "[]" : "]";
    return true;
}

bool CanonicalWriter::writeValue(const QJsonValue &value, int depth)
{
    switch (value.type()) {
    case QJsonValue::Object:
        return writeObject(value.toObject(), depth);
    case QJsonValue::Array:
        return writeArray(value.toArray(), depth);
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
    return writer.writeObject(object, 1) ? writer.result() : QByteArray();
}

} // namespace nk::crypto
