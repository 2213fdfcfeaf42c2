#include "directory/TLGroup.h"

#include "directory/OptionalColumns.h"

void TLGroup::FillObjectWithRecordSet(const wire::Recordset* rs) {
    OptionalColumns columns(rs);
    columns.Long(QStringLiteral("GroupSys"), QStringLiteral(",GroupSys"), GroupSys);
    columns.Long(QStringLiteral("OrganizationSys"), QStringLiteral(",OrganizationSys"),
                 OrganizationSys);
    columns.Long(QStringLiteral("ParentSys"), QStringLiteral(",ParentSys"), ParentSys);
    columns.Long(QStringLiteral("ChildSys"), QStringLiteral(",ChildSys"), ChildSys);
    columns.Text(QStringLiteral("Name"), QStringLiteral(",Name"), Name);
    columns.Text(QStringLiteral("Description"), QStringLiteral(",Description"), Description);
}
