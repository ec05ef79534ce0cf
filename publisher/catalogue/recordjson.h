// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/problems.h"
#include "repository/packageaccessor.h"

#include <QJsonObject>

namespace nk::pm::publisher {

/// The keyword \a id of the dictionary file \a file, whose content is \a object. What the local
/// source would pass over in silence (an unknown type, a text of the wrong kind) is an error here.
KeywordInfo keywordFromJson(
    const QString &id, const QJsonObject &object, const QString &file, Problems &problems);

/// The link of the file \a file, whose content is \a object.
LinkInfo linkFromJson(const QJsonObject &object, const QString &file, Problems &problems);

} // namespace nk::pm::publisher
