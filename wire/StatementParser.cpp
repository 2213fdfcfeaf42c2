#include "Statement.h"

#include "StatementLexer.h"
#include <array>

namespace wire {

namespace {

constexpr qsizetype kMaxStatementLength = 16384;

// Words that can never name a procedure: SQL verbs and the grammar's own keywords.
constexpr std::array<const char*, 34> kReserved{
    "EXEC",   "EXECUTE",    "NULL",   "GETDATE",  "INSERT",   "UPDATE",      "DELETE",
    "SELECT", "DROP",       "CREATE", "ALTER",    "TRUNCATE", "GRANT",       "REVOKE",
    "DENY",   "DECLARE",    "SET",    "SHUTDOWN", "UNION",    "WAITFOR",     "BEGIN",
    "COMMIT", "ROLLBACK",   "MERGE",  "USE",      "KILL",     "BACKUP",      "RESTORE",
    "DBCC",   "OPENROWSET", "BULK",   "GO",       "INTO",     "RECONFIGURE",
};

bool sameWord(const QString& a, const char* b) {
    return a.compare(QLatin1String(b), Qt::CaseInsensitive) == 0;
}

class Parser {
public:
    Parser(std::vector<Token> tokens, QString* error)
        : m_tokens(std::move(tokens)), m_error(error) {}

    std::optional<Statement> parse() {
        if (m_tokens.empty())
            return fail(QStringLiteral("empty statement"));
        if (isWord(0, "INSERT"))
            return sessionInsert();
        if (isWord(0, "UPDATE"))
            return sessionUpdate();
        return procedureCall();
    }

private:
    std::nullopt_t fail(const QString& reason) {
        if (m_error)
            *m_error = reason;
        return std::nullopt;
    }

    std::nullopt_t failHere(const QString& expected) {
        if (m_pos >= m_tokens.size())
            return fail(expected + QStringLiteral(" expected at the end of the statement"));
        return fail(QStringLiteral("%1 expected at position %2")
                        .arg(expected)
                        .arg(m_tokens[m_pos].position));
    }

    bool atEnd() const { return m_pos >= m_tokens.size(); }

    bool isWord(std::size_t i, const char* word) const {
        return i < m_tokens.size() && m_tokens[i].kind == Token::Kind::Word &&
               sameWord(m_tokens[i].text, word);
    }

    bool isPunct(char c) const {
        return !atEnd() && m_tokens[m_pos].kind == Token::Kind::Punct &&
               m_tokens[m_pos].text == QChar(QLatin1Char(c));
    }

    bool takeWord(const char* word) {
        if (!isWord(m_pos, word))
            return false;
        ++m_pos;
        return true;
    }

    bool takePunct(char c) {
        if (!isPunct(c))
            return false;
        ++m_pos;
        return true;
    }

    std::optional<Argument> argument() {
        if (atEnd())
            return std::nullopt;
        const Token& t = m_tokens[m_pos];
        Argument a;
        if (t.kind == Token::Kind::Integer) {
            a.kind = Argument::Kind::Integer;
            a.integer = t.integer;
        } else if (t.kind == Token::Kind::Text) {
            a.kind = Argument::Kind::Text;
            a.text = t.text;
        } else if (isWord(m_pos, "NULL")) {
            a.kind = Argument::Kind::Null;
        } else if (isWord(m_pos, "GETDATE")) {
            ++m_pos;
            if (!takePunct('(') || !isPunct(')'))
                return std::nullopt;
            a.kind = Argument::Kind::GetDate;
        } else {
            return std::nullopt;
        }
        ++m_pos;
        return a;
    }

    std::optional<Statement> procedureCall() {
        Statement s;
        s.kind = Statement::Kind::Procedure;
        if (isWord(m_pos, "EXEC") || isWord(m_pos, "EXECUTE"))
            s.head = m_tokens[m_pos++].text.toUpper();
        if (atEnd() || m_tokens[m_pos].kind != Token::Kind::Word)
            return failHere(QStringLiteral("a procedure name"));
        for (const char* word : kReserved) {
            if (isWord(m_pos, word))
                return fail(QStringLiteral("%1 is no procedure name").arg(m_tokens[m_pos].text));
        }
        s.procedure = m_tokens[m_pos++].text;
        if (atEnd())
            return s;
        while (true) {
            auto a = argument();
            if (!a)
                return failHere(QStringLiteral("a number, NULL, a quoted text or getdate()"));
            s.args.push_back(std::move(*a));
            if (atEnd())
                return s;
            if (!takePunct(','))
                return failHere(QStringLiteral("a comma or the end of the statement"));
        }
    }

    bool words(std::initializer_list<const char*> list) {
        for (const char* w : list) {
            if (!takeWord(w))
                return false;
        }
        return true;
    }

    // ( a, b, ... ) with the given words, commas between.
    bool wordList(std::initializer_list<const char*> list) {
        if (!takePunct('('))
            return false;
        bool first = true;
        for (const char* w : list) {
            if (!first && !takePunct(','))
                return false;
            if (!takeWord(w))
                return false;
            first = false;
        }
        return takePunct(')');
    }

    bool value(Argument::Kind kind, Statement& s) {
        auto a = argument();
        if (!a || a->kind != kind)
            return false;
        s.args.push_back(std::move(*a));
        return true;
    }

    std::optional<Statement> sessionInsert() {
        using K = Argument::Kind;
        Statement s;
        s.kind = Statement::Kind::SessionInsert;
        const bool ok =
            words({"INSERT", "INTO", "Sessions"}) &&
            wordList({"SessionSys", "SalesmanSys", "SessionDetails", "LoginDate", "ComputerName",
                      "IPAddress", "UserSys"}) &&
            takeWord("VALUES") && takePunct('(') && value(K::Integer, s) && takePunct(',') &&
            value(K::Integer, s) && takePunct(',') && value(K::Text, s) && takePunct(',') &&
            value(K::GetDate, s) && takePunct(',') && value(K::Text, s) && takePunct(',') &&
            value(K::Text, s) && takePunct(',') && value(K::Integer, s) && takePunct(')');
        if (!ok)
            return failHere(QStringLiteral("the Sessions insert as the client writes it"));
        if (!atEnd())
            return failHere(QStringLiteral("the end of the statement"));
        return s;
    }

    std::optional<Statement> sessionUpdate() {
        Statement s;
        s.kind = Statement::Kind::SessionUpdate;
        const bool ok = words({"UPDATE", "Sessions", "SET", "LogoutDate"}) && takePunct('=') &&
                        takeWord("GETDATE") && takePunct('(') && takePunct(')') &&
                        words({"WHERE", "SessionSys"}) && takePunct('=') &&
                        value(Argument::Kind::Integer, s);
        if (!ok)
            return failHere(QStringLiteral("the Sessions update as the client writes it"));
        if (!atEnd())
            return failHere(QStringLiteral("the end of the statement"));
        return s;
    }

    std::vector<Token> m_tokens;
    std::size_t m_pos = 0;
    QString* m_error;
};

} // namespace

std::optional<Statement> StatementParser::parse(const QString& text, QString* error) {
    if (text.size() > kMaxStatementLength) {
        if (error)
            *error = QStringLiteral("statement longer than %1 characters").arg(kMaxStatementLength);
        return std::nullopt;
    }
    auto tokens = StatementLexer::tokens(text, error);
    if (!tokens)
        return std::nullopt;
    return Parser(std::move(*tokens), error).parse();
}

} // namespace wire
