#pragma once

#include "base/AutoNew.h"
#include "directory/TLContact.h"
#include "directory/TLStatus.h"
#include "identity/TLUser.h"
#include <QString>

// One row of the board: a person, their user record and their present status.
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

private:
    AutoNew<TLContact> m_contact;
    AutoNew<TLUser> m_user;
    AutoNew<TLStatus> m_status;
};
