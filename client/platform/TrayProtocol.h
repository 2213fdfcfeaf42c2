#pragma once

// How the desktop's tray reports clicks. Trays that host the icon as a window (Windows,
// XEmbed) report double clicks; the StatusNotifierItem protocol reports a single activation.
namespace TrayProtocol {

// Whether a left double click reaches the program; where it doesn't, the activation click
// stands in for it.
bool HasDoubleClick();

} // namespace TrayProtocol
