#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace wire {

struct Token {
    enum class Kind { Word, Integer, Text, Punct };
    Kind kind = Kind::Word;
    QString text;             // Word: as written; Text: quotes undone; Punct: the character
    std::int64_t integer = 0; // Integer
    qsizetype position = 0;   // where the token starts in the statement
};

// Splits statement text into words, integers, quoted texts and the punctuation ( ) , = of the
// gateway's grammar. Blanks, tabs, CR and LF separate tokens. Everything else outside quotes
// is refused here: comments, semicolons, other symbols, characters beyond ASCII, NUL.
class StatementLexer {
public:
    static constexpr qsizetype MaxWordLength = 128;
    static constexpr qsizetype MaxTextLength = 8000;

    // The tokens, or nullopt with a one-line reason.
    static std::optional<std::vector<Token>> tokens(QStringView text, QString* error);
};

} // namespace wire
