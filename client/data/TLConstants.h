#pragma once

#include <cstdint>

// The program's fixed colours, as blue-green-red colour numbers.
class TLConstants {
public:
    std::int32_t COLOR_RED() const { return 0x0000C0; }
    std::int32_t COLOR_YELLOW() const { return 0x00FFFF; }
    std::int32_t COLOR_BLUE() const { return 0x800000; }
    std::int32_t COLOR_BLACK() const { return 0x000000; }
    std::int32_t COLOR_WHITE() const { return 0xFFFFFF; }
    std::int32_t COLOR_GREEN() const { return 0x008000; }
    std::int32_t COLOR_PURPLE() const { return 0xC000C0; }
    std::int32_t COLOR_LIGHTBLUE() const { return 0x808000; }
};
