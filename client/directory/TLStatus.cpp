#include "directory/TLStatus.h"

#include "directory/OptionalColumns.h"

void TLStatus::FillObjectWithRecordSet(const wire::Recordset* rs) {
    OptionalColumns columns(rs);
    columns.Long(QStringLiteral("StatusSys"), QStringLiteral(",StatusSys"), StatusSys);
    columns.Text(QStringLiteral("Status"), QStringLiteral(",StatusText"), StatusText);
    columns.Long(QStringLiteral("ColorSys"), QStringLiteral(",ColorSys"), ColorSys);
    columns.Text(QStringLiteral("ColorCode"), QStringLiteral(",ColorCode"), ColorCode);
    columns.Text(QStringLiteral("StatusPictureLocation"), QStringLiteral(",StatusPictureLocation"),
                 StatusPictureLocation);
}

void TLStatus::CopyStatusObject(const TLStatus& source) {
    StatusSys = source.StatusSys;
    StatusText = source.StatusText;
    ColorSys = source.ColorSys;
    ColorCode = source.ColorCode;
    StatusPictureLocation = source.StatusPictureLocation;
}
