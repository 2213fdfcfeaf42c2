#pragma once

#include <QString>
#include <cstdint>

// How stored texts become the numbers and flags of the settings, and back.
namespace SettingValues {

// Whether the text is a number a double can hold.
bool IsNumber(const QString& text);

// The text's number rounded half to even to a 32-bit whole number, held at the type's limits
// when it lies beyond them; 0 when the text is no usable number.
std::int32_t WholeNumber(const QString& text);

// The text itself when it is a number a double can hold, else the fallback written as text.
QString NumberOr(const QString& text, std::int32_t fallback);

// "True"/"False" in any case, or a number (True unless 0); anything else gives the fallback.
bool Flag(const QString& text, bool fallback);

// The texts Booleans are stored as.
QString FlagText(bool value);

} // namespace SettingValues
