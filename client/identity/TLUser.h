#pragma once

#include <QString>
#include <QVariant>
#include <cstdint>

namespace wire {
class Recordset;
}

// The signed-in user (and a spare): who signed in, the open session, and the rights held.
class TLUser {
public:
    // Copies UserSys, UserName and ChatStatus where the current record has them.
    void FillObjectWithRecordSet(const wire::Recordset* rs);

    QString Key() const { return QString::number(m_userSys); }
    QString UserName() const { return m_userName; }
    std::int32_t UserSys() const { return m_userSys; }
    std::int32_t ContactSys() const { return m_contactSys; }
    std::int32_t OrganizationLocationSys() const { return m_organizationLocationSys; }
    bool ValidUser() const { return m_validUser; }
    QString Password() const { return m_password; }
    std::int32_t ChatStatus() const { return m_chatStatus; }
    std::int32_t SessionSys() const { return m_sessionSys; }

    // Asks the server whether the pair is good and, if so, loads everything the board needs,
    // opens a session and shows the board. False, after telling the user why, otherwise.
    bool Login(const QVariant& userName, const QVariant& password);
    // Leaves the session: the In status becomes Out when asked to, the windows of the signed-in
    // user close, the tray falls back to the sign-in entries and the session row is closed.
    void Logout();
    // Opens (a new Sessions row) or closes (its logout time) the session on the server.
    void SetSession(bool opening);

    // Reads the security objects the user holds into the rights string.
    void SetSecurity();
    // Whether the object is held; a refusal names `action` to the user unless it is empty.
    bool CheckSecurity(std::int32_t securityObjectSys, const QString& action);
    // "|n|" for each held object, run together.
    const QString& Rights() const { return m_rights; }

private:
    bool loginSteps(const QString& userName, const QString& password);
    bool accountRefused(const wire::Recordset& rs);
    void applyChatDisabled(const wire::Recordset& rs);

    QString m_userName;
    std::int32_t m_userSys = 0;
    std::int32_t m_contactSys = 0;
    std::int32_t m_organizationLocationSys = 0;
    bool m_validUser = false;
    QString m_password;
    std::int32_t m_chatStatus = 0;
    std::int32_t m_sessionSys = 0;
    QString m_rights;
    QString m_firstName; // the two further texts of the record, emptied at sign-out
    QString m_lastName;
};
