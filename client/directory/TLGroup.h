#pragma once

#include <QString>
#include <cstdint>

namespace wire {
class Recordset;
}

// A group of the organisation, shown as a tab of the board.
class TLGroup {
public:
    // "KEY" and GroupSys: the key of the group in the list of available groups.
    QString Key() const { return QStringLiteral("KEY") + QString::number(GroupSys); }
    void FillObjectWithRecordSet(const wire::Recordset* rs);

    std::int32_t GroupSys = 0;
    std::int32_t OrganizationSys = 0;
    std::int32_t ParentSys = 0;
    std::int32_t ChildSys = 0;
    QString Name;
    QString Description;
};
