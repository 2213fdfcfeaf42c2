#include "board/ToolbarIcons.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>

namespace ToolbarIcons {
namespace {

QIcon standard(QStyle::StandardPixmap pixmap) {
    return QApplication::style()->standardIcon(pixmap);
}

// The notes picture with a yellow mark in its corner: notes are waiting.
QIcon notesWaiting() {
    QPixmap picture = standard(QStyle::SP_FileDialogDetailedView).pixmap(32, 32);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::black, 1));
    painter.setBrush(QColor(0xFF, 0xD7, 0x00));
    painter.drawEllipse(QRectF(17, 1, 14, 14));
    return QIcon(picture);
}

} // namespace

QIcon Icon(int imageIndex) {
    switch (imageIndex) {
    case 1:
        return standard(QStyle::SP_DialogApplyButton);
    case 2:
        return standard(QStyle::SP_BrowserReload);
    case 3:
        return standard(QStyle::SP_FileDialogContentsView);
    case 4:
        return standard(QStyle::SP_FileDialogDetailedView);
    case 5:
        return standard(QStyle::SP_ComputerIcon);
    case 6:
        return standard(QStyle::SP_DialogHelpButton);
    case 7:
        return standard(QStyle::SP_DialogResetButton);
    case 9:
        return notesWaiting();
    case 10:
        return standard(QStyle::SP_DialogCloseButton);
    default:
        return {};
    }
}

} // namespace ToolbarIcons
