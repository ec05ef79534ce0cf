// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/scopeddatalocation.h"

#include <QThreadPool>
#include <norvak/locations.h>

namespace nk::pm::test {

QString ScopedDataLocation::s_current;

ScopedDataLocation::ScopedDataLocation()
{
    Q_ASSERT(m_directory.isValid());
    s_current = m_directory.path();
    nk::Locations::setDataLocation(s_current);
}

ScopedDataLocation::~ScopedDataLocation()
{
    // Pool tasks of the test (sweeps, copies) still work in the directory.
    QThreadPool::globalInstance()->waitForDone();
    s_current = m_outer;
    nk::Locations::setDataLocation(s_current);
}

} // namespace nk::pm::test
