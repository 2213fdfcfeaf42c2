#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace wire {

struct Argument {
    enum class Kind { Integer, Null, Text, GetDate };
    Kind kind = Kind::Null;
    std::int64_t integer = 0; // Kind::Integer
    QString text;             // Kind::Text, quotes undone
};

// One statement as the client posts it: a procedure call with an optional EXEC/EXECUTE head,
// or one of the two fixed Sessions statements.
struct Statement {
    enum class Kind { Procedure, SessionInsert, SessionUpdate };
    Kind kind = Kind::Procedure;
    QString head;      // "EXEC", "EXECUTE" or empty, as written (upper-cased)
    QString procedure; // as written; empty for the Sessions statements
    std::vector<Argument> args;
    // SessionInsert: SessionSys, SalesmanSys, SessionDetails, getdate(), ComputerName,
    // IPAddress, UserSys. SessionUpdate: SessionSys.
};

// Parses statement text by the gateway's grammar:
//   [EXEC|EXECUTE] name [arg {, arg}]      arg := [-]digits | NULL | 'text' ('' inside) | getdate()
//   INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, LoginDate, ComputerName,
//                         IPAddress, UserSys) VALUES (int, int, 'text', getdate(), 'text', 'text',
//                         int)
//   UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = int
// Keywords match without regard to case; blanks, tabs and line breaks separate tokens.
// Anything else (comments, semicolons, a second statement, unbalanced quotes, numbers out of
// 64-bit range) is refused: nullopt, with a one-line reason in *error.
class StatementParser {
public:
    static std::optional<Statement> parse(const QString& text, QString* error = nullptr);
};

} // namespace wire
