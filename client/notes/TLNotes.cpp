#include "notes/TLNotes.h"

#include "directory/OptionalColumns.h"

void TLNotes::FillObjectWithRecordSet(const wire::Recordset* rs) {
    OptionalColumns c(rs);
    c.Text(QStringLiteral("NoteSys"), QStringLiteral(",NoteSys"), NoteSys);
    c.Text(QStringLiteral("DateEntered"), QStringLiteral(",DateEntered"), DateAdded);
    c.Text(QStringLiteral("EnteredBySys"), QStringLiteral(",EnteredBySys"), LeftBySys);
    c.Text(QStringLiteral("EnteredByName"), QStringLiteral(",EnteredByName"), LeftByName);
    c.Text(QStringLiteral("NoteText"), QStringLiteral(",NoteText"), MessageText);
    c.Text(QStringLiteral("DateRead"), QStringLiteral(",DateRead"), DateRead);
}
