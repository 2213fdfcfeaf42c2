#pragma once

#include <QColor>
#include <cstdint>

// The program keeps colours as one number: red in the low byte, then green, then blue.
inline QColor ColorFromNumber(std::int32_t colorNumber) {
    const auto n = static_cast<std::uint32_t>(colorNumber);
    return QColor(int(n & 0xFF), int((n >> 8) & 0xFF), int((n >> 16) & 0xFF));
}
