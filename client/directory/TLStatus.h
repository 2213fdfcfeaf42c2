#pragma once

#include <QString>
#include <cstdint>

namespace wire {
class Recordset;
}

// One status definition of the organisation's list. 3 (In), 6 (Unavailable) and 8 (Out) have
// a fixed meaning to the program; every other number, caption and colour is server data.
class TLStatus {
public:
    // StatusSys as decimal text: the key of the status in the list of available statuses.
    QString Key() const { return QString::number(StatusSys); }
    // Copies the columns the current record has; Nulls and missing columns keep the fields.
    void FillObjectWithRecordSet(const wire::Recordset* rs);
    void CopyStatusObject(const TLStatus& source);

    std::int32_t StatusSys = 0;
    QString StatusText;
    std::int32_t ColorSys = 0;
    QString ColorCode;
    QString StatusPictureLocation;
};
