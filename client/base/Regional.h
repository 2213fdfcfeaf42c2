#pragma once

#include <QDateTime>
#include <QString>
#include <QVariant>
#include <cstdint>

// Regional forms of text, numbers, dates and times, decided in one place. The defaults are the
// US forms (short date "M/d/yyyy", long time "h:mm:ss AM"), which is also what the C/POSIX
// locale maps to; tests pin them.
namespace Regional {

struct Forms {
    QString shortDate = QStringLiteral("M/d/yyyy");
    QString longTime = QStringLiteral("h:mm:ss AP");
    QChar decimalSeparator = QLatin1Char('.');
};
const Forms& Current();
void SetForms(const Forms& forms); // tests

// The default text of a moment: short date, blank, long time; a moment at midnight gives the
// date alone, a bare time (date 12/30/1899) the time alone.
QString DateText(const QDateTime& moment);
QString DateText(const QDate& date);
QString TimeText(const QTime& time);

// Whether text reads as a date, a time or both in the regional forms (also "M/d/yy",
// "yyyy-MM-dd", month names, "h:mm AM", "hh:mm", ...). CDate raises 13 when it doesn't.
bool IsDate(const QString& text);
QDateTime CDate(const QString& text);

// Numbers as the program's conversions read them. IsNumeric: the whole text (trimmed) is a
// number. Val: the leading number of the text, 0 if none ("12ab" gives 12). CLng/CInt round
// half to even and raise 6 (overflow) out of range, 13 for text that is no number.
bool IsNumeric(const QString& text);
double Val(const QString& text);
std::int32_t CLng(double value);
std::int32_t CLng(const QString& text);
std::int16_t CInt(double value);
double CDbl(const QString& text);

// Format(value, pattern) for the patterns the program uses:
//   dates: "mm/dd/yyyy", "m/d/yyyy", "hh:mm AMPM", "h:mm AMPM", "hh:mm", "dddd", "Short Date",
//          "Long Time"; numbers: "0%", "#0.0", "0".
QString Format(const QDateTime& moment, const QString& pattern);
QString Format(double value, const QString& pattern);

} // namespace Regional
