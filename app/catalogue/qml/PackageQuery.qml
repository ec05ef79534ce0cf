// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import Norvak.Packages 1.0
import Norvak.Catalogue 1.0

// The packages on screen, and everything that decides which they are. This is all that an
// application writes to list, search, filter and sort a catalogue.
PackageListModel {
    id: query

    property string search
    property bool exactSearch: false
    property var categories: []    // identifiers of keywords
    property bool anyCategory: false
    property string requiredField
    property string sortField      // "price", "rating", "year"; empty for the catalogue's own order

    packageProvider: Catalogue
    resetWhenStuck: true
    maximumEdits: 200 // beyond that a reset costs the view less

    matcher: PackageMatcherGroup {
        MatchesKeywordSearch {
            searchString: query.search
            matchMode: query.exactSearch ? MatchesKeywordSearch.FullMatch
                                         : MatchesKeywordSearch.PartialMatch
        }
        PackageMatcherGroup {
            id: categoryGroup
            matchRequirement: query.anyCategory ? PackageMatcherGroup.MatchAny
                                                : PackageMatcherGroup.MatchAll
        }
        HasManifestField { name: query.requiredField }
    }

    // A sorter that is given another name tells nobody, so each field has a sorter of its own.
    sorter: query.sorters[query.sortField] || null
    readonly property var sorters: ({
        "price": byPrice,
        "rating": byRating,
        "year": byYear
    })
    property SortByIntegerField byPrice: SortByIntegerField { id: byPrice; name: "price" }
    property SortByIntegerField byRating: SortByIntegerField { id: byRating; name: "rating" }
    property SortByIntegerField byYear: SortByIntegerField { id: byYear; name: "year" }

    // One matcher for each chosen category, in a group of their own.
    property Instantiator categoryMatchers: Instantiator {
        model: query.categories
        delegate: HasKeyword { keywordId: modelData }
        onObjectAdded: categoryGroup.addMatcher(object)
        onObjectRemoved: categoryGroup.removeMatcher(object)
    }

    // The roles of the rows.
    ManifestStringField { name: "name" }
    ManifestFileField { name: "preview" }
    ManifestField { name: "price" }
    ManifestField { name: "rating" }
    ManifestField { name: "year" }
}
