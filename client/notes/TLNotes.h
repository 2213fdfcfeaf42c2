#pragma once

#include <QString>

namespace wire {
class Recordset;
}

// One note left for the signed-in person. Every field is text as the server sent it, trimmed.
class TLNotes {
public:
    QString Key() const { return NoteSys; }
    // The six columns of a notes answer; a missing or Null column leaves its field as it was.
    void FillObjectWithRecordSet(const wire::Recordset* rs);

    QString NoteSys;
    QString DateAdded;
    QString LeftByName;
    QString LeftBySys;
    QString MessageText;
    QString DateRead; // empty while unread
};
