// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "repository/repository.h"

namespace nk::pm {

struct RepositoryPrivate
{
    Repository *q;
};

Repository::Repository(QObject *parent)
    : QObject(parent)
    , d(new RepositoryPrivate{this})
{}

Repository::~Repository() = default;

} // namespace nk::pm
