#pragma once

#include <QString>
#include <cstdint>

// A record key that is also a valid collection key: "P" and the number, or "N" and its
// absolute value for a negative one.
inline QString SignedKey(std::int32_t number) {
    if (number < 0)
        return QStringLiteral("N") + QString::number(-static_cast<std::int64_t>(number));
    return QStringLiteral("P") + QString::number(number);
}
