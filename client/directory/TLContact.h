#pragma once

#include <QString>
#include <cstdint>
#include <memory>

class TLStatus;

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

    // The person's present status as the server has it; an unanswered read gives an empty one.
    std::unique_ptr<TLStatus> GetContactStatus(std::int32_t contactSys) const;
    // Sends a new status for the person (who made the change is the signed-in user) and, when
    // the person is the signed-in user, brings the local status, comment and status bar along.
    // Empty texts, or "NULL", send no returning moment or comment.
    void UpdateContactStatus(std::int32_t contactSys, std::int32_t statusSys,
                             const QString& returningDate, const QString& returningTime,
                             const QString& comment);
    // Fills the record with the person's full details; -1 keeps the present ContactSys.
    void LoadContactDetails(std::int32_t contactSys);

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
