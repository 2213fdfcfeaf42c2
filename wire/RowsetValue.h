#pragma once

#include "LocalOffsets.h"
#include "Rowset.h"
#include <QByteArray>
#include <QVariant>
#include <string_view>

namespace wire {

// The text form of rowset values, as ADO persists them: whole numbers in decimal, floating
// values in the shortest form that reads back exactly, booleans as True/False, dateTime as
// local time 2024-01-01T09:13:00 (".fff" only when there are milliseconds; a zone suffix is
// read but never written), date 2024-01-01, time 09:13:00, bin.hex as hex digits, everything
// else as text.
namespace rowsetvalue {

// UTF-8 text as a QString, keeping a leading U+FEFF (which QString::fromUtf8 would drop).
QString text(std::string_view utf8);

// Reads one attribute value (UTF-8, escapes already undone) as the column's type. Text that
// does not read as the type is kept as a QString, so nothing the server sent is lost. A
// dateTime without a zone is local time: a local-time QDateTime, or with offsets given, the
// same moment with the local offset fixed (much faster for many values).
QVariant parse(FieldType type, std::string_view text, LocalOffsets* offsets = nullptr);

// Whether a value is written as Null: an invalid QVariant, or an invalid date or time.
bool isNull(const QVariant& value);

// The UTF-8 text a value is written as for a column of the given type (not XML-escaped). A
// QString held by a non-text column (see parse) is written as it is. Null gives empty text.
// A dateTime is written as the local date and time of its moment.
QByteArray format(FieldType type, const QVariant& value, LocalOffsets* offsets = nullptr);

} // namespace rowsetvalue

} // namespace wire
