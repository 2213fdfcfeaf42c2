#include "LocalOffsets.h"

namespace wire {

namespace {

constexpr qint64 kQuarterMs = 15 * 60 * 1000;

qint64 floorDiv(qint64 a, qint64 b) {
    return a / b - ((a % b != 0) && ((a < 0) != (b < 0)));
}

} // namespace

QDateTime LocalOffsets::dateTime(QDate date, QTime time) {
    const qint64 key = date.toJulianDay() * 24 + time.hour();
    auto it = m_byLocalHour.find(key);
    if (it == m_byLocalHour.end()) {
        const QDateTime probe(date, QTime(time.hour(), 0));
        if (!probe.isValid())
            return inGap(date, time);
        it = m_byLocalHour.emplace(key, probe.offsetFromUtc()).first;
    }
    return QDateTime(date, time, Qt::OffsetFromUTC, it->second);
}

// A time the clock skipped when it moved forward. It is kept as written, with the offset in
// force just before the change, so that its date and time of day read as the server sent them.
QDateTime LocalOffsets::inGap(QDate date, QTime time) {
    const qint64 wall = QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch();
    const QDateTime before =
        QDateTime::fromMSecsSinceEpoch(wall - 6 * 3600 * 1000LL, Qt::LocalTime);
    return QDateTime(date, time, Qt::OffsetFromUTC, before.offsetFromUtc());
}

std::pair<QDate, QTime> LocalOffsets::localParts(const QDateTime& moment) {
    if (moment.timeSpec() == Qt::LocalTime)
        return {moment.date(), moment.time()};
    const qint64 ms = moment.toMSecsSinceEpoch();
    // Zones change their offset on whole quarter hours of UTC at the finest.
    const qint64 key = floorDiv(ms, kQuarterMs);
    auto it = m_byUtcQuarter.find(key);
    if (it == m_byUtcQuarter.end()) {
        const QDateTime probe = QDateTime::fromMSecsSinceEpoch(key * kQuarterMs, Qt::LocalTime);
        it = m_byUtcQuarter.emplace(key, probe.offsetFromUtc()).first;
    }
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(ms + it->second * 1000LL, Qt::UTC);
    return {local.date(), local.time()};
}

} // namespace wire
