// Notes left for a person: the unread count of the poll, the notes window, and leaving one.
#include "Board.h"
#include "Catalogue.h"
#include "RowsetFromQuery.h"
#include "store/Database.h"
#include <QDateTime>
#include <QLocale>

namespace {

using S = ArgShape;

QString shown(const QVariant& stored) {
    if (stored.isNull())
        return QString();
    const QDateTime moment = QDateTime::fromString(stored.toString(), Qt::ISODate);
    return QLocale::c().toString(moment, QStringLiteral("M/d/yyyy h:mm:ss AP"));
}

Answer unreadCount(Database& db, const Args& a) {
    QSqlQuery q = db.exec(QStringLiteral("SELECT COUNT(*) AS \"NoteCount\" FROM note WHERE "
                                         "contactsys = ? AND dateread IS NULL AND deleted = 0"),
                          {a.value(0)});
    return RowsetFromQuery(q);
}

// The notes of a person, newest first; dates as the user reads them. Private notes only when
// the asking user (fourth argument) is that person.
Answer contactNotes(Database& db, const Args& a) {
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT n.notesys AS \"NoteSys\", n.dateentered AS \"DateEntered\", "
                               "n.enteredbysys AS \"EnteredBySys\", "
                               "a.firstname || ' ' || a.lastname AS \"EnteredByName\", "
                               "n.notetext AS \"NoteText\", n.dateread AS \"DateRead\" FROM note n "
                               "LEFT JOIN contact a ON a.contactsys = n.enteredbysys "
                               "WHERE n.contactsys = ? AND n.deleted = 0 AND (n.private = 0 OR "
                               "EXISTS (SELECT 1 FROM users u WHERE u.usersys = ? AND "
                               "u.contactsys = n.contactsys)) "
                               "ORDER BY n.dateentered DESC, n.notesys DESC"),
                {a.value(0), a.value(3)});
    wire::Rowset rowset = RowsetFromQuery(q);
    for (size_t i = 0; i < rowset.columns.size(); ++i) {
        const QString& name = rowset.columns[i].name;
        if (name != QStringLiteral("DateEntered") && name != QStringLiteral("DateRead"))
            continue;
        for (auto& row : rowset.rows)
            if (row[i].isValid())
                row[i] = shown(row[i]);
    }
    return rowset;
}

// A note is marked read or deleted only by its receiver, the user of the contact it was left
// for. Anyone else is refused, and so is a note that doesn't exist, with the same reason.
void requireReceiver(Database& db, const Args& a, int noteAt, int userAt) {
    const bool receiver =
        db.exec(QStringLiteral("SELECT 1 FROM note n JOIN users u ON u.contactsys = n.contactsys "
                               "WHERE n.notesys = ? AND u.usersys = ?"),
                {a.value(noteAt), a.value(userAt)})
            .next();
    if (!receiver)
        throw Refusal(QStringLiteral("user %1 is not the receiver of note %2")
                          .arg(a.integer(userAt))
                          .arg(a.integer(noteAt)));
}

// tl_SetNoteRead <user>, <note>
Answer setNoteRead(Database& db, const Args& a) {
    db.write([&] {
        requireReceiver(db, a, 1, 0);
        db.exec(QStringLiteral("UPDATE note SET dateread = ? WHERE notesys = ? AND dateread IS "
                               "NULL"),
                {Board::now(), a.value(1)});
    });
    return std::nullopt;
}

// tl_DeleteNote <note>, <user>
Answer deleteNote(Database& db, const Args& a) {
    db.write([&] {
        requireReceiver(db, a, 0, 1);
        db.exec(QStringLiteral("UPDATE note SET deleted = 1 WHERE notesys = ?"), {a.value(0)});
    });
    return std::nullopt;
}

Answer addNote(Database& db, const Args& a) {
    db.write([&] {
        const qint64 key = db.nextKey(QStringLiteral("note"), QStringLiteral("notesys"));
        db.exec(QStringLiteral("INSERT INTO note (notesys, contactsys, enteredbysys, notetext, "
                               "private, dateentered) VALUES (?, ?, (SELECT contactsys FROM users "
                               "WHERE usersys = ?), ?, ?, ?)"),
                {key, a.value(0), a.value(2), a.value(1), a.integer(3) == 0 ? 0 : 1, Board::now()});
    });
    return std::nullopt;
}

} // namespace

void registerNoteProcedures() {
    auto& c = Catalogue::instance();
    using R = Role;
    c.add(QStringLiteral("tl_GetContactNotesUnread"), {{S::Int}}, unreadCount,
          {false, {R::SelfContact}});
    c.add(QStringLiteral("tl_GetContactNotes"), {{S::Int, S::Null, S::Null, S::IntOrNull}},
          contactNotes, {false, {R::SelfContact, R::Any, R::Any, R::SelfUser}});
    c.add(QStringLiteral("tl_SetNoteRead"), {{S::Int, S::Int}}, setNoteRead,
          {false, {R::SelfUser}});
    c.add(QStringLiteral("tl_DeleteNote"), {{S::Int, S::Int}}, deleteNote,
          {false, {R::Any, R::SelfUser}});
    c.add(QStringLiteral("tl_AddContactNote"), {{S::Int, S::Text, S::Int, S::Int}}, addNote,
          {false, {R::Colleague, R::Any, R::SelfUser}});
}
