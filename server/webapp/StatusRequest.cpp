#include "StatusRequest.h"

#include "catalogue/LogText.h"
#include "store/Database.h"
#include <QDateTime>
#include <QSqlQuery>

namespace {

constexpr int kLongestComment = 255;

} // namespace

StatusRequest::StatusRequest(Database& db, const ApiCall& call) {
    m_change.byUserSys = call.caller.userSys;
    m_change.via = QStringLiteral("web");
    readPerson(db, call) && readStatus(db, call) && readMoment(call) && readComment(call);
}

bool StatusRequest::refuse(int status, const QString& reason) {
    m_status = status;
    m_reason = reason;
    return false;
}

bool StatusRequest::readPerson(Database& db, const ApiCall& call) {
    const Caller& caller = call.caller;
    m_change.contactSys = call.number(QStringLiteral("contact"));
    if (m_change.contactSys < 0)
        return refuse(400, QStringLiteral("Name the person by their contact number."));
    if (m_change.contactSys == caller.contactSys)
        return true;
    const bool colleague = db.exec(QStringLiteral("SELECT 1 FROM contact WHERE contactsys = ? AND "
                                                  "organizationsys = ?"),
                                   {m_change.contactSys, caller.organizationSys})
                               .next();
    if (caller.mayChangeOthersStatus && colleague)
        return true;
    LogLine(QStringLiteral("refused from %1: web status change by user %2 names another "
                           "person's status without the right to change it (contact %3)")
                .arg(caller.peer)
                .arg(caller.userSys)
                .arg(m_change.contactSys));
    return refuse(403, QStringLiteral("You may not change this person's status."));
}

bool StatusRequest::readStatus(Database& db, const ApiCall& call) {
    m_change.statusSys = call.number(QStringLiteral("status"));
    const bool offered =
        db.exec(QStringLiteral("SELECT 1 FROM status WHERE statussys = ? AND (organizationsys IS "
                               "NULL OR organizationsys = ?)"),
                {m_change.statusSys, call.caller.organizationSys})
            .next();
    return offered || refuse(400, QStringLiteral("No such status."));
}

bool StatusRequest::readMoment(const ApiCall& call) {
    const QString dateText = call.text(QStringLiteral("returnDate")).trimmed();
    const QString timeText = call.text(QStringLiteral("returnTime")).trimmed();
    if (dateText.isEmpty() && timeText.isEmpty())
        return true;
    const QDate date = dateText.isEmpty()
                           ? QDate::currentDate()
                           : QDate::fromString(dateText, QStringLiteral("yyyy-MM-dd"));
    const QTime time =
        timeText.isEmpty() ? QTime(0, 0) : QTime::fromString(timeText, QStringLiteral("HH:mm"));
    if (!date.isValid() || !time.isValid())
        return refuse(400, QStringLiteral("The returning date or time doesn't read as one."));
    m_change.returnAt = QDateTime(date, time).toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    return true;
}

bool StatusRequest::readComment(const ApiCall& call) {
    const QString comment = call.text(QStringLiteral("comment")).trimmed();
    if (comment.size() > kLongestComment)
        return refuse(400, QStringLiteral("The comment is longer than 255 characters."));
    m_change.comment = comment.isEmpty() ? QVariant() : QVariant(comment);
    return true;
}
