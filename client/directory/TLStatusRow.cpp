#include "directory/TLStatusRow.h"

#include "base/Clock.h"
#include "base/Regional.h"
#include "base/TLError.h"
#include "directory/StatusNumbers.h"
#include "shell/TLMain.h"
#include <array>

namespace {

const QString kNothingGiven2000 = QStringLiteral("01/01/00 12:00AM");
const QString kNothingGiven2001 = QStringLiteral("01/01/01 12:00AM");
const QString kUnspecified = QStringLiteral("Unspecified");

bool isNothingGivenLiteral(const QString& text) {
    return text == kNothingGiven2000 || text == kNothingGiven2001;
}

// A stored text that holds a real moment: a date, not empty, not one of the two literals.
bool holdsMoment(const QString& text) {
    return !text.isEmpty() && !isNothingGivenLiteral(text) && Regional::IsDate(text);
}

// The stored moment as a whole day, through the regional short date form.
QDate wholeDay(const QString& text) {
    const QString shortDate = Regional::Format(Regional::CDate(text), QStringLiteral("Short Date"));
    return Regional::CDate(shortDate).date();
}

} // namespace

QString TLStatusRow::ReturningText() const {
    return isNothingGivenLiteral(m_returningText) ? kUnspecified : m_returningText;
}

QString TLStatusRow::GetDayOfWeek(std::int16_t day) {
    static const std::array<QString, 7> names = {
        QStringLiteral("MONDAY"),   QStringLiteral("TUESDAY"), QStringLiteral("WEDNESDAY"),
        QStringLiteral("THURSDAY"), QStringLiteral("FRIDAY"),  QStringLiteral("SATURDAY"),
        QStringLiteral("SUNDAY")};
    if (day < 1 || day > 7)
        return QString();
    return names[static_cast<size_t>(day - 1)];
}

QString TLStatusRow::ReturningDate() {
    if (Status().StatusSys == kStatusIn)
        return QString();
    if (!holdsMoment(m_returningText))
        return kUnspecified;
    const QDate day = wholeDay(m_returningText);
    if (day == QDate(1900, 1, 1))
        return QStringLiteral("Unknown");
    if (day == QDate(1901, 1, 1))
        return kUnspecified;
    const QDate today = Clock::Today();
    if (day == today)
        return QStringLiteral("TODAY");
    if (day == today.addDays(1))
        return QStringLiteral("TOMORROW");
    for (int ahead = 2; ahead <= 6; ++ahead)
        if (day == today.addDays(ahead))
            return GetDayOfWeek(static_cast<std::int16_t>(day.dayOfWeek()));
    const QString text = Regional::DateText(day);
    return text.isEmpty() ? kUnspecified : text;
}

QString TLStatusRow::ReturningTime() {
    if (Status().StatusSys == kStatusIn || !holdsMoment(m_returningText))
        return QString();
    return Regional::Format(Regional::CDate(m_returningText), QStringLiteral("h:mm AMPM"));
}

void TLStatusRow::GetContactStatus(std::int32_t contactSys) {
    if (contactSys != 0)
        Contact().ContactSys = contactSys;
    auto& data = TLMain().DataAccess();
    auto rs = data.LoadADOFromWeb(QStringLiteral("EXECUTE tl_GetUserStatuses NULL,") +
                                  QString::number(Contact().ContactSys));
    Status().FillObjectWithRecordSet(rs.get());
    Contact().FillObjectWithRecordSet(rs.get());
    if (!rs)
        Raise(err::NoObject);
    Comment = data.DBOStr(rs->Fields(QStringLiteral("comment")).Value());
    SetReturningText(data.DBOStr(rs->Fields(QStringLiteral("returningtext")).Value()));
    MyContact = data.DBOLong(rs->Fields(QStringLiteral("myfriend")).Value()) != 0;
}
