#pragma once

#include <cstdint>

// Column numbers of the notes grid.
class TLSpreadColumnNotes {
public:
    std::int32_t Delete() const { return 1; }
    std::int32_t DateAdded() const { return 2; }
    std::int32_t LeftBy() const { return 3; }
    std::int32_t MessageText() const { return 4; }
    std::int32_t DateRead() const { return 5; }
    std::int32_t MaxColumns() const { return 5; }
};
