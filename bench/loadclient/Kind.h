#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace load {

// What a timed request was; the report has one line per kind.
enum class Kind { Notes, StatusRead, ChatHeartbeat, StatusChange, BoardRead, Healthz, PollProbe };

inline constexpr std::size_t kKinds = 7;

inline std::string_view nameOf(Kind kind) {
    static constexpr std::array<std::string_view, kKinds> names = {
        "notes",      "status read",   "chat heartbeat", "status change",
        "board read", "healthz probe", "poll probe"};
    return names[static_cast<std::size_t>(kind)];
}

} // namespace load
