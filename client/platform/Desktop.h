#pragma once

#include <QString>
#include <QUrl>
#include <functional>

// Hands a URL to the desktop, which opens it with the user's program for it.
// Tests replace the opener to see what would have been opened.
namespace Desktop {

using Opener = std::function<bool(const QUrl&)>;

bool OpenUrl(const QUrl& url);

// An empty opener restores the desktop's own.
void SetOpener(Opener opener);

} // namespace Desktop
