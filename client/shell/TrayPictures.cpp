#include "shell/TrayPictures.h"

#include <QPainter>
#include <QPainterPath>

namespace TrayPictures {
namespace {

enum class Look { SignedOut, Unavailable, Other, In };

struct Role {
    Look look;
    bool notes;
};

Role roleOf(int index) {
    switch (index) {
    case 2:
        return {Look::Unavailable, false};
    case 3:
        return {Look::Unavailable, true};
    case 4:
        return {Look::Other, false};
    case 5:
        return {Look::Other, true};
    case 6:
        return {Look::In, false};
    case 7:
        return {Look::In, true};
    case 10:
        return {Look::In, true};
    case 11:
        return {Look::Unavailable, true};
    case 12:
        return {Look::Other, true};
    default:
        return {Look::SignedOut, index == 8 || index == 9};
    }
}

QColor fillOf(Look look) {
    switch (look) {
    case Look::In:
        return QColor(0x2e, 0xa0, 0x43);
    case Look::Unavailable:
        return QColor(0xd1, 0x34, 0x38);
    case Look::Other:
        return QColor(0xf0, 0x8c, 0x00);
    case Look::SignedOut:
        return QColor(0x9a, 0x9a, 0x9a);
    }
    return Qt::gray;
}

// The sign inside the disc: a tick for In, a bar for Unavailable, an arrow leaving for the
// others, and a hollow ring for signed out.
void drawSign(QPainter& p, Look look, qreal s) {
    QPen pen(Qt::white, qMax<qreal>(1.5, s / 9.0), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(pen);
    p.setBrush(Qt::NoBrush);
    switch (look) {
    case Look::In: {
        QPainterPath tick;
        tick.moveTo(s * 0.28, s * 0.52);
        tick.lineTo(s * 0.44, s * 0.68);
        tick.lineTo(s * 0.72, s * 0.34);
        p.drawPath(tick);
        break;
    }
    case Look::Unavailable:
        p.drawLine(QPointF(s * 0.28, s * 0.5), QPointF(s * 0.72, s * 0.5));
        break;
    case Look::Other: {
        p.drawLine(QPointF(s * 0.28, s * 0.5), QPointF(s * 0.70, s * 0.5));
        p.drawLine(QPointF(s * 0.56, s * 0.36), QPointF(s * 0.70, s * 0.5));
        p.drawLine(QPointF(s * 0.56, s * 0.64), QPointF(s * 0.70, s * 0.5));
        break;
    }
    case Look::SignedOut:
        p.drawEllipse(QRectF(s * 0.34, s * 0.34, s * 0.32, s * 0.32));
        break;
    }
}

// A yellow note with a folded corner in the lower right quarter.
void drawNotesMark(QPainter& p, qreal s) {
    const QRectF note(s * 0.52, s * 0.50, s * 0.46, s * 0.48);
    const qreal fold = note.width() * 0.35;
    QPainterPath path;
    path.moveTo(note.topLeft());
    path.lineTo(note.right() - fold, note.top());
    path.lineTo(note.right(), note.top() + fold);
    path.lineTo(note.bottomRight());
    path.lineTo(note.bottomLeft());
    path.closeSubpath();
    p.setPen(QPen(QColor(0x5a, 0x4a, 0x00), qMax<qreal>(1.0, s / 22.0)));
    p.setBrush(QColor(0xff, 0xe0, 0x3a));
    p.drawPath(path);
    p.drawLine(QPointF(note.left() + note.width() * 0.2, note.center().y() + s * 0.04),
               QPointF(note.right() - note.width() * 0.2, note.center().y() + s * 0.04));
}

} // namespace

QPixmap Picture(int index, int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const Role role = roleOf(index);
    const qreal s = size;
    const qreal disc = role.notes ? s * 0.86 : s;
    p.setPen(QPen(fillOf(role.look).darker(150), qMax<qreal>(1.0, s / 16.0)));
    p.setBrush(fillOf(role.look));
    p.drawEllipse(QRectF(0.5, 0.5, disc - 1.0, disc - 1.0));
    p.save();
    p.scale(disc / s, disc / s);
    drawSign(p, role.look, s);
    p.restore();
    if (role.notes)
        drawNotesMark(p, s);
    return pixmap;
}

QIcon Icon(int index) {
    QIcon icon;
    for (int size : {16, 22, 32})
        icon.addPixmap(Picture(index, size));
    return icon;
}

} // namespace TrayPictures
