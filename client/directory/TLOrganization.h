#pragma once

#include <QString>
#include <cstdint>

namespace wire {
class Recordset;
}

// The user's organisation. ChatDisabled is set at sign-in.
class TLOrganization {
public:
    // "P" and OrganizationSys, or "N" and its absolute value when negative.
    QString Key() const;
    void FillObjectWithRecordSet(const wire::Recordset* rs);

    std::int32_t OrganizationSys = 0;
    QString OrganizationName;
    QString OrganizationDescription;
    bool ChatDisabled = false;
    QString Address1;
};
