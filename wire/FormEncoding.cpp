#include "FormEncoding.h"

#include "Cp1252.h"

namespace wire::form {

namespace {

bool isAsciiAlnum(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

void setError(QString* error, const QString& text) {
    if (error)
        *error = text;
}

// Percent-decodes one name or value ('+' is a blank). Nullopt on a bad escape.
std::optional<QByteArray> percentDecoded(QByteArrayView text) {
    QByteArray out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '+') {
            out.append(' ');
        } else if (c == '%') {
            if (i + 2 >= text.size())
                return std::nullopt;
            const int hi = hexValue(text[i + 1]);
            const int lo = hexValue(text[i + 2]);
            if (hi < 0 || lo < 0)
                return std::nullopt;
            out.append(char(hi * 16 + lo));
            i += 2;
        } else {
            out.append(c);
        }
    }
    return out;
}

} // namespace

QString URLEncode(const QString& text) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    QString out;
    out.reserve(text.size() * 3);
    for (QChar c : text) {
        const auto code = static_cast<unsigned char>(cp1252::encodeChar(c));
        if (isAsciiAlnum(code)) {
            out.append(QChar(code));
        } else {
            out.append(u'%');
            out.append(QChar(kHex[code >> 4]));
            out.append(QChar(kHex[code & 0xF]));
        }
    }
    return out;
}

std::optional<QString> field(QByteArrayView body, QByteArrayView name, QString* error) {
    std::optional<QByteArray> found;
    qsizetype start = 0;
    while (start <= body.size()) {
        qsizetype end = body.indexOf('&', start);
        if (end < 0)
            end = body.size();
        const QByteArrayView pair = body.sliced(start, end - start);
        start = end + 1;
        if (pair.isEmpty())
            continue;
        const qsizetype eq = pair.indexOf('=');
        const auto key = percentDecoded(eq < 0 ? pair : pair.first(eq));
        if (!key) {
            setError(error, QStringLiteral("bad percent escape in a field name"));
            return std::nullopt;
        }
        if (QByteArrayView(*key) != name)
            continue;
        if (found) {
            setError(error, QStringLiteral("the field %1 appears more than once")
                                .arg(QString::fromLatin1(name)));
            return std::nullopt;
        }
        found = percentDecoded(eq < 0 ? QByteArrayView() : pair.sliced(eq + 1));
        if (!found) {
            setError(error, QStringLiteral("bad percent escape in the field %1")
                                .arg(QString::fromLatin1(name)));
            return std::nullopt;
        }
    }
    if (!found) {
        setError(error, QStringLiteral("the field %1 is missing").arg(QString::fromLatin1(name)));
        return std::nullopt;
    }
    return cp1252::decode(*found);
}

} // namespace wire::form
