#pragma once

#include <QIcon>
#include <QPixmap>

// The tray's pictures by their 1-based index (1..12), drawn at 16, 22 and 32 pixels:
// 1 signed out or an unknown status, 2 Unavailable, 4 any other status, 6 In, and 11, 12 and
// 10 the same three with the mark of unread notes. 3, 5, 7, 8 and 9 are spare looks.
namespace TrayPictures {

inline constexpr int kCount = 12;

QIcon Icon(int index);
QPixmap Picture(int index, int size);

} // namespace TrayPictures
