// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/strictjson.h"

#include <norvakcrypto/jsonsignature.h>

#include <QJsonDocument>

#include <nlohmann/json.hpp>

#include <unordered_set>
#include <vector>

namespace nk::pm::publisher {

namespace {

using Json = nlohmann::json;

constexpr quint64 largestExactInteger = (Q_UINT64_C(1) << 53) - 1;

/// Receives the parser's events and stops it at the first fault.
class Checker : public nlohmann::json_sax<Json>
{
public:
    QString fault;

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool string(string_t &value) override { return !beginsWithMark(value); }
    bool binary(binary_t &) override { return true; }

    bool number_unsigned(number_unsigned_t value) override
    {
        return value <= largestExactInteger || refuseInteger(QString::number(value));
    }

    bool number_integer(number_integer_t value) override
    {
        return value >= -number_integer_t(largestExactInteger)
               || refuseInteger(QString::number(value));
    }

    bool number_float(number_float_t, const string_t &text) override
    {
        return text.find_first_of(".eE") != string_t::npos
               || refuseInteger(QString::fromStdString(text));
    }

    bool start_object(std::size_t) override
    {
        m_keys.emplace_back();
        return true;
    }

    bool end_object() override
    {
        m_keys.pop_back();
        return true;
    }

    bool key(string_t &name) override
    {
        if (beginsWithMark(name))
            return false;
        if (m_keys.back().insert(name).second)
            return true;
        fault = QStringLiteral("the key \"%1\" appears twice in one object")
                    .arg(QString::fromStdString(name));
        return false;
    }

    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }

    bool parse_error(
        std::size_t, const std::string &, const nlohmann::detail::exception &error) override
    {
        // "[json.exception.parse_error.101] parse error at line 1, column 2: what"
        const QString text = QString::fromUtf8(error.what());
        fault = QStringLiteral("not valid JSON: ") + text.mid(text.indexOf(u']') + 2);
        return false;
    }

private:
    bool beginsWithMark(const string_t &text)
    {
        const bool begins = text.compare(0, 3, "\xef\xbb\xbf") == 0;
        if (begins)
            fault = QStringLiteral("a text begins with U+FEFF, which readers lose");
        return begins;
    }

    bool refuseInteger(const QString &digits)
    {
        fault = QStringLiteral(
                    "the integer %1 has more digits than a JSON number keeps; write it as a string")
                    .arg(digits);
        return false;
    }

    std::vector<std::unordered_set<std::string>> m_keys; // of the objects that are open
};

} // namespace

StrictJson readStrictJson(const QByteArray &text)
{
    StrictJson result;
    Checker checker;
    if (!Json::sax_parse(text.cbegin(), text.cend(), &checker)) {
        result.fault = checker.fault;
        return result;
    }
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    // A lone string or number is JSON, but not to Qt.
    if (document.isArray() || error.error == QJsonParseError::IllegalValue)
        result.fault = QStringLiteral("not a JSON object");
    else if (error.error != QJsonParseError::NoError)
        result.fault = QStringLiteral("not valid JSON: ") + error.errorString();
    else
        result.canonical = crypto::JsonSignature::toByteArray(document.object());
    if (result.fault.isEmpty() && result.canonical.isEmpty())
        result.fault = QStringLiteral("has no canonical form");
    // Read back from the canonical text, the object is what readers of the ledger get, and its
    // keys can be looked up: Qt misses some while raw and escaped keys stand side by side.
    if (result.fault.isEmpty())
        result.object = QJsonDocument::fromJson(result.canonical).object();
    return result;
}

} // namespace nk::pm::publisher
