#include "shell/TrayDisplay.h"

namespace TrayDisplay {

int PictureIndex(bool validUser, std::int32_t statusSys, std::int32_t notesUnread) {
    if (!validUser)
        return kSignedOut;
    int index = kSignedOut;
    if (statusSys == 6)
        index = kUnavailable;
    else if (statusSys == 3)
        index = kIn;
    else if (statusSys >= 1 && statusSys <= 8)
        index = kOther;
    if (notesUnread != 0) {
        if (index == kUnavailable)
            index = kUnavailableWithNotes;
        else if (index == kOther)
            index = kOtherWithNotes;
        else if (index == kIn)
            index = kInWithNotes;
    }
    return index;
}

QString TipText(bool validUser, const QString& fullName, const QString& statusText) {
    if (!validUser)
        return QStringLiteral("Tavlo - Not Logged In");
    return fullName + QLatin1Char('\r') + QStringLiteral("Status set to ") + statusText;
}

} // namespace TrayDisplay
