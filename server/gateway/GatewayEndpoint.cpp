#include "GatewayEndpoint.h"

#include "catalogue/Board.h"
#include "catalogue/Catalogue.h"
#include "store/Database.h"
#include "wire/FormEncoding.h"
#include "wire/RowsetWriter.h"
#include "wire/Statement.h"
#include <QDateTime>
#include <QTextStream>
#include <exception>

namespace {

// The HTTP library compresses every "text/" answer with brotli when a client accepts it, which
// costs seconds on a board; a type of our own keeps answers as they are. The client never
// looks at the type.
const QByteArray kRowsetType = QByteArrayLiteral("application/vnd.tavlo.rowset+xml");

QByteArray htmlPage(const QString& title, const QString& text) {
    return QStringLiteral("<html><head><title>%1</title></head><body><h1>%1</h1><p>%2</p>"
                          "</body></html>\n")
        .arg(title.toHtmlEscaped(), text.toHtmlEscaped())
        .toUtf8();
}

void logLine(const QString& line) {
    QTextStream err(stderr);
    err << line << '\n';
    err.flush();
}

} // namespace

GatewayEndpoint::GatewayEndpoint(Database& db) : m_db(db) {
    registerCatalogue();
}

void GatewayEndpoint::LogRefusal(const QString& peer, const QString& reason) {
    logLine(QStringLiteral("refused from %1: %2").arg(peer, reason));
}

GatewayEndpoint::Reply GatewayEndpoint::refuse(const QString& peer, const QString& reason,
                                               int status) {
    LogRefusal(peer, reason);
    const QString title =
        status == 403 ? QStringLiteral("Not allowed") : QStringLiteral("Statement refused");
    return {status, "text/html; charset=utf-8", htmlPage(title, reason)};
}

GatewayEndpoint::Reply GatewayEndpoint::Handle(const QByteArray& formBody, const QString& peer) {
    QString error;
    const auto sql = wire::form::field(formBody, "strSQL", &error);
    if (!sql)
        return refuse(peer, error);
    const auto statement = wire::StatementParser::parse(*sql, &error);
    if (!statement)
        return refuse(peer, error);
    if (const auto reason = Catalogue::instance().refusal(*statement))
        return refuse(peer, *reason);
    try {
        // The version is read before the statement runs, so an answer is never filed under a
        // version newer than the data it saw.
        // Answers also age out: who is on chat changes with time alone.
        const std::uint64_t version =
            (m_db.dataVersion() << 32) |
            std::uint64_t(QDateTime::currentSecsSinceEpoch() / (Board::kChatHeartbeatSeconds / 3));
        const bool cacheable = AnswerCache::Cacheable(statement->procedure);
        if (cacheable)
            if (const auto cached = m_cache.Find(*sql, version))
                return {200, kRowsetType, *cached};
        const Answer answer = Catalogue::instance().run(m_db, *statement);
        if (!answer)
            return {200, "text/html", QByteArray()};
        QByteArray written = wire::RowsetWriter::write(*answer);
        if (cacheable)
            m_cache.Store(*sql, version, written);
        return {200, kRowsetType, written};
    } catch (const Refusal& refusal) {
        return refuse(peer, refusal.reason(), 403);
    } catch (const std::exception& e) {
        logLine(QStringLiteral("failed for %1: %2: %3")
                    .arg(peer, statement->procedure, QString::fromLocal8Bit(e.what())));
        return {500, "text/html; charset=utf-8",
                htmlPage(QStringLiteral("Server error"), QStringLiteral("The statement failed."))};
    }
}

bool GatewayEndpoint::Healthy() {
    try {
        m_db.exec(QStringLiteral("SELECT 1"));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}
