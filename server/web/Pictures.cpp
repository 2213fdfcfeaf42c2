#include "Pictures.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>

namespace Pictures {

QByteArray Png(const QString& name) {
    static const QRegularExpression allowed(QStringLiteral("^[A-Za-z0-9_-]{1,40}$"));
    if (!allowed.match(name).hasMatch())
        return {};
    const QByteArray digest = QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Md5);
    const QColor background =
        QColor::fromHsv(static_cast<unsigned char>(digest[0]) * 360 / 256, 90, 220);
    QImage image(96, 96, QImage::Format_ARGB32);
    image.fill(background);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(background.darker(170));
        painter.drawEllipse(QRectF(30, 14, 36, 36)); // head
        painter.drawEllipse(QRectF(14, 56, 68, 60)); // shoulders
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

} // namespace Pictures
