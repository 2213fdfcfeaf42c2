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

// The notes of a person, newest first; dates as the user reads them.
Answer contactNotes(Database& db, const Args& a) {
    QSqlQuery q =
        db.exec(QStringLiteral("SELECT n.notesys AS \"NoteSys\", n.dateentered AS \"DateEntered\", "
                               "n.enteredbysys AS \"EnteredBySys\", "
                               "a.firstname || ' ' || a.lastname AS \"EnteredByName\", "
                               "n.notetext AS \"NoteText\", n.dateread AS \"DateRead\" FROM note n "
                               "LEFT JOIN contact a ON a.contactsys = n.enteredbysys "
                               "WHERE n.contactsys = ? AND n.deleted = 0 "
                               "ORDER BY n.dateentered DESC, n.notesys DESC"),
                {a.value(0)});
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

// Only the person the note was left for can mark it read or delete it.
const QString kOwnNote =
    QStringLiteral("notesys = ? AND contactsys = (SELECT contactsys FROM users WHERE usersys = ?)");

Answer setNoteRead(Database& db, const Args& a) {
    db.write([&] {
        db.exec(QStringLiteral("UPDATE note SET dateread = ? WHERE dateread IS NULL AND ") +
                    kOwnNote,
                {Board::now(), a.value(1), a.value(0)});
    });
    return std::nullopt;
}

Answer deleteNote(Database& db, const Args& a) {
    db.write([&] {
        db.exec(QStringLiteral("UPDATE note SET deleted = 1 WHERE ") + kOwnNote,
                {a.value(0), a.value(1)});
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
    c.add(QStringLiteral("tl_GetContactNotesUnread"), {{S::Int}}, unreadCount);
    c.add(QStringLiteral("tl_GetContactNotes"), {{S::Int, S::Null, S::Null, S::IntOrNull}},
          contactNotes);
    c.add(QStringLiteral("tl_SetNoteRead"), {{S::Int, S::Int}}, setNoteRead);
    c.add(QStringLiteral("tl_DeleteNote"), {{S::Int, S::Int}}, deleteNote);
    c.add(QStringLiteral("tl_AddContactNote"), {{S::Int, S::Text, S::Int, S::Int}}, addNote);
}
