#pragma once

#include <QIcon>

// The board toolbar's pictures by image number: 1 my status, 2 refresh, 3 search, 4 notes,
// 5 settings, 6 help, 7 sign out, 9 notes waiting, 10 exit. Other numbers give no picture.
namespace ToolbarIcons {

QIcon Icon(int imageIndex);

} // namespace ToolbarIcons
