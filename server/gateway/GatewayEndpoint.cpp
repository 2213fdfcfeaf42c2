#include "GatewayEndpoint.h"

#include "catalogue/Board.h"
#include "catalogue/CallerLookup.h"
#include "catalogue/Catalogue.h"
#include "catalogue/LogText.h"
#include "catalogue/ServerSettings.h"
#include "store/Database.h"
#include "store/SessionStore.h"
#include "wire/FormEncoding.h"
#include "wire/RowsetWriter.h"
#include "wire/Statement.h"
#include <QDateTime>
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

// Statements that write without needing an account (error reports have a share of their own).
bool writesAnonymously(const QString& procedure) {
    const QString name = procedure.toLower();
    return name == QStringLiteral("tl_forgotpassword") || name == QStringLiteral("tl_sendemail");
}

QByteArray sessionCookie(const QString& token) {
    return SessionStore::SetCookie(token, ServerSettings::Current().secureCookies);
}

} // namespace

GatewayEndpoint::GatewayEndpoint(Database& db) : m_db(db) {
    registerCatalogue();
}

void GatewayEndpoint::LogRefusal(const QString& peer, const QString& reason) {
    LogLine(QStringLiteral("refused from %1: %2").arg(peer, reason));
}

GatewayEndpoint::Reply GatewayEndpoint::refuse(const QString& peer, const QString& reason,
                                               int status) {
    LogRefusal(peer, reason);
    const QString title = status == 403   ? QStringLiteral("Not allowed")
                          : status == 429 ? QStringLiteral("Too many requests")
                                          : QStringLiteral("Statement refused");
    return {status, "text/html; charset=utf-8", htmlPage(title, reason), {}};
}

GatewayEndpoint::Reply GatewayEndpoint::Handle(const QByteArray& formBody, const QString& peer,
                                               const QString& cookieHeader) {
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
        Caller caller = CallerOf(m_db, SessionStore::TokenIn(cookieHeader), peer);
        if (!withinQuota(*statement, caller))
            return refuse(peer,
                          QStringLiteral("%1: this address's share of a minute is used up")
                              .arg(statement->procedure),
                          429);
        Catalogue::instance().authorize(m_db, *statement, caller);
        Reply reply = run(*statement, *sql, caller);
        if (caller.openSessionFor >= 0)
            reply.setCookie = sessionCookie(SessionStore::Open(m_db, caller.openSessionFor));
        else if (caller.endSession) {
            SessionStore::Close(m_db, SessionStore::TokenIn(cookieHeader));
            reply.setCookie = sessionCookie(QString());
        }
        return reply;
    } catch (const Refusal& refusal) {
        return refuse(peer, refusal.reason(), refusal.status());
    } catch (const std::exception& e) {
        LogLine(QStringLiteral("failed for %1: %2: %3")
                    .arg(peer, statement->procedure, QString::fromLocal8Bit(e.what())));
        return {500,
                "text/html; charset=utf-8",
                htmlPage(QStringLiteral("Server error"), QStringLiteral("The statement failed.")),
                {}};
    }
}

bool GatewayEndpoint::withinQuota(const wire::Statement& statement, const Caller& caller) {
    if (statement.procedure.compare(QStringLiteral("LogAnomaly"), Qt::CaseInsensitive) == 0 &&
        !m_anomalies.Take(caller.peer))
        return false;
    if (!caller.signedIn() && writesAnonymously(statement.procedure) &&
        !m_anonymousWrites.Take(caller.peer))
        return false;
    return true;
}

// Runs an authorised statement, from the cache where its answer is there. Answers are filed
// under the caller's organisation too, since some lists depend on it.
GatewayEndpoint::Reply GatewayEndpoint::run(const wire::Statement& statement, const QString& sql,
                                            Caller& caller) {
    // The version is read before the statement runs, so an answer is never filed under a
    // version newer than the data it saw.
    // Answers also age out: who is on chat changes with time alone.
    const std::uint64_t version =
        (m_db.dataVersion() << 32) |
        std::uint64_t(QDateTime::currentSecsSinceEpoch() / (Board::kChatHeartbeatSeconds / 3));
    const bool cacheable = AnswerCache::Cacheable(statement.procedure);
    const QString key = sql + QChar(0x1f) + QString::number(caller.organizationSys);
    if (cacheable)
        if (const auto cached = m_cache.Find(key, version))
            return {200, kRowsetType, *cached, {}};
    const Answer answer = Catalogue::instance().run(m_db, statement, caller);
    if (!answer)
        return {200, "text/html", QByteArray(), {}};
    QByteArray written = wire::RowsetWriter::write(*answer);
    if (cacheable)
        m_cache.Store(key, version, written);
    return {200, kRowsetType, written, {}};
}

bool GatewayEndpoint::Healthy() {
    try {
        m_db.exec(QStringLiteral("SELECT 1"));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}
