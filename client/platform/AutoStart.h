#pragma once

#include <QString>

// Running the program when the user's session starts. On Windows the machine-wide value
// "Tavlo" under Software\Microsoft\Windows\CurrentVersion\Run, holding the program's folder,
// "\", the executable's name and ".exe"; writing it needs the right to change the machine's
// keys. On Linux the desktop entry $XDG_CONFIG_HOME/autostart/tavlo.desktop.
namespace AutoStart {

// What the entry runs: the program's own executable.
QString Command();

// Where the entry lives (a file, or the value's full key), for messages and tests.
QString EntryLocation();

bool IsPresent();

// Writes or replaces the entry. False on failure; nothing is shown to the user.
bool Add();

// Removes the entry. False when there was none or it couldn't go; nothing is shown either way.
bool Remove();

} // namespace AutoStart
