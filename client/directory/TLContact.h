#pragma once

#include <QString>
#include <cstdint>

namespace wire {
class Recordset;
}

// A person of the directory: the signed-in user's own record, a spare for the status dialog,
// and one inside each board row.
class TLContact {
public:
    // "P" and ContactSys, or "N" and its absolute value when negative.
    QString Key() const;
    QString FullName() const { return FirstName + QLatin1Char(' ') + LastName; }
    QString LastNameFirstName() const { return LastName + QStringLiteral(", ") + FirstName; }
    // Copies the columns the current record has; Nulls and missing columns keep the fields.
    void FillObjectWithRecordSet(const wire::Recordset* rs);

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
