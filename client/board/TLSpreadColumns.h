#pragma once

#include <cstdint>

// Column numbers of the board's standard view; column 0 is the row header.
class TLSpreadColumns {
public:
    std::int32_t MyContactCheck() const { return 1; }
    std::int32_t ContactName() const { return 2; }
    std::int32_t Ext() const { return 3; }
    std::int32_t Status() const { return 4; }
    std::int32_t ReturningDate() const { return 5; }
    std::int32_t ReturningTime() const { return 6; }
    std::int32_t Comment() const { return 7; }
    std::int32_t MaxColumns() const { return 7; }
};
