#include "QueryTool.h"

#include "TablePrinter.h"
#include "wire/ComError.h"
#include "wire/GatewayPost.h"
#include "wire/RowsetReader.h"
#include <QCommandLineParser>
#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QTextStream>
#include <optional>
#include <termios.h>
#include <unistd.h>
#include <variant>

namespace {

struct Options {
    QString url;
    QString file;
    QString statement;
    QString signInUser;   // empty: anonymous
    QString passwordFile; // empty: asked for on the terminal
    bool tsv = false;
    long timeoutMs = 60000;
};

int fail(int code, const QString& reason) {
    QTextStream(stderr) << "tavlo-query: " << reason << Qt::endl;
    return code;
}

// Reads the command line; a failure is reported and its exit status returned.
std::variant<Options, int> parseOptions(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Posts one statement to a Tavlo gateway exactly as the client does, or reads a saved "
        "rowset, and prints the recordset.\n\nTable: NULL for Null, control characters as \\t "
        "\\r \\n \\xNN.\n--tsv: tab-separated, Null as \\N, backslash, TAB, CR, LF escaped.\n"
        "--sign-in: sign in as the user first and post the statement in that session; the "
        "password comes from --password-file (its first line) or is asked for, never from the "
        "command line.\n"
        "Exit status: 0 done, 1 bad usage, 2 server unreachable, 3 answer is no rowset, "
        "4 sign-in refused.");
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption url("url", "The gateway's base address (\"/XMLDemo.asp\" is added).",
                                 "BASE");
    const QCommandLineOption file("file", "Read a saved rowset instead of asking a server.",
                                  "ROWSET.xml");
    const QCommandLineOption tsv("tsv", "Print tab-separated values for machine use.");
    const QCommandLineOption timeout("timeout", "Give up after this many ms (0: never).", "ms",
                                     "60000");
    const QCommandLineOption signIn("sign-in", "Act as this user (with --url).", "USER");
    const QCommandLineOption passwordFile(
        "password-file", "With --sign-in: read the password from this file's first line.", "FILE");
    parser.addOptions({url, file, tsv, timeout, signIn, passwordFile});
    parser.addPositionalArgument("STATEMENT", "The statement to post (with --url).");

    if (!parser.parse(arguments))
        return fail(QueryTool::Usage, parser.errorText());
    if (parser.isSet(help)) {
        QTextStream(stdout) << parser.helpText();
        return QueryTool::Ok;
    }
    Options o;
    o.url = parser.value(url);
    o.file = parser.value(file);
    o.tsv = parser.isSet(tsv);
    bool ok = false;
    o.timeoutMs = parser.value(timeout).toLong(&ok);
    if (!ok || o.timeoutMs < 0)
        return fail(QueryTool::Usage, "--timeout needs a number of milliseconds");
    const QStringList rest = parser.positionalArguments();
    if (parser.isSet(url) == parser.isSet(file))
        return fail(QueryTool::Usage, "give either --url BASE \"STATEMENT\" or --file ROWSET.xml");
    if (parser.isSet(url) && rest.size() != 1)
        return fail(QueryTool::Usage, "--url needs exactly one statement");
    if (parser.isSet(file) && !rest.isEmpty())
        return fail(QueryTool::Usage, "--file takes no statement");
    if (parser.isSet(url))
        o.statement = rest.first();
    o.signInUser = parser.value(signIn);
    o.passwordFile = parser.value(passwordFile);
    if (parser.isSet(signIn) && (o.signInUser.isEmpty() || !parser.isSet(url)))
        return fail(QueryTool::Usage, "--sign-in needs a user name, and --url");
    if (parser.isSet(passwordFile) && !parser.isSet(signIn))
        return fail(QueryTool::Usage, "--password-file goes with --sign-in");
    return o;
}

// The client's "lastCached" header: now, as short date and long time in US forms.
QString lastCached() {
    return QLocale(QLocale::English, QLocale::UnitedStates)
        .toString(QDateTime::currentDateTime(), QStringLiteral("M/d/yyyy h:mm:ss AP"));
}

