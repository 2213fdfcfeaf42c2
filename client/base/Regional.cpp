#include "Regional.h"

#include "TLError.h"

#include <QHash>
#include <QLocale>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace Regional {

namespace {

Forms& forms() {
    static Forms f;
    return f;
}

const QLocale& usLocale() {
    static const QLocale locale(QLocale::English, QLocale::UnitedStates);
    return locale;
}

// The day a bare time belongs to.
const QDate kZeroDate(1899, 12, 30);

int expandYear(int year, int digits) {
    if (digits > 2)
        return year;
    return year < 30 ? 2000 + year : 1900 + year;
}

int monthFromName(const QString& name) {
    const QString lower = name.left(3).toLower();
    static const char* names[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                  "jul", "aug", "sep", "oct", "nov", "dec"};
    for (int i = 0; i < 12; ++i)
        if (lower == QLatin1String(names[i]))
            return i + 1;
    return 0;
}

std::optional<QDate> parseDatePart(const QString& text) {
    static const QRegularExpression slashed(
        QStringLiteral(R"(^(\d{1,2})[/\-.](\d{1,2})[/\-.](\d{1,4})$)"));
    static const QRegularExpression iso(QStringLiteral(R"(^(\d{4})-(\d{1,2})-(\d{1,2})$)"));
    static const QRegularExpression named(
        QStringLiteral(R"(^([A-Za-z]{3,9})\.?\s+(\d{1,2}),?\s+(\d{2,4})$)"));
    static const QRegularExpression dayNamed(
        QStringLiteral(R"(^(\d{1,2})[\s\-]([A-Za-z]{3,9})[\s\-,]+(\d{2,4})$)"));
    QRegularExpressionMatch m;
    if ((m = iso.match(text)).hasMatch()) {
        QDate d(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
        return d.isValid() ? std::optional(d) : std::nullopt;
    }
    if ((m = slashed.match(text)).hasMatch()) {
        const int year = expandYear(m.captured(3).toInt(), static_cast<int>(m.captured(3).size()));
        QDate d(year, m.captured(1).toInt(), m.captured(2).toInt());
        return d.isValid() ? std::optional(d) : std::nullopt;
    }
    if ((m = named.match(text)).hasMatch()) {
        const int month = monthFromName(m.captured(1));
        const int year = expandYear(m.captured(3).toInt(), static_cast<int>(m.captured(3).size()));
        QDate d(year, month, m.captured(2).toInt());
        return month && d.isValid() ? std::optional(d) : std::nullopt;
    }
    if ((m = dayNamed.match(text)).hasMatch()) {
        const int month = monthFromName(m.captured(2));
        const int year = expandYear(m.captured(3).toInt(), static_cast<int>(m.captured(3).size()));
        QDate d(year, month, m.captured(1).toInt());
        return month && d.isValid() ? std::optional(d) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<QTime> parseTimePart(const QString& text) {
    static const QRegularExpression clock(QStringLiteral(
        R"(^(\d{1,2})(?::(\d{1,2}))?(?::(\d{1,2}))?(?:\.\d+)?\s*([AaPp])?(?:[Mm])?$)"));
    const auto m = clock.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    const bool hasMinutes = !m.captured(2).isEmpty();
    const QString marker = m.captured(4).toUpper();
    if (!hasMinutes && marker.isEmpty())
        return std::nullopt; // a bare number is no time
    int hour = m.captured(1).toInt();
    const int minute = m.captured(2).toInt();
    const int second = m.captured(3).toInt();
    if (!marker.isEmpty()) {
        if (hour < 1 || hour > 12)
            return std::nullopt;
        hour = hour % 12 + (marker == QLatin1String("P") ? 12 : 0);
    }
    QTime t(hour, minute, second);
    return t.isValid() ? std::optional(t) : std::nullopt;
}

std::optional<QDateTime> readMoment(const QString& raw) {
    const QString text = raw.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    if (auto d = parseDatePart(text))
        return QDateTime(*d, QTime(0, 0));
    if (auto t = parseTimePart(text))
        return QDateTime(kZeroDate, *t);
    // A date and a time: split at the last blank (or a 'T') that leaves a readable date.
    for (qsizetype at = text.size() - 1; at > 0; --at) {
        if (!text[at].isSpace() && text[at] != u'T')
            continue;
        const auto d = parseDatePart(text.left(at).trimmed());
        const auto t = parseTimePart(text.mid(at + 1).trimmed());
        if (d && t)
            return QDateTime(*d, *t);
    }
    return std::nullopt;
}

// The same texts are read again and again (a board row asks whether its returning text is a
// date, then for its day, then for its time), so the answers of recent texts are kept.
using MomentCache = QHash<QString, std::optional<QDateTime>>;
MomentCache& momentCache() {
    thread_local MomentCache cache;
    return cache;
}

std::optional<QDateTime> parseMoment(const QString& raw) {
    constexpr qsizetype kKept = 4096;
    MomentCache& cache = momentCache();
    if (const auto it = cache.constFind(raw); it != cache.cend())
        return it.value();
    if (cache.size() >= kKept)
        cache.clear();
    const auto moment = readMoment(raw);
    cache.insert(raw, moment);
    return moment;
}

// The leading number of a text, as Val reads it: blanks anywhere are skipped.
double leadingNumber(const QString& text, bool* whole) {
    QString digits;
    bool seenDigit = false, seenPoint = false, seenExp = false;
    qsizetype i = 0;
    auto skipBlanks = [&] {
        while (i < text.size() &&
               (text[i] == u' ' || text[i] == u'\t' || text[i] == u'\n' || text[i] == u'\r'))
            ++i;
    };
    skipBlanks();
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+'))
        digits += text[i++];
    for (; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u' ' || c == u'\t' || c == u'\n' || c == u'\r')
            continue;
        if (c.isDigit() && c.unicode() < 128) {
            digits += c;
            seenDigit = true;
        } else if (c == u'.' && !seenPoint && !seenExp) {
            digits += c;
            seenPoint = true;
        } else if ((c == u'e' || c == u'E' || c == u'd' || c == u'D') && seenDigit && !seenExp) {
            QString exp = QStringLiteral("e");
            qsizetype j = i + 1;
            if (j < text.size() && (text[j] == u'-' || text[j] == u'+'))
                exp += text[j++];
            if (j < text.size() && text[j].isDigit()) {
                while (j < text.size() && text[j].isDigit())
                    exp += text[j++];
                digits += exp;
                seenExp = true;
                i = j - 1;
            } else {
                break;
            }
        } else {
            break;
        }
    }
    if (whole)
        *whole = (i >= text.size()) && seenDigit;
    bool ok = false;
    const double value = digits.toDouble(&ok);
    return ok ? value : 0.0;
}

double roundHalfEven(double value) {
    return std::nearbyint(value); // the default rounding mode is to nearest, ties to even
}

} // namespace

const Forms& Current() {
    return forms();
}

void SetForms(const Forms& f) {
    forms() = f;
    momentCache().clear();
}

QString DateText(const QDate& date) {
    return usLocale().toString(date, forms().shortDate);
}

QString TimeText(const QTime& time) {
    return usLocale().toString(time, forms().longTime);
}

QString DateText(const QDateTime& moment) {
    if (moment.date() == kZeroDate)
        return TimeText(moment.time());
    if (moment.time() == QTime(0, 0))
        return DateText(moment.date());
    return DateText(moment.date()) + QLatin1Char(' ') + TimeText(moment.time());
}

bool IsDate(const QString& text) {
    return parseMoment(text).has_value();
}

QDateTime CDate(const QString& text) {
    const auto moment = parseMoment(text);
    if (!moment)
        Raise(errTypeMismatch);
    return *moment;
}

bool IsNumeric(const QString& text) {
    QString t = text.trimmed();
    if (t.isEmpty())
        return false;
    static const QRegularExpression number(
        QStringLiteral(R"(^[+-]?\s*(\d{1,3}(,\d{3})+|\d+)?(\.\d*)?([eEdD][+-]?\d+)?$)"));
    const auto m = number.match(t);
    if (!m.hasMatch())
        return false;
    // At least one digit before or after the point.
    return std::any_of(t.cbegin(), t.cend(), [](QChar c) { return c.isDigit(); });
}

double Val(const QString& text) {
    return leadingNumber(text, nullptr);
}

double CDbl(const QString& text) {
    if (!IsNumeric(text))
        Raise(errTypeMismatch);
    QString t = text.trimmed();
    t.remove(QLatin1Char(','));
    t.remove(QLatin1Char(' '));
    t.replace(QLatin1Char('d'), QLatin1Char('e'));
    t.replace(QLatin1Char('D'), QLatin1Char('e'));
    if (t.startsWith(QLatin1Char('.')) || t.startsWith(QLatin1String("-.")) ||
        t.startsWith(QLatin1String("+.")))
        t.insert(t.indexOf(QLatin1Char('.')), QLatin1Char('0'));
    bool ok = false;
    const double value = t.toDouble(&ok);
    if (!ok)
        Raise(errTypeMismatch);
    return value;
}

std::int32_t CLng(double value) {
    const double r = roundHalfEven(value);
    if (!std::isfinite(r) || r < std::numeric_limits<std::int32_t>::min() ||
        r > std::numeric_limits<std::int32_t>::max())
        Raise(6);
    return static_cast<std::int32_t>(r);
}

std::int32_t CLng(const QString& text) {
    return CLng(CDbl(text));
}

std::int16_t CInt(double value) {
    const double r = roundHalfEven(value);
    if (!std::isfinite(r) || r < std::numeric_limits<std::int16_t>::min() ||
        r > std::numeric_limits<std::int16_t>::max())
        Raise(6);
    return static_cast<std::int16_t>(r);
}

namespace {

// Turns a date pattern of the program into Qt's form. "m" after an hour means minutes;
// "AMPM" and "AM/PM" give the AM or PM designator and make the hour a twelve-hour one.
QString qtDatePattern(const QString& pattern) {
    if (pattern.compare(QLatin1String("Short Date"), Qt::CaseInsensitive) == 0)
        return forms().shortDate;
    if (pattern.compare(QLatin1String("Long Time"), Qt::CaseInsensitive) == 0)
        return forms().longTime;
    const bool twelve = pattern.contains(QLatin1String("AMPM"), Qt::CaseInsensitive) ||
                        pattern.contains(QLatin1String("AM/PM"), Qt::CaseInsensitive);
    QString out;
    bool afterHour = false;
    qsizetype i = 0;
    auto run = [&](QChar c) {
        qsizetype n = 0;
        while (i + n < pattern.size() && pattern[i + n].toLower() == c)
            ++n;
        return n;
    };
    while (i < pattern.size()) {
        const QChar c = pattern[i].toLower();
        if (pattern.mid(i, 4).compare(QLatin1String("AMPM"), Qt::CaseInsensitive) == 0) {
            out += QLatin1String("AP");
            i += 4;
        } else if (pattern.mid(i, 5).compare(QLatin1String("AM/PM"), Qt::CaseInsensitive) == 0) {
            out += QLatin1String("AP");
            i += 5;
        } else if (c == u'y') {
            const qsizetype n = run(c);
            out += n >= 3 ? QLatin1String("yyyy") : QLatin1String("yy");
            i += n;
        } else if (c == u'd') {
            const qsizetype n = run(c);
            out += QString(std::min<qsizetype>(n, 4), QLatin1Char('d'));
            i += n;
        } else if (c == u'h') {
            const qsizetype n = run(c);
            out += QString(std::min<qsizetype>(n, 2), twelve ? QLatin1Char('h') : QLatin1Char('H'));
            afterHour = true;
            i += n;
        } else if (c == u'n') {
            const qsizetype n = run(c);
            out += QString(std::min<qsizetype>(n, 2), QLatin1Char('m'));
            i += n;
        } else if (c == u'm') {
            const qsizetype n = run(c);
            if (afterHour && n <= 2)
                out += QString(n, QLatin1Char('m'));
            else
                out += QString(std::min<qsizetype>(n, 4), QLatin1Char('M'));
            afterHour = false;
            i += n;
        } else if (c == u's') {
            const qsizetype n = run(c);
            out += QString(std::min<qsizetype>(n, 2), QLatin1Char('s'));
            i += n;
        } else if (c.isLetter()) {
            out += QLatin1Char('\'') + pattern[i] + QLatin1Char('\'');
            ++i;
        } else {
            out += pattern[i];
            ++i;
        }
    }
    return out;
}

double roundHalfAway(double value, int decimals) {
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

} // namespace

QString Format(const QDateTime& moment, const QString& pattern) {
    return usLocale().toString(moment, qtDatePattern(pattern));
}

QString Format(double value, const QString& pattern) {
    const bool percent = pattern.endsWith(QLatin1Char('%'));
    const QString body = percent ? pattern.chopped(1) : pattern;
    const qsizetype point = body.indexOf(QLatin1Char('.'));
    const int decimals = point < 0 ? 0 : static_cast<int>(body.size() - point - 1);
    const double scaled = percent ? value * 100.0 : value;
    const double rounded = roundHalfAway(scaled, decimals);
    QString text = QString::number(rounded, 'f', decimals);
    if (text.startsWith(QLatin1String("-")) && std::all_of(text.cbegin(), text.cend(), [](QChar c) {
            return c == u'-' || c == u'0' || c == u'.';
        }))
        text.remove(0, 1); // no negative zero
    return percent ? text + QLatin1Char('%') : text;
}

} // namespace Regional
