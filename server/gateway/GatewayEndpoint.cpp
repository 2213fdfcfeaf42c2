#include "GatewayEndpoint.h"

#include "catalogue/Board.h"
#include "catalogue/CallerLookup.h"
#include "catalogue/Catalogue.h"
#include "catalogue/ChatPresence.h"
#include "catalogue/LogText.h"
#include "catalogue/ServerSettings.h"
#include "store/Database.h"
#include "store/SessionStore.h"
#include "wire/FormEncoding.h"
#include "wire/RowsetWriter.h"
#include "wire/Statement.h"
#include <QDateTime>
#include <QSet>
#include <QSqlQuery>
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

GatewayEndpoint::GatewayEndpoint(Database& db, std::size_t cacheBytes)
    : m_db(db), m_cache(cacheBytes) {
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

namespace {

// The cache key: the statement as parsed, the argument that only says whose friends to mark
// left out, and the caller's organisation (some lists depend on it).
QString cacheKey(const wire::Statement& statement, int sharedArgument, qint64 organization) {
    QString key = statement.procedure.toLower();
    for (std::size_t i = 0; i < statement.args.size(); ++i) {
        const wire::Argument& arg = statement.args[i];
        key += QChar(0x1f);
        if (int(i) == sharedArgument)
            key += QLatin1Char('*');
        else if (arg.kind == wire::Argument::Kind::Integer)
            key += QString::number(arg.integer);
        else if (arg.kind == wire::Argument::Kind::Text)
            key += QLatin1Char('\'') + arg.text;
        else
            key +=
                arg.kind == wire::Argument::Kind::Null ? QStringLiteral("N") : QStringLiteral("D");
    }
    return key + QChar(0x1e) + QString::number(organization);
}

// The keys of the people a user has as friends.
QSet<qint64> friendsOf(Database& db, qint64 user) {
    QSet<qint64> friends;
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT contactsys FROM friend WHERE usersys = ?"), {user});
    while (q.next())
        friends.insert(q.value(0).toLongLong());
    return friends;
}

// A shared list as one user sees it: their friends marked on a copy.
QByteArray markFriends(Database& db, const AnswerCache::Answer& shared, qint64 user) {
    const QSet<qint64> friends = friendsOf(db, user);
    if (friends.isEmpty())
        return shared.xml;
    QByteArray copy = shared.xml;
    char* bytes = copy.data();
    for (std::size_t row = 0; row < shared.contacts.size(); ++row)
        if (friends.contains(shared.contacts[row]))
            bytes[shared.friendMarks[row]] = '1';
    return copy;
}

std::shared_ptr<AnswerCache::Answer> written(const wire::Rowset& rowset, bool shared) {
    auto answer = std::make_shared<AnswerCache::Answer>();
    answer->xml = wire::RowsetWriter::write(rowset);
    const int contact = Board::columnOf(rowset, QStringLiteral("ContactSys"));
    if (!shared || contact < 0)
        return answer;
    answer->friendMarks = AnswerCache::FriendMarks(answer->xml, rowset.rows.size());
    if (answer->friendMarks.empty())
        return answer;
    answer->contacts.reserve(rowset.rows.size());
    for (const auto& row : rowset.rows)
        answer->contacts.push_back(row[std::size_t(contact)].toLongLong());
    return answer;
}

} // namespace

// Runs an authorised statement, from the cache where its answer is there. Board lists are
// made once for everybody and each asker's friends marked on a copy.
GatewayEndpoint::Reply GatewayEndpoint::run(const wire::Statement& statement, const QString&,
                                            Caller& caller) {
    if (!AnswerCache::Cacheable(statement.procedure)) {
        const Answer answer = Catalogue::instance().run(m_db, statement, caller);
        if (!answer)
            return {200, "text/html", QByteArray(), {}};
        return {200, kRowsetType, wire::RowsetWriter::write(*answer), {}};
    }
    ChatPresence::instance().Swap(m_db); // who other servers heard, also for kept answers
    // The version is read before the statement runs, so an answer is never filed under a
    // version newer than the data it saw. Answers also age: who is on chat changes with time.
    const std::uint64_t version =
        (m_db.dataVersion() << 32) |
        (std::uint64_t(QDateTime::currentMSecsSinceEpoch() / ChatPresence::answerLifeMs()) &
         0xffffffffu);
    int mark = AnswerCache::FriendMarkArgument(statement.procedure, statement.args.size());
    if (mark >= 0 && statement.args[std::size_t(mark)].kind != wire::Argument::Kind::Integer)
        mark = -1;
    const QString key = cacheKey(statement, mark, caller.organizationSys);
    std::shared_ptr<const AnswerCache::Answer> answer = m_cache.Find(key, version);
    if (!answer) {
        caller.sharedAnswer = mark >= 0;
        const Answer rowset = Catalogue::instance().run(m_db, statement, caller);
        caller.sharedAnswer = false;
        if (!rowset)
            return {200, "text/html", QByteArray(), {}};
        auto made = written(*rowset, mark >= 0);
        m_cache.Store(key, version, made);
        answer = std::move(made);
    }
    if (mark < 0 || answer->contacts.empty())
        return {200, kRowsetType, answer->xml, {}};
    return {200,
            kRowsetType,
            markFriends(m_db, *answer, statement.args[std::size_t(mark)].integer),
            {}};
}

bool GatewayEndpoint::Healthy() {
    try {
        m_db.exec(QStringLiteral("SELECT 1"));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}
