#pragma once

#include <QString>
#include <cstdint>

// What the tray icon shows for the signed-in user's state: the picture's index and the tip.
namespace TrayDisplay {

inline constexpr int kSignedOut = 1;
inline constexpr int kUnavailable = 2;
inline constexpr int kOther = 4;
inline constexpr int kIn = 6;
inline constexpr int kInWithNotes = 10;
inline constexpr int kUnavailableWithNotes = 11;
inline constexpr int kOtherWithNotes = 12;

// Signed out or a status outside 1..8 gives 1, whatever the notes; unread notes turn 2, 4 and
// 6 into 11, 12 and 10.
int PictureIndex(bool validUser, std::int32_t statusSys, std::int32_t notesUnread);

// "Tavlo - Not Logged In", or the full name, a carriage return and "Status set to " and the
// status.
QString TipText(bool validUser, const QString& fullName, const QString& statusText);

} // namespace TrayDisplay
