#include "StatementLexer.h"

#include <limits>

namespace wire {

namespace {

bool isBlank(QChar c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}
bool isDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}
bool isWordStart(QChar c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
}
bool isWordChar(QChar c) {
    return isWordStart(c) || isDigit(c);
}

QString describe(QChar c) {
    if (c.unicode() >= 0x21 && c.unicode() < 0x7F)
        return QStringLiteral("'%1'").arg(c);
    return QStringLiteral("U+%1").arg(c.unicode(), 4, 16, QChar(u'0')).toUpper();
}

class Lexer {
public:
    explicit Lexer(QStringView text) : m_text(text) {}

    std::optional<std::vector<Token>> run(QString* error) {
        std::vector<Token> out;
        while (true) {
            while (m_pos < m_text.size() && isBlank(m_text[m_pos]))
                ++m_pos;
            if (m_pos >= m_text.size())
                return out;
            Token t;
            t.position = m_pos;
            if (!lexOne(t)) {
                if (error)
                    *error = m_error;
                return std::nullopt;
            }
            out.push_back(std::move(t));
        }
    }

private:
    bool fail(const QString& reason) {
        m_error = QStringLiteral("%1 at position %2").arg(reason).arg(m_pos);
        return false;
    }

    QChar at(qsizetype i) const { return i < m_text.size() ? m_text[i] : QChar(); }

    bool lexOne(Token& t) {
        const QChar c = m_text[m_pos];
        if (isWordStart(c))
            return lexWord(t);
        if (isDigit(c) || (c == u'-' && isDigit(at(m_pos + 1))))
            return lexInteger(t);
        if (c == u'\'')
            return lexText(t);
        if (c == u'(' || c == u')' || c == u',' || c == u'=') {
            t.kind = Token::Kind::Punct;
            t.text = QString(c);
            ++m_pos;
            return true;
        }
        if ((c == u'-' && at(m_pos + 1) == u'-') || (c == u'/' && at(m_pos + 1) == u'*'))
            return fail(QStringLiteral("comments are not allowed"));
        if (c == u';')
            return fail(QStringLiteral("a semicolon (a second statement) is not allowed"));
        if (c == QChar(0))
            return fail(QStringLiteral("NUL character"));
        return fail(QStringLiteral("unexpected character %1").arg(describe(c)));
    }

    bool lexWord(Token& t) {
        const qsizetype start = m_pos;
        while (m_pos < m_text.size() && isWordChar(m_text[m_pos]))
            ++m_pos;
        if (m_pos - start > StatementLexer::MaxWordLength)
            return fail(QStringLiteral("name too long"));
        t.kind = Token::Kind::Word;
        t.text = m_text.sliced(start, m_pos - start).toString();
        return true;
    }

    bool lexInteger(Token& t) {
        const bool negative = m_text[m_pos] == u'-';
        if (negative)
            ++m_pos;
        // Accumulate negatively so that the most negative 64-bit value still fits.
        std::int64_t value = 0;
        constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
        while (m_pos < m_text.size() && isDigit(m_text[m_pos])) {
            const int digit = m_text[m_pos].unicode() - u'0';
            if (value < (lowest + digit) / 10)
                return fail(QStringLiteral("integer out of range"));
            value = value * 10 - digit;
            ++m_pos;
        }
        if (!negative && value == lowest)
            return fail(QStringLiteral("integer out of range"));
        if (isWordChar(at(m_pos)))
            return fail(QStringLiteral("malformed number"));
        t.kind = Token::Kind::Integer;
        t.integer = negative ? value : -value;
        return true;
    }

    bool lexText(Token& t) {
        ++m_pos; // opening quote
        QString text;
        while (true) {
            if (m_pos >= m_text.size())
                return fail(QStringLiteral("unbalanced quote"));
            const QChar c = m_text[m_pos];
            if (c == QChar(0))
                return fail(QStringLiteral("NUL character"));
            if (c == u'\'') {
                if (at(m_pos + 1) != u'\'')
                    break;
                ++m_pos; // a doubled quote stands for one
            }
            if (text.size() >= StatementLexer::MaxTextLength)
                return fail(QStringLiteral("text argument longer than %1 characters")
                                .arg(StatementLexer::MaxTextLength));
            text.append(c);
            ++m_pos;
        }
        ++m_pos; // closing quote
        t.kind = Token::Kind::Text;
        t.text = std::move(text);
        return true;
    }

    QStringView m_text;
    qsizetype m_pos = 0;
    QString m_error;
};

} // namespace

std::optional<std::vector<Token>> StatementLexer::tokens(QStringView text, QString* error) {
    return Lexer(text).run(error);
}

} // namespace wire
