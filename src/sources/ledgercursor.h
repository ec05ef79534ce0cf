// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QByteArray>
#include <QString>

#include <string_view>

namespace nk::pm {

/// A String or Blob of a ledger: a view into the ledger's bytes, valid as long as they are.
struct LedgerString
{
    quint16 length = 0;
    const char *data = nullptr; ///< null when it was not read

    bool isNull() const { return data == nullptr; }
    /// The bytes, not copied.
    QByteArray bytes() const { return QByteArray::fromRawData(data, length); }
    std::string_view view() const { return {data, length}; }
    /// The bytes as UTF-8 text.
    QString text() const { return QString::fromUtf8(data, length); }
};

/// Reads the fields of one ledger segment, from the payload's start on and never past its end.
///
/// A read that finds too few bytes leaves the position where it is. ok() tells the fate of the last
/// integer or string only: it is not sticky, so a reader asks at the places where it matters.
class NK_PM_EXPORT LedgerCursor
{
public:
    /// \a segment starts with its framing and is not copied: it must outlive what is read.
    explicit LedgerCursor(const QByteArray &segment);

    bool ok() const { return m_ok; }
    /// At the head of each record: nothing was read yet.
    void clearOk() { m_ok = false; }
    const char *position() const { return m_position; }

    /// 0 if there are too few bytes.
    quint8 u8();
    quint16 u16();
    quint32 u32();
    /// The next \a size bytes, null if there are fewer; leaves ok() alone.
    const char *bytes(int size);
    /// A u16 length and that many bytes. Null when they pass the end, with the position behind the
    /// length.
    LedgerString string();

private:
    template<typename Integer>
    Integer integer();
    bool has(int size) const { return m_end - m_position >= size; }

    const char *m_position;
    const char *m_end;
    bool m_ok = false;
};

} // namespace nk::pm

Q_DECLARE_TYPEINFO(nk::pm::LedgerString, Q_PRIMITIVE_TYPE);
