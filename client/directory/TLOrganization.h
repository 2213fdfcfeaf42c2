#pragma once

#include <QString>
#include <cstdint>

// The user's organisation. ChatDisabled is set at sign-in.
class TLOrganization {
public:
    std::int32_t OrganizationSys = 0;
    QString OrganizationName;
    QString OrganizationDescription;
    bool ChatDisabled = false;
    QString Address1;
};
