// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QQmlListProperty>

namespace nk::pm {

/// A list property of \a owner whose callbacks are append(), count(), at() and clear() of
/// \a record, which lives as long as the owner.
template<typename Item, typename Record>
QQmlListProperty<Item> listProperty(QObject *owner, Record *record)
{
    using Property = QQmlListProperty<Item>;
    return Property(
        owner, record,
        [](Property *p, Item *item) { static_cast<Record *>(p->data)->append(item); },
        [](Property *p) { return static_cast<Record *>(p->data)->count(); },
        [](Property *p, int i) { return static_cast<Record *>(p->data)->at(i); },
        [](Property *p) { static_cast<Record *>(p->data)->clear(); });
}

} // namespace nk::pm
