#pragma once

#include <QString>
#include <cstdint>

// The signed-in user (and a spare). Sign-in, sign-out and rights arrive with the sign-in work;
// for now the record holds what the rest of the program reads.
class TLUser {
public:
    QString Key() const { return QString::number(m_userSys); }
    QString UserName() const { return m_userName; }
    std::int32_t UserSys() const { return m_userSys; }
    std::int32_t ContactSys() const { return m_contactSys; }
    std::int32_t OrganizationLocationSys() const { return m_organizationLocationSys; }
    bool ValidUser() const { return m_validUser; }
    QString Password() const { return m_password; }
    std::int32_t ChatStatus() const { return m_chatStatus; }
    std::int32_t SessionSys() const { return m_sessionSys; }

private:
    QString m_userName;
    std::int32_t m_userSys = 0;
    std::int32_t m_contactSys = 0;
    std::int32_t m_organizationLocationSys = 0;
    bool m_validUser = false;
    QString m_password;
    std::int32_t m_chatStatus = 0;
    std::int32_t m_sessionSys = 0;
};
