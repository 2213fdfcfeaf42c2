#pragma once

#include <QString>

// One note left for the signed-in person. Every field is text as the server sent it, trimmed.
class TLNotes {
public:
    QString Key() const { return NoteSys; }

    QString NoteSys;
    QString DateAdded;
    QString LeftByName;
    QString LeftBySys;
    QString MessageText;
    QString DateRead; // empty while unread
};
