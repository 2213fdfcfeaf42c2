#pragma once

#include <cstdint>

// The two roots of the settings the program keeps: the user's own and the machine's. The
// numbers are the handles the registry API gives them, which is also how callers that pass a
// root as text spell it.
enum class RegistryRoot : std::uint32_t {
    CurrentUser = 0x80000001u,
    LocalMachine = 0x80000002u,
};
