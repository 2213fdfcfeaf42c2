#pragma once

#include <QString>
#include <cstdint>

// A person of the directory: the signed-in user's own record, a spare for the status dialog,
// and one inside each board row.
class TLContact {
public:
    QString FirstName;
    QString LastName;
    std::int32_t ContactSys = 0;
    std::int32_t UserSys = 0;
    QString UserName;
    std::int32_t OrganizationSys = 0;
    QString Address1;
    QString Address2;
    QString City;
    QString State;
    QString Zip;
    QString PhoneNumber;
    QString Fax;
    QString Extension;
    QString Position;
    QString EmailAddress;
    QString PictureLocation;
    QString Pager;
    QString Cell;
    QString HomePhoneNumber;
    QString HomeAddress;
    QString HomeCity;
    QString HomeState;
    QString HomeZip;
    QString HomeFax;
    QString HomeEMailAddress;
    QString HireDate;
    QString DateAdded;
    QString ToolTip;
    std::int32_t ShowHomeInfo = 0;
    std::int32_t NotesUnread = 0;
};
