#include "directory/TLContact.h"

#include "directory/OptionalColumns.h"
#include "directory/SignedKey.h"

QString TLContact::Key() const {
    return SignedKey(ContactSys);
}

void TLContact::FillObjectWithRecordSet(const wire::Recordset* rs) {
    OptionalColumns c(rs);
    c.Text(QStringLiteral("FirstName"), QStringLiteral(",FirstName"), FirstName);
    c.Text(QStringLiteral("LastName"), QStringLiteral(",LastName"), LastName);
    c.Long(QStringLiteral("ContactSys"), QStringLiteral(",ContactSys"), ContactSys);
    c.Long(QStringLiteral("UserSys"), QStringLiteral(",UserSys"), UserSys);
    c.UntrimmedText(QStringLiteral("UserName"), QStringLiteral(",UserName"), UserName);
    c.Long(QStringLiteral("OrganizationSys"), QStringLiteral(",OrganizationSys"), OrganizationSys);
    c.Text(QStringLiteral("Phone"), QStringLiteral(",Phone"), PhoneNumber);
    c.Text(QStringLiteral("Fax"), QStringLiteral(",Fax"), Fax);
    c.Text(QStringLiteral("Ext"), QStringLiteral(",Extension"), Extension);
    c.Text(QStringLiteral("Position"), QStringLiteral(",Position"), Position);
    c.Text(QStringLiteral("EmailAddress"), QStringLiteral(",EMailAddress"), EmailAddress);
    c.Text(QStringLiteral("ContactPictureLocation"), QStringLiteral(",ContactPictureLocation"),
           PictureLocation);
    c.Text(QStringLiteral("Pager"), QStringLiteral(",Pager"), Pager);
    c.Text(QStringLiteral("Cell"), QStringLiteral(",Cell"), Cell);
    c.Text(QStringLiteral("HomePhone"), QStringLiteral(",HomePhone"), HomePhoneNumber);
    c.Text(QStringLiteral("HomeAddress"), QStringLiteral(",HomeAddress"), HomeAddress);
    c.Text(QStringLiteral("HomeCity"), QStringLiteral(",HomeCity"), HomeCity);
    c.Text(QStringLiteral("HomeState"), QStringLiteral(",HomeState"), HomeState);
    c.Text(QStringLiteral("HomeZip"), QStringLiteral(",HomeZip"), HomeZip);
    c.Text(QStringLiteral("HomeFax"), QStringLiteral(",HomeFax"), HomeFax);
    c.Text(QStringLiteral("HomeEMail"), QStringLiteral(",HomeEMail"), HomeEMailAddress);
    c.Text(QStringLiteral("HireDate"), QStringLiteral(",HireDate"), HireDate);
    c.Text(QStringLiteral("DateAdded"), QStringLiteral(",DateAdded"), DateAdded);
    c.Text(QStringLiteral("ToolTip"), QStringLiteral(",ToolTip"), ToolTip);
    c.TrimmedLong(QStringLiteral("ShowHomeInfo"), QStringLiteral(",ShowHomeInfo"), ShowHomeInfo);
}
