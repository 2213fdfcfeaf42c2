#pragma once

#include "base/AutoNew.h"
#include "directory/TLContact.h"
#include "directory/TLStatus.h"
#include "identity/TLUser.h"
#include <QString>
#include <cstdint>

// One row of the board: a person, their user record and their present status, with the
// returning moment kept exactly as the server sent it and read through the board's rules.
class TLStatusRow {
public:
    TLContact& Contact() { return m_contact.get(); }
    void SetContact(std::unique_ptr<TLContact> contact) { m_contact.set(std::move(contact)); }
    TLUser& User() { return m_user.get(); }
    void SetUser(std::unique_ptr<TLUser> user) { m_user.set(std::move(user)); }
    TLStatus& Status() { return m_status.get(); }
    void SetStatus(std::unique_ptr<TLStatus> status) { m_status.set(std::move(status)); }

    bool MyContact = false;
    QString Comment;

    // The person's ContactSys as decimal text, and as a number.
    QString Key() { return QString::number(Contact().ContactSys); }
    std::int32_t KeyValue() { return Contact().ContactSys; }

    // The stored moment, or "Unspecified" for the two literals that mean nothing was given.
    QString ReturningText() const;
    void SetReturningText(const QString& text) { m_returningText = text; }

    // "MONDAY" for 1 up to "SUNDAY" for 7; empty for anything else.
    static QString GetDayOfWeek(std::int16_t day);

    // The day the person is due back in board words: TODAY, TOMORROW, a weekday name within
    // the week, Unknown, Unspecified, or the plain date. Empty for someone who is in.
    QString ReturningDate();
    // The time of day of the stored moment ("h:mm AM"), or empty.
    QString ReturningTime();

    // Loads the whole row of one person from the server (0: the person already in the row).
    void GetContactStatus(std::int32_t contactSys);

private:
    AutoNew<TLContact> m_contact;
    AutoNew<TLUser> m_user;
    AutoNew<TLStatus> m_status;
    QString m_returningText;
};
