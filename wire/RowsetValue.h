#pragma once

#include "Rowset.h"
#include <QByteArray>
#include <QVariant>
#include <string_view>

namespace wire {

// The text form of rowset values, as ADO persists them: whole numbers in decimal, floating
// values in the shortest form that reads back exactly, booleans as True/False, dateTime as
// 2024-01-01T09:13:00 (".fff" only when there are milliseconds), date 2024-01-01, time
// 09:13:00, bin.hex as hex digits, everything else as text.
namespace rowsetvalue {

// Reads one attribute value (UTF-8, escapes already undone) as the column's type. Text that
// does not read as the type is kept as a QString, so nothing the server sent is lost.
QVariant parse(FieldType type, std::string_view text);

// Whether a value is written as Null: an invalid QVariant, or an invalid date or time.
bool isNull(const QVariant& value);

// The UTF-8 text a value is written as for a column of the given type (not XML-escaped). A
// QString held by a non-text column (see parse) is written as it is. Null gives empty text.
QByteArray format(FieldType type, const QVariant& value);

} // namespace rowsetvalue

} // namespace wire
