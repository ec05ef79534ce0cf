// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// The Qt headers that nearly every file of the library includes anyway. Precompiled to save build
// time only: each file still includes what it uses.
#pragma once

#include <QtConcurrent>
#include <QtCore>
#include <QtNetwork>

#include <functional>
#include <memory>
#include <optional>
#include <vector>
