#include "RowsetValue.h"

#include <QDate>
#include <QDateTime>
#include <QStringDecoder>
#include <QTime>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <optional>

namespace wire::rowsetvalue {

namespace {

std::string_view trimmed(std::string_view s) {
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!s.empty() && blank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && blank(s.back()))
        s.remove_suffix(1);
    return s;
}

// from_chars rejects a leading '+', which some writers put in front of numbers.
std::string_view withoutPlus(std::string_view s) {
    if (s.size() > 1 && s.front() == '+' && s.at(1) != '-')
        s.remove_prefix(1);
    return s;
}

template <class T> std::optional<T> readNumber(std::string_view text) {
    const std::string_view s = withoutPlus(trimmed(text));
    T value{};
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), value);
    if (ec != std::errc() || end != s.data() + s.size() || s.empty())
        return std::nullopt;
    return value;
}

// A cursor over date and time text with fixed-width fields.
class Cursor {
public:
    explicit Cursor(std::string_view s) : m_s(s) {}
    bool atEnd() const { return m_pos >= m_s.size(); }
    char peek() const { return atEnd() ? '\0' : m_s[m_pos]; }
    bool take(char c) {
        if (peek() != c)
            return false;
        ++m_pos;
        return true;
    }
    // Exactly n decimal digits.
    std::optional<int> digits(int n) {
        int value = 0;
        for (int i = 0; i < n; ++i) {
            const char c = peek();
            if (c < '0' || c > '9')
                return std::nullopt;
            value = value * 10 + (c - '0');
            ++m_pos;
        }
        return value;
    }
    // A fraction of a second after '.', any number of digits, as milliseconds (truncated).
    int fractionMs() {
        int ms = 0;
        int count = 0;
        while (peek() >= '0' && peek() <= '9') {
            if (count < 3)
                ms = ms * 10 + (peek() - '0');
            ++count;
            ++m_pos;
        }
        for (; count < 3; ++count)
            ms *= 10;
        return ms;
    }

private:
    std::string_view m_s;
    std::size_t m_pos = 0;
};

std::optional<QDate> readDate(Cursor& c) {
    const auto y = c.digits(4);
    if (!y || !c.take('-'))
        return std::nullopt;
    const auto m = c.digits(2);
    if (!m || !c.take('-'))
        return std::nullopt;
    const auto d = c.digits(2);
    if (!d)
        return std::nullopt;
    const QDate date(*y, *m, *d);
    return date.isValid() ? std::optional(date) : std::nullopt;
}

std::optional<QTime> readTime(Cursor& c) {
    const auto h = c.digits(2);
    if (!h || !c.take(':'))
        return std::nullopt;
    const auto m = c.digits(2);
    if (!m)
        return std::nullopt;
    int s = 0;
    int ms = 0;
    if (c.take(':')) {
        const auto sec = c.digits(2);
        if (!sec)
            return std::nullopt;
        s = *sec;
        if (c.take('.'))
            ms = c.fractionMs();
    }
    const QTime time(*h, *m, s, ms);
    return time.isValid() ? std::optional(time) : std::nullopt;
}

// An optional zone after a time: "Z" or +hh:mm / -hh:mm.
struct Zone {
    bool valid = true;
    bool present = false;
    int offsetSeconds = 0; // east of UTC
};

Zone readZone(Cursor& c) {
    if (c.atEnd())
        return {};
    if (c.take('Z'))
        return {true, true, 0};
    const int sign = c.take('+') ? 1 : (c.take('-') ? -1 : 0);
    const auto h = sign != 0 ? c.digits(2) : std::nullopt;
    if (!h || !c.take(':'))
        return {false};
    const auto m = c.digits(2);
    if (!m || *h > 14 || *m > 59)
        return {false};
    return {true, true, sign * (*h * 3600 + *m * 60)};
}

QVariant readDateTime(std::string_view text, LocalOffsets* offsets) {
    Cursor c(trimmed(text));
    const auto date = readDate(c);
    if (!date)
        return {};
    QTime time(0, 0);
    if (c.take('T') || c.take(' ')) {
        const auto t = readTime(c);
        if (!t)
            return {};
        time = *t;
    }
    const Zone zone = readZone(c);
    if (!zone.valid || !c.atEnd())
        return {};
    if (zone.present)
        return QDateTime(*date, time, Qt::OffsetFromUTC, zone.offsetSeconds);
    return offsets ? offsets->dateTime(*date, time) : QDateTime(*date, time);
}

QVariant readDate(std::string_view text) {
    Cursor c(trimmed(text));
    const auto date = readDate(c);
    if (!date || !c.atEnd())
        return {};
    return *date;
}

QVariant readTime(std::string_view text) {
    Cursor c(trimmed(text));
    const auto time = readTime(c);
    if (!time || !readZone(c).valid || !c.atEnd())
        return {};
    return *time;
}

