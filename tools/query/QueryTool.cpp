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
#include <variant>

namespace {

struct Options {
    QString url;
    QString file;
    QString statement;
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
        "Exit status: 0 done, 1 bad usage, 2 server unreachable, 3 answer is no rowset.");
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption url("url", "The gateway's base address (\"/XMLDemo.asp\" is added).",
                                 "BASE");
    const QCommandLineOption file("file", "Read a saved rowset instead of asking a server.",
                                  "ROWSET.xml");
    const QCommandLineOption tsv("tsv", "Print tab-separated values for machine use.");
    const QCommandLineOption timeout("timeout", "Give up after this many ms (0: never).", "ms",
                                     "60000");
    parser.addOptions({url, file, tsv, timeout});
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

int query(const Options& o) {
    wire::GatewayRequest request;
    request.baseUrl = o.url;
    request.sql = o.statement;
    request.lastCached = lastCached();
    request.timeoutMs = o.timeoutMs;
    const wire::GatewayReply reply = wire::postStatement(request);
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
