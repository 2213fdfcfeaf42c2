#include "Cp1252.h"

#include <array>

namespace wire::cp1252 {

namespace {

// Bytes 0x80..0x9F. The five unassigned bytes (0x81, 0x8D, 0x8F, 0x90, 0x9D) stand for the C1
// control of the same value, so that every byte survives a decode and encode.
constexpr std::array<char16_t, 32> kHigh{
    u'\u20AC', u'\u0081', u'\u201A', u'\u0192', u'\u201E', u'\u2026', u'\u2020', u'\u2021',
    u'\u02C6', u'\u2030', u'\u0160', u'\u2039', u'\u0152', u'\u008D', u'\u017D', u'\u008F',
    u'\u0090', u'\u2018', u'\u2019', u'\u201C', u'\u201D', u'\u2022', u'\u2013', u'\u2014',
    u'\u02DC', u'\u2122', u'\u0161', u'\u203A', u'\u0153', u'\u009D', u'\u017E', u'\u0178',
};

} // namespace

char encodeChar(QChar c) {
    const char16_t u = c.unicode();
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return char(u);
    for (std::size_t i = 0; i < kHigh.size(); ++i) {
        if (kHigh[i] == u)
            return char(0x80 + i);
    }
    return '?';
}

QByteArray encode(QStringView text) {
    QByteArray out(text.size(), Qt::Uninitialized);
    char* p = out.data();
    for (QChar c : text)
        *p++ = encodeChar(c);
    return out;
}

QString decode(QByteArrayView bytes) {
    QString out(bytes.size(), Qt::Uninitialized);
    QChar* p = out.data();
    for (char b : bytes) {
        const auto u = static_cast<unsigned char>(b);
        *p++ = (u >= 0x80 && u < 0xA0) ? QChar(kHigh[u - 0x80]) : QChar(u);
    }
    return out;
}

} // namespace wire::cp1252
