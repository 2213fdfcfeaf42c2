#pragma once

#include <cstdint>

// The statuses every organisation has, by number. The program treats these three specially;
// an organisation's own statuses have other numbers.
inline constexpr std::int32_t kStatusIn = 3;
inline constexpr std::int32_t kStatusUnavailable = 6;
inline constexpr std::int32_t kStatusOut = 8;
