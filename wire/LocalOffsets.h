#pragma once

#include <QDateTime>
#include <unordered_map>
#include <utility>

namespace wire {

// Conversions between local wall-clock time, which is what a rowset's dateTime values are,
// and QDateTime moments, made quickly for many values. A local-time QDateTime asks the C
// library for the zone on each construction or conversion, and glibc (with TZ unset) then
// checks the zone file every time: a system call per value, 8 ms on a 5,000-row board. This
// asks once per stretch of time and keeps the offset.
class LocalOffsets {
public:
    // The moment of a local date and time: a QDateTime with that moment's offset from UTC,
    // so the same moment, date and time of day as the local-time QDateTime would have.
    QDateTime dateTime(QDate date, QTime time);

    // The local date and time of a moment.
    std::pair<QDate, QTime> localParts(const QDateTime& moment);

private:
    static QDateTime inGap(QDate date, QTime time);

    std::unordered_map<qint64, int> m_byLocalHour;  // local day * 24 + hour -> offset (s)
    std::unordered_map<qint64, int> m_byUtcQuarter; // UTC quarter hours since 1970 -> offset
};

} // namespace wire
