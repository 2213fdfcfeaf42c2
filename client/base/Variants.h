#pragma once

#include <QVariant>
#include <cstdint>

// The language's own conversions of a recordset value (an invalid QVariant is Null).
namespace Variants {

bool IsNull(const QVariant& value);

// Text of a value: numbers in their shortest form, True/False, dates in the regional default
// form. Null raises 94 (invalid use of Null); bytes raise 13.
QString CStr(const QVariant& value);

// A value as a 32-bit integer, rounding half to even: numbers directly, True -1, text that is
// a number. Null raises 94, other text 13, values out of range 6.
std::int32_t CLng(const QVariant& value);

// Text without the blanks at either end; tabs, carriage returns and line feeds stay.
QString Trim(const QString& text);

} // namespace Variants
