// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT
//
// Qt 5.15's JSON parser leaks the array or object of a name that comes twice in one object. What it
// allocates isn't counted, so that the leaks of this project can be seen. The linker puts this
// function in the place of the one it calls (--wrap).

#include <QJsonDocument>

#include <sanitizer/lsan_interface.h>

#define PARSER _ZN13QJsonDocument8fromJsonERK10QByteArrayP15QJsonParseError
#define JOINED(a, b) a##b
#define NAMED(prefix, name) JOINED(prefix, name)

extern "C" {

QJsonDocument NAMED(__real_, PARSER)(const QByteArray &json, QJsonParseError *error);

QJsonDocument NAMED(__wrap_, PARSER)(const QByteArray &json, QJsonParseError *error)
{
    const __lsan::ScopedDisabler uncounted;
    return NAMED(__real_, PARSER)(json, error);
}
}