QVariant readBoolean(std::string_view text) {
    const QByteArrayView s(trimmed(text).data(), qsizetype(trimmed(text).size()));
    if (s.compare("true", Qt::CaseInsensitive) == 0 || s == "1" || s == "-1")
        return true;
    if (s.compare("false", Qt::CaseInsensitive) == 0 || s == "0")
        return false;
    return {};
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

QVariant readBinHex(std::string_view text) {
    const std::string_view s = trimmed(text);
    if (s.size() % 2 != 0)
        return {};
    QByteArray bytes(qsizetype(s.size() / 2), Qt::Uninitialized);
    for (std::size_t i = 0; i < s.size(); i += 2) {
        const int hi = hexDigit(s[i]);
        const int lo = hexDigit(s[i + 1]);
        if (hi < 0 || lo < 0)
            return {};
        bytes[qsizetype(i / 2)] = char(hi * 16 + lo);
    }
    return bytes;
}

template <class T> QVariant numberVariant(std::string_view text) {
    if (const auto v = readNumber<T>(text))
        return QVariant::fromValue(*v);
    return {};
}

QVariant readTyped(FieldType type, std::string_view text, LocalOffsets* offsets) {
    switch (type) {
    case FieldType::Int:
    case FieldType::I1:
    case FieldType::I2:
    case FieldType::I4:
    case FieldType::I8:
    case FieldType::UI1:
    case FieldType::UI2:
    case FieldType::UI4:
        return numberVariant<qlonglong>(text);
    case FieldType::UI8:
        return numberVariant<qulonglong>(text);
    case FieldType::R4:
    case FieldType::Float:
    case FieldType::Number:
        return numberVariant<double>(text);
    case FieldType::Boolean:
        return readBoolean(text);
    case FieldType::DateTime:
        return readDateTime(text, offsets);
    case FieldType::Date:
        return readDate(text);
    case FieldType::Time:
        return readTime(text);
    case FieldType::BinHex:
        return readBinHex(text);
    case FieldType::Uuid:
    case FieldType::String:
        break;
    }
    return {};
}

void appendPadded(QByteArray& out, int value, int width) {
    char buf[16];
    const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, value);
    for (auto n = end - buf; n < width; ++n)
        out.append('0');
    out.append(buf, end - buf);
}

void appendDate(QByteArray& out, QDate d) {
    appendPadded(out, d.year(), 4);
    out.append('-');
    appendPadded(out, d.month(), 2);
    out.append('-');
    appendPadded(out, d.day(), 2);
}

void appendTime(QByteArray& out, QTime t) {
    appendPadded(out, t.hour(), 2);
    out.append(':');
    appendPadded(out, t.minute(), 2);
    out.append(':');
    appendPadded(out, t.second(), 2);
    if (t.msec() != 0) {
        out.append('.');
        appendPadded(out, t.msec(), 3);
    }
}

// The shortest text that reads back to the same double; plain decimals for the magnitudes
// money and counts have, exponent form only for the very large and very small.
QByteArray formatDouble(double v) {
    char buf[512];
    const double magnitude = std::abs(v);
    const bool plain = magnitude == 0.0 || (magnitude >= 1e-5 && magnitude < 1e16);
    const auto [end, ec] = plain ? std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed)
                                 : std::to_chars(buf, buf + sizeof buf, v);
    return QByteArray(buf, end - buf);
}

QByteArray formatTyped(FieldType type, const QVariant& value, LocalOffsets* offsets) {
    QByteArray out;
    switch (type) {
    case FieldType::UI8:
        return QByteArray::number(value.toULongLong());
    case FieldType::Int:
    case FieldType::I1:
    case FieldType::I2:
    case FieldType::I4:
    case FieldType::I8:
    case FieldType::UI1:
    case FieldType::UI2:
    case FieldType::UI4:
        return QByteArray::number(value.toLongLong());
    case FieldType::R4:
    case FieldType::Float:
    case FieldType::Number:
        return formatDouble(value.toDouble());
    case FieldType::Boolean:
        return value.toBool() ? QByteArrayLiteral("True") : QByteArrayLiteral("False");
    case FieldType::DateTime: {
        // Written as local time, with no zone, as the rowset format has it.
        const QDateTime dt = value.toDateTime();
        const auto [date, time] = offsets
                                      ? offsets->localParts(dt)
                                      : std::pair(dt.toLocalTime().date(), dt.toLocalTime().time());
        appendDate(out, date);
        out.append('T');
        appendTime(out, time);
        return out;
    }
    case FieldType::Date:
        appendDate(out, value.toDate());
        return out;
    case FieldType::Time:
        appendTime(out, value.toTime());
        return out;
    case FieldType::BinHex:
        return value.toByteArray().toHex();
    case FieldType::Uuid:
    case FieldType::String:
        break;
    }
    return value.toString().toUtf8();
}

} // namespace

QString text(std::string_view utf8) {
    // QString::fromUtf8 drops a byte order mark at the start; inside a value it is data.
    if (utf8.size() >= 3 && utf8.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
        return decoder(QByteArrayView(utf8.data(), qsizetype(utf8.size())));
    }
    return QString::fromUtf8(utf8.data(), qsizetype(utf8.size()));
}

QVariant parse(FieldType type, std::string_view text, LocalOffsets* offsets) {
    if (type != FieldType::String && type != FieldType::Uuid) {
        QVariant typed = readTyped(type, text, offsets);
        if (typed.isValid())
            return typed;
    }
    return rowsetvalue::text(text);
}

bool isNull(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return true;
    case QMetaType::QDateTime:
        return !value.toDateTime().isValid();
    case QMetaType::QDate:
        return !value.toDate().isValid();
    case QMetaType::QTime:
        return !value.toTime().isValid();
    default:
        return false;
    }
}

QByteArray format(FieldType type, const QVariant& value, LocalOffsets* offsets) {
    if (isNull(value))
        return {};
    if (value.typeId() == QMetaType::QString)
        return value.toString().toUtf8();
    return formatTyped(type, value, offsets);
}

} // namespace wire::rowsetvalue
