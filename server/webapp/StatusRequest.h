#pragma once

#include "ApiCall.h"
#include "catalogue/StatusChange.h"
#include <QString>

class Database;

// A status change sent by the web board, checked before it is made: one's own status, or a
// colleague's with the right to change others' (10000016); a status the organisation offers;
// a returning date ("yyyy-MM-dd") and time ("HH:mm") that read as a moment; a comment of at
// most 255 characters.
class StatusRequest {
public:
    StatusRequest(Database& db, const ApiCall& call);

    int status() const { return m_status; } // 200 when it may be made, else 400 or 403
    QString reason() const { return m_reason; }
    const StatusChange::Change& change() const { return m_change; }

private:
    bool refuse(int status, const QString& reason);
    bool readPerson(Database& db, const ApiCall& call);
    bool readStatus(Database& db, const ApiCall& call);
    bool readMoment(const ApiCall& call);
    bool readComment(const ApiCall& call);

    int m_status = 200;
    QString m_reason;
    StatusChange::Change m_change;
};
