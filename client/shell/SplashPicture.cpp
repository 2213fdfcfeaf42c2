#include "shell/SplashPicture.h"

#include <QLinearGradient>
#include <QPainter>

QPixmap SplashPicture(QSize size) {
    QPixmap picture(size);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, size.height());
    sky.setColorAt(0, QColor(0x1f, 0x4e, 0x79));
    sky.setColorAt(1, QColor(0x0b, 0x25, 0x3f));
    painter.fillRect(picture.rect(), sky);

    // Three board rows: in (green), unavailable (amber), out (red).
    const QColor rows[] = {QColor(0x4c, 0xaf, 0x50), QColor(0xff, 0xb3, 0x00),
                           QColor(0xe5, 0x39, 0x35)};
    const int rowHeight = size.height() / 8;
    const int left = size.width() / 12;
    for (int i = 0; i < 3; ++i) {
        const QRect row(left, size.height() / 3 + i * (rowHeight + rowHeight / 3), size.width() / 3,
                        rowHeight);
        painter.setBrush(QColor(255, 255, 255, 40));
        painter.setPen(Qt::NoPen);
        painter.drawRoundedRect(row, 4, 4);
        painter.setBrush(rows[i]);
        painter.drawEllipse(QRect(row.left() + 4, row.top() + 4, rowHeight - 8, rowHeight - 8));
    }

    QFont font = painter.font();
    font.setPixelSize(size.height() / 4);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRect(size.width() / 2, 0, size.width() / 2, size.height()),
                     Qt::AlignVCenter | Qt::AlignLeft, QStringLiteral("Tavlo"));
    return picture;
}
