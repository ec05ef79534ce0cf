// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/scopeddatalocation.h"

#include <QThreadPool>
#include <norvak/locations.h>

namespace nk::pm::test {

ScopedDataLocation::ScopedDataLocation()
{
    Q_ASSERT(m_directory.isValid());
    nk::Locations::setDataLocation(m_directory.path());
}

ScopedDataLocation::~ScopedDataLocation()
{
    // Pool tasks of the test (sweeps, copies) still work in the directory.
    QThreadPool::globalInstance()->waitForDone();
    nk::Locations::setDataLocation(QString());
}

} // namespace nk::pm::test
