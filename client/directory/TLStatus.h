#pragma once

#include <QString>
#include <cstdint>

// One status definition of the organisation's list. 3 (In), 6 (Unavailable) and 8 (Out) have
// a fixed meaning to the program; every other number, caption and colour is server data.
class TLStatus {
public:
    std::int32_t StatusSys = 0;
    QString StatusText;
    std::int32_t ColorSys = 0;
    QString ColorCode;
    QString StatusPictureLocation;
};
