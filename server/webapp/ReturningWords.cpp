#include "ReturningWords.h"

#include <QDateTime>
#include <QLocale>

namespace {

constexpr qint64 kStatusIn = 3;

QDateTime momentIn(const QString& returningText) {
    return QLocale::c().toDateTime(returningText.trimmed(), QStringLiteral("M/d/yyyy h:mm AP"));
}

QString dayWords(const QDate& day, const QDate& today) {
    if (day == QDate(1900, 1, 1))
        return QStringLiteral("Unknown");
    if (day == QDate(1901, 1, 1))
        return QStringLiteral("Unspecified");
    const qint64 ahead = today.daysTo(day);
    if (ahead == 0)
        return QStringLiteral("TODAY");
    if (ahead == 1)
        return QStringLiteral("TOMORROW");
    if (ahead >= 2 && ahead <= 6)
        return QLocale::c().dayName(day.dayOfWeek(), QLocale::LongFormat).toUpper();
    return QLocale::c().toString(day, QStringLiteral("M/d/yyyy"));
}

} // namespace

ReturningWords ReturningWords::Of(qint64 statusSys, const QString& returningText,
                                  const QDate& today) {
    if (statusSys == kStatusIn)
        return {};
    const QDateTime moment = momentIn(returningText);
    if (!moment.isValid())
        return {QStringLiteral("Unspecified"), QString()};
    return {dayWords(moment.date(), today),
            QLocale::c().toString(moment.time(), QStringLiteral("h:mm AP"))};
}

QString ReturningWords::MomentOf(const QString& returningText) {
    const QDateTime moment = momentIn(returningText);
    return moment.isValid() ? moment.toString(QStringLiteral("yyyy-MM-ddTHH:mm")) : QString();
}
