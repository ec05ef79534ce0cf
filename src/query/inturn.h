// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QPointer>

namespace nk::pm {

/// Calls \a operations of \a object, signals mostly, one after another for as long as it lives:
/// whoever hears the first may destroy it.
template<typename Object, typename... Operations>
void callInTurn(Object *object, Operations... operations)
{
    const QPointer<Object> guard(object);
    ((guard ? (object->*operations)() : void()), ...);
}

} // namespace nk::pm
