#include "PeopleImport.h"

#include "BadInput.h"
#include "CsvReader.h"
#include "InputRules.h"
#include "store/Database.h"
#include <QHash>
#include <QMap>

namespace PeopleImport {
namespace {

enum Column { First, Last, User, Email, Ext, Group, Location, Admin };

// The names a header may give each column (any case, blanks around ignored).
const QHash<QString, Column>& columnNames() {
    static const QHash<QString, Column> names = {
        {QStringLiteral("first"), First}, {QStringLiteral("first name"), First},
        {QStringLiteral("last"), Last},   {QStringLiteral("last name"), Last},
        {QStringLiteral("user"), User},   {QStringLiteral("user name"), User},
        {QStringLiteral("email"), Email}, {QStringLiteral("e-mail"), Email},
        {QStringLiteral("ext"), Ext},     {QStringLiteral("extension"), Ext},
        {QStringLiteral("group"), Group}, {QStringLiteral("location"), Location},
        {QStringLiteral("admin"), Admin}, {QStringLiteral("administrator"), Admin}};
    return names;
}

// Where each column is in the rows; BadInput for a header that doesn't name the needed ones.
QHash<Column, int> readHeader(const CsvRecord& header) {
    QHash<Column, int> at;
    for (int i = 0; i < header.fields.size(); ++i) {
        const QString name = header.fields[i].trimmed().toLower();
        const auto column = columnNames().constFind(name);
        if (column == columnNames().cend())
            throw BadInput(QStringLiteral("line %1: unknown column '%2' (the columns are first, "
                                          "last, user, email, ext, group, location, admin)")
                               .arg(header.line)
                               .arg(header.fields[i].trimmed()));
        if (at.contains(*column))
            throw BadInput(
                QStringLiteral("line %1: column '%2' comes twice").arg(header.line).arg(name));
        at.insert(*column, i);
    }
    for (const auto& [column, name] : {std::pair{First, "first"}, std::pair{Last, "last"},
                                       std::pair{User, "user"}, std::pair{Email, "email"}})
        if (!at.contains(column))
            throw BadInput(QStringLiteral("line %1: there is no column '%2'")
                               .arg(header.line)
                               .arg(QLatin1String(name)));
    return at;
}

PersonInput personOf(const CsvRecord& record, const QHash<Column, int>& at, int width) {
    if (record.fields.size() != width)
        throw BadInput(QStringLiteral("%1 fields where the header names %2")
                           .arg(record.fields.size())
                           .arg(width));
    const auto field = [&](Column c) {
        return at.contains(c) ? record.fields[at.value(c)] : QString();
    };
    PersonInput person{field(First), field(Last),  field(User),     field(Email),
                       field(Ext),   field(Group), field(Location), false};
    person.admin = InputRules::yesNo(field(Admin), QStringLiteral("admin"));
    return People::checked(person);
}

struct Row {
    int line = 0;
    PersonInput person;
};

// The problems found so far, by line.
using Problems = QMap<int, QString>;

// The rows whose fields are good by themselves; the others go into problems.
QList<Row> checkedRows(const QList<CsvRecord>& records, Problems& problems) {
    if (records.isEmpty())
        throw BadInput(QStringLiteral("the file is empty (its first line names the columns)"));
    const QHash<Column, int> at = readHeader(records.first());
    const int width = int(records.first().fields.size());
    QList<Row> rows;
    for (qsizetype i = 1; i < records.size(); ++i) {
        try {
            rows.append({records[i].line, personOf(records[i], at, width)});
        } catch (const BadInput& e) {
            problems.insert(records[i].line, e.reason());
        }
    }
    if (rows.isEmpty() && problems.isEmpty())
        throw BadInput(QStringLiteral("the file names nobody below its header"));
    return rows;
}

// Inside a write: adds the rows, noting those the store turns away (a taken user name, a group
// the organisation lacks, a user name twice in the file).
QList<AddedPerson> insertAll(Database& db, qint64 organizationSys, const QList<Row>& rows,
                             const QList<FirstPassword>& passwords, Problems& problems) {
    QList<AddedPerson> added;
    for (qsizetype i = 0; i < rows.size(); ++i) {
        try {
            AddedPerson person =
                People::insert(db, organizationSys, rows[i].person, passwords[i].hash);
            person.password = passwords[i].shown;
            added << person;
        } catch (const BadInput& e) {
            problems.insert(rows[i].line, e.reason());
        }
    }
    return added;
}

void refuse(const Problems& problems) {
    QStringList lines{QStringLiteral("nobody imported; the rows to mend:")};
    for (auto p = problems.cbegin(); p != problems.cend(); ++p)
        lines << QStringLiteral("line %1: %2").arg(p.key()).arg(p.value());
    throw BadInput(lines.join(QLatin1Char('\n')));
}

// Thrown to roll the trial run back.
struct TrialOver {};

} // namespace

QList<AddedPerson> run(Database& db, qint64 organizationSys, const QString& csv,
                       const MailSetup& mail) {
    Problems problems;
    const QList<Row> rows = checkedRows(CsvReader::read(csv), problems);
    // A trial run, rolled back, finds what the store refuses before any password is hashed.
    try {
        const QList<FirstPassword> none(rows.size(), FirstPassword{QString(), QStringLiteral("-")});
        db.write([&] {
            insertAll(db, organizationSys, rows, none, problems);
            throw TrialOver();
        });
    } catch (const TrialOver&) {
    }
    if (!problems.isEmpty())
        refuse(problems);
    QList<FirstPassword> passwords;
    for (qsizetype i = 0; i < rows.size(); ++i)
        passwords << Welcome::prepare(mail);
    return db.write([&] {
        const QList<AddedPerson> added = insertAll(db, organizationSys, rows, passwords, problems);
        if (!problems.isEmpty())
            refuse(problems);
        if (mail.mails())
            for (const AddedPerson& person : added)
                Welcome::mailLink(db, mail, person.userSys, true);
        return added;
    });
}

} // namespace PeopleImport
