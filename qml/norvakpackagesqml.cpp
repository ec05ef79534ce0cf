// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakpackagesqml.h"

#include "query/categorylistmodel.h"
#include "query/haskeyword.h"
#include "query/hasmanifestfield.h"
#include "query/keyword.h"
#include "query/keywordsuggestionmodel.h"
#include "query/manifestbooleanfield.h"
#include "query/manifestfilefield.h"
#include "query/manifestsizefield.h"
#include "query/manifeststringfield.h"
#include "query/matcheskeywordsearch.h"
#include "query/packagedata.h"
#include "query/packagelistmodel.h"
#include "query/packagematchergroup.h"
#include "query/sortbyintegerfield.h"

#include <qqml.h>

namespace nk::pm {
namespace {

constexpr int major = 1;
constexpr int minor = 0;

template<typename T>
void creatable(const char *uri, const char *name)
{
    qmlRegisterType<T>(uri, major, minor, name);
}

template<typename T>
void abstract(const char *uri, const char *name, const QString &reason)
{
    qmlRegisterUncreatableType<T>(uri, major, minor, name, reason);
}

} // namespace

void registerQmlTypes(const char *uri)
{
    creatable<PackageListModel>(uri, "PackageListModel");
    creatable<CategoryListModel>(uri, "CategoryListModel");
    creatable<KeywordSuggestionModel>(uri, "KeywordSuggestionModel");

    creatable<HasKeyword>(uri, "HasKeyword");
    creatable<HasManifestField>(uri, "HasManifestField");
    creatable<MatchesKeywordSearch>(uri, "MatchesKeywordSearch");
    creatable<PackageMatcherGroup>(uri, "PackageMatcherGroup");
    creatable<SortByIntegerField>(uri, "SortByIntegerField");

    creatable<ManifestField>(uri, "ManifestField");
    creatable<ManifestBooleanField>(uri, "ManifestBooleanField");
    creatable<ManifestFileField>(uri, "ManifestFileField");
    creatable<ManifestSizeField>(uri, "ManifestSizeField");
    creatable<ManifestStringField>(uri, "ManifestStringField");

    creatable<Keyword>(uri, "Keyword");
    creatable<PackageData>(uri, "PackageData");

    abstract<PackageMatcher>(
        uri, "PackageMatcher", QStringLiteral("PackageMatcher is abstract; use HasKeyword, ..."));
    abstract<PackageSorter>(
        uri, "PackageSorter", QStringLiteral("PackageSorter is abstract; use SortByIntegerField"));
    abstract<SortByField>(
        uri, "SortByField", QStringLiteral("SortByField is abstract; use SortByIntegerField"));
    abstract<PackageReference>(
        uri, "PackageReference",
        QStringLiteral("A PackageReference comes from the application's package provider"));
}

} // namespace nk::pm
