#include "board/LegendCircle.h"

#include "base/ColorNumber.h"
#include <QPainter>

LegendCircle::LegendCircle(QWidget* parent) : QWidget(parent) {
    setFixedSize(sizeHint());
}

void LegendCircle::SetFillColor(std::int32_t colorNumber) {
    m_fill = ColorFromNumber(colorNumber);
    update();
}

void LegendCircle::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::black, 1));
    painter.setBrush(m_fill);
    painter.drawEllipse(QRectF(rect()).adjusted(1, 1, -1, -1));
}
