#include "Desktop.h"

#include <QDesktopServices>
#include <QFileInfo>

namespace {

Desktop::Opener& replacement() {
    static Desktop::Opener opener;
    return opener;
}

} // namespace

namespace Desktop {

bool OpenUrl(const QUrl& url) {
    if (!url.isValid() || url.isEmpty())
        return false;
    if (replacement())
        return replacement()(url);
    return QDesktopServices::openUrl(url);
}

void SetOpener(Opener opener) {
    replacement() = std::move(opener);
}

} // namespace Desktop
