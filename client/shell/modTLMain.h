#pragma once

#include "base/KeyedCollection.h"
#include <cstdint>

class SingleInstance;
class TLGroup;
class TLNotes;
class TLStatus;
class TLStatusRow;

// The program's entry and the lists shared by all its windows.
namespace modTLMain {

// Runs the start-up. False when the program must end at once (another instance runs);
// otherwise the program lives on events afterwards.
bool Main();

// Start-up step 1: becomes the one instance of this user, or tells the user that another one
// runs, asks it to show its "Tavlo" window, and answers False.
bool ClaimSingleInstance(SingleInstance& instance);

// True when the published version (latest) is newer than the running one. A lower major never
// counts as newer, whatever the minor and revision say.
bool IsNewerVersion(std::int16_t latestMajor, std::int16_t latestMinor, std::int16_t latestRevision,
                    std::int16_t runningMajor, std::int16_t runningMinor,
                    std::int16_t runningRevision);

// Start-up step 6 on TLMain's latest-version fields, read afresh for each comparison.
bool LatestVersionIsNewer();

KeyedCollection<TLStatusRow>& colContacts();
KeyedCollection<TLNotes>& colNotes();
KeyedCollection<TLStatus>& colStatuses();
KeyedCollection<TLGroup>& colGroups();

// The tray menu's status entries, rebuilt from the available statuses, then the menu's state,
// the tray's picture and tip, and the controls guarded by rights.
void BuildMenuItems();
// Takes away every status entry of the tray menu but the first.
void ClearMenuItems();
// Enables what the signed-in user may use, by sign-in state, rights and chat.
void ManageApplicationSecurity();

// Connects to the chat server as the signed-in user (registering the account first when
// blnNewAccount is set), unless chat is off for the user or the organisation. The program
// counts itself online from the moment of the call.
void ChatConnect(bool blnNewAccount);
// End the chat connection: tell the server the user is offline, drop the connection and switch
// the chat entries off. The orderly end, and the reaction to an error or to chat being off.
void ChatDisConnect();
void ChatDisable();

// Appends a stamped line to the update log; the message becomes the line written.
void WriteLog(QString& strMessage);

// Ends the program at once: nothing more of the start-up runs and the event loop stops.
void EndProgram();
bool ProgramEnding();

void ClearContacts();
void ClearStatuses();
void ClearGroups();

} // namespace modTLMain
