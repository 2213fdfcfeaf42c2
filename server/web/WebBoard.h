#pragma once

#include <QHash>
#include <QString>

class Database;

// The web site's sign-in (/logincheck.asp): the client's web window posts the user's name and
// password there, and a good pair answers the organisation's board as a page. A bad pair, a
// removed account or a disabled organisation answers the sign-in form with the reason.
namespace WebBoard {

struct Page {
    int status = 200;
    QString html;
    qint64 signedInUser = -1; // a good sign-in: the user, for the session
};

// peer: the visitor's address, for the sign-in throttle.
Page LoginCheck(Database& db, const QHash<QString, QString>& fields, const QString& peer);

// A whole page of the site around a body, and the sign-in form with a reason above it.
QString Html(const QString& title, const QString& body);
Page SignInForm(int status, const QString& reason);

} // namespace WebBoard