int print(const QByteArray& answer, const Options& o, const QString& context) {
    wire::Rowset rowset;
    try {
        rowset = wire::RowsetReader::read(answer);
    } catch (const wire::ComError& e) {
        return fail(QueryTool::NoRowset, e.description() + context);
    }
    QTextStream out(stdout);
    out << (o.tsv ? TablePrinter::tsv(rowset) : TablePrinter::table(rowset));
    return QueryTool::Ok;
}

// The password of --sign-in: the file's first line, or typed on the terminal unseen.
std::optional<QString> password(const Options& o) {
    if (!o.passwordFile.isEmpty()) {
        QFile f(o.passwordFile);
        if (!f.open(QIODevice::ReadOnly))
            return std::nullopt;
        return QString::fromUtf8(f.readLine()).remove(QLatin1Char('\n')).remove(QLatin1Char('\r'));
    }
    QTextStream(stderr) << "Password for " << o.signInUser << ": " << Qt::flush;
    termios saved{};
    const bool terminal = ::isatty(STDIN_FILENO) && ::tcgetattr(STDIN_FILENO, &saved) == 0;
    if (terminal) {
        termios quiet = saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
    }
    const QString typed = QTextStream(stdin).readLine();
    if (terminal) {
        ::tcsetattr(STDIN_FILENO, TCSANOW, &saved);
        QTextStream(stderr) << QStringLiteral("\n");
    }
    return typed;
}

wire::GatewayReply post(const Options& o, const QString& sql) {
    wire::GatewayRequest request;
    request.baseUrl = o.url;
    request.sql = sql;
    request.lastCached = lastCached();
    request.timeoutMs = o.timeoutMs;
    return wire::postStatement(request);
}

// Quotes a text as the client's statements do: in single quotes, each one doubled.
QString quoted(QString text) {
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QStringLiteral("''")) +
           QLatin1Char('\'');
}

// Signs in (the session cookie stays in this process's jar); 0 or the exit status.
int signIn(const Options& o) {
    const auto secret = password(o);
    if (!secret)
        return fail(QueryTool::Usage,
                    QStringLiteral("cannot read the password file %1").arg(o.passwordFile));
    const wire::GatewayReply reply =
        post(o, QStringLiteral("EXEC LoginCheck ") + quoted(o.signInUser) + QLatin1Char(',') +
                    quoted(*secret));
    if (!reply.transportOk)
        return fail(QueryTool::Unreachable,
                    QStringLiteral("cannot reach %1: %2").arg(o.url, reply.transportError));
    try {
        if (wire::RowsetReader::read(reply.body).rows.size() == 1 && reply.httpStatus == 200)
            return QueryTool::Ok;
    } catch (const wire::ComError&) {
    }
    return fail(
        QueryTool::SignInRefused,
        QStringLiteral("sign-in as %1 refused (HTTP %2)").arg(o.signInUser).arg(reply.httpStatus));
}

int query(const Options& o) {
    if (!o.signInUser.isEmpty())
        if (const int refused = signIn(o); refused != QueryTool::Ok)
            return refused;
    const wire::GatewayReply reply = post(o, o.statement);
    if (!reply.transportOk) {
        return fail(QueryTool::Unreachable,
                    QStringLiteral("cannot reach %1: %2").arg(o.url, reply.transportError));
    }
    return print(reply.body, o, QStringLiteral(" (HTTP %1)").arg(reply.httpStatus));
}

int readFile(const Options& o) {
    QFile f(o.file);
    if (!f.open(QIODevice::ReadOnly))
        return fail(QueryTool::Usage,
                    QStringLiteral("cannot read %1: %2").arg(o.file, f.errorString()));
    return print(f.readAll(), o, QString());
}

} // namespace

int QueryTool::run(const QStringList& arguments) {
    const auto parsed = parseOptions(arguments);
    if (const int* code = std::get_if<int>(&parsed))
        return *code;
    const Options& o = std::get<Options>(parsed);
    return o.file.isEmpty() ? query(o) : readFile(o);
}
