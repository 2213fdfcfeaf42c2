#pragma once

#include <QString>
#include <cstdint>

// A group of the organisation, shown as a tab of the board.
class TLGroup {
public:
    std::int32_t GroupSys = 0;
    std::int32_t OrganizationSys = 0;
    std::int32_t ParentSys = 0;
    std::int32_t ChildSys = 0;
    QString Name;
    QString Description;
};
