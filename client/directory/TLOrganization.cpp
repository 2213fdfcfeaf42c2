#include "directory/TLOrganization.h"

#include "directory/OptionalColumns.h"
#include "directory/SignedKey.h"

QString TLOrganization::Key() const {
    return SignedKey(OrganizationSys);
}

void TLOrganization::FillObjectWithRecordSet(const wire::Recordset* rs) {
    OptionalColumns columns(rs);
    columns.Long(QStringLiteral("OrganizationSys"), QStringLiteral(",OrganizationSys"),
                 OrganizationSys);
    columns.Text(QStringLiteral("Name"), QStringLiteral(",OrganizationName"), OrganizationName);
    columns.Text(QStringLiteral("Description"), QStringLiteral(",OrganizationDescription"),
                 OrganizationDescription);
    columns.Text(QStringLiteral("Address1"), QStringLiteral(",Address1"), Address1);
}
