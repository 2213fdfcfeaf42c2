// Feeds arbitrary text to the statement grammar. Whatever it accepts must be made only of what
// the grammar allows, and must read the same when written out again in canonical form.
#include "wire/Statement.h"

#include <QStringList>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

QString quoted(const QString& text) {
    QString q = text;
    q.replace(QLatin1String("'"), QLatin1String("''"));
    return QLatin1Char('\'') + q + QLatin1Char('\'');
}

QString argumentText(const wire::Argument& a) {
    switch (a.kind) {
    case wire::Argument::Kind::Integer:
        return QString::number(a.integer);
    case wire::Argument::Kind::Null:
        return QStringLiteral("NULL");
    case wire::Argument::Kind::Text:
        return quoted(a.text);
    case wire::Argument::Kind::GetDate:
        return QStringLiteral("getdate()");
    }
    return {};
}

QString canonical(const wire::Statement& s) {
    QStringList args;
    for (const auto& a : s.args)
        args << argumentText(a);
    switch (s.kind) {
    case wire::Statement::Kind::SessionInsert:
        return QStringLiteral("INSERT INTO Sessions (SessionSys, SalesmanSys, SessionDetails, "
                              "LoginDate, ComputerName,IPAddress,UserSys) VALUES (") +
               args.join(QLatin1Char(',')) + QLatin1Char(')');
    case wire::Statement::Kind::SessionUpdate:
        return QStringLiteral("UPDATE Sessions SET LogoutDate = getdate() WHERE SessionSys = ") +
               args.join(QString());
    case wire::Statement::Kind::Procedure:
        break;
    }
    QString text = s.head.isEmpty() ? s.procedure : s.head + QLatin1Char(' ') + s.procedure;
    if (!args.isEmpty())
        text += QLatin1Char(' ') + args.join(QLatin1Char(','));
    return text;
}

bool plainName(const QString& name) {
    if (name.isEmpty())
        return false;
    for (QChar c : name) {
        if (!(c.isLetterOrNumber() && c.unicode() < 0x80) && c != u'_')
            return false;
    }
    return true;
}

// Outside quoted texts only the grammar's characters may stand, and no comment. Written apart
// from the parser on purpose: a quote toggles, so a doubled quote toggles twice.
bool onlyGrammarOutsideQuotes(const QString& text) {
    bool inQuote = false;
    QChar previous;
    for (QChar c : text) {
        if (c == u'\'') {
            inQuote = !inQuote;
        } else if (!inQuote) {
            const bool allowed = (c.unicode() < 0x80 && c.isLetterOrNumber()) || c == u'_' ||
                                 c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u',' ||
                                 c == u'(' || c == u')' || c == u'=' || c == u'-';
            if (!allowed || (c == u'-' && previous == u'-'))
                return false;
        }
        previous = inQuote ? QChar() : c;
    }
    return !inQuote;
}

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "accepted statement breaks a rule: %s\n", what);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    QString error;
    const auto s = wire::StatementParser::parse(text, &error);
    if (!s) {
        check(!error.isEmpty() && !error.contains(QLatin1Char('\n')), "reason missing");
        return 0;
    }
    check(onlyGrammarOutsideQuotes(text), "character outside quotes");
    if (s->kind == wire::Statement::Kind::Procedure)
        check(plainName(s->procedure), "procedure name");
    for (const auto& a : s->args)
        check(!a.text.contains(QChar(0)), "NUL in a text");
    const auto again = wire::StatementParser::parse(canonical(*s));
    check(again.has_value(), "canonical form refused");
    check(canonical(*again) == canonical(*s), "canonical form reads differently");
    return 0;
}
