// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QTemporaryDir>

namespace nk::pm::test {

/// A catalogue directory for one test.
class CatalogueTree
{
public:
    CatalogueTree();
    ~CatalogueTree();

    QString path() const { return m_directory.path() + "/catalogue"; }

    /// Writes a file at \a path relative to the catalogue, with the directories above it.
    void file(const QString &path, const QByteArray &content);
    void directory(const QString &path);
    void remove(const QString &path);
    /// A package in "packages/" + \a path.
    void package(const QString &path, const QByteArray &manifest = "{}");
    /// A name with one German text, its identifier.
    void keyword(const QString &id);
    void link(const QString &name, const QString &from, const QString &type, const QString &to);

    /// What a small shop sells: two packages with files, one requiring the other, keywords of all
    /// kinds and links between them. Nothing is wrong with it.
    void fillWithGoods();

private:
    Q_DISABLE_COPY(CatalogueTree)
    QTemporaryDir m_directory;
};

} // namespace nk::pm::test
