#pragma once

#include <QHash>
#include <QString>

class Database;

// The small page of a recovery link: GET shows a form for the new password, POST sets it.
// The token works once.
namespace ResetPage {

struct Page {
    int status = 200;
    QString html;
};

Page Handle(Database& db, bool post, const QHash<QString, QString>& fields);

} // namespace ResetPage
