#pragma once

#include "People.h"
#include <QList>
#include <QString>

class Database;

// People from a CSV file: a header row names the columns, in any order (first, last, user,
// email, and optionally ext, group, location, admin). Every bad row is reported with its line
// and the reason; when any row is bad, nobody is imported.
namespace PeopleImport {

// Imports the text's people into the organisation in one transaction; BadInput lists the bad
// rows, one "line N: reason" a line.
QList<AddedPerson> run(Database& db, qint64 organizationSys, const QString& csv,
                       const MailSetup& mail);

} // namespace PeopleImport
