// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "fuzztarget.h"

#include <norvakcrypto/jsonsignature.h>

#include <QJsonDocument>

using nk::crypto::JsonSignature;

namespace nk::pm::fuzz {

// The canonical form reads back as an object that has the same form, whatever the spelling was that
// it came from: otherwise what is verified would not be what was signed.
void runOnce(const QByteArray &input)
{
    const QJsonDocument document = QJsonDocument::fromJson(input);
    if (!document.isObject())
        return;
    const QByteArray form = JsonSignature::toByteArray(document.object());
    if (form.isEmpty())
        return;
    QJsonParseError error;
    const QJsonDocument again = QJsonDocument::fromJson(form, &error);
    require(error.error == QJsonParseError::NoError, "The canonical form is no JSON");
    require(again.isObject(), "The canonical form is no object");
    require(JsonSignature::toByteArray(again.object()) == form, "The form changes when read back");
    const QByteArray indented = again.toJson(QJsonDocument::Indented);
    const QJsonObject spelled = QJsonDocument::fromJson(indented).object();
    require(JsonSignature::toByteArray(spelled) == form, "The form depends on the spelling");
}

QVector<Seed> seeds()
{
    return {
        {"empty", "{}"},
        {"types", R"({"b":true,"a":[null,false,{}],"c":"text","d":[[],[1]]})"},
        {"numbers",
         R"({"n":[0,-0,1e21,1e-7,5e-324,1.7976931348623157e308,-12.5,4503599627370497.5]})"},
        {"integers", R"({"n":[9007199254740993,-9223372036854775808,18446744073709551616]})"},
        {"escapes", R"({"\u20ac\/\b\f\n\r\t\"\":"\u0001\u001f\ud83d\ude02 \u00fc"})"},
        {"unicode",
         "{\"\xc3\xb6\":1,\"\xe2\x82\xac\":2,\"\xf0\x9f\x98\x82\":3,\"\xef\xac\xb3\":4}"},
        {"mixed spelling", R"({"\u00f6":1,"a":{"\u00f6":[]},"z":2})"},
        {"surrogate", R"({"lone":"\ud800"})"},
        {"twice", R"({"a":1,"b":2,"a":3})"},
        {"deep", "{\"a\":" + QByteArray(200, '[') + QByteArray(200, ']') + '}'},
    };
}

} // namespace nk::pm::fuzz
