#pragma once

#include <QLabel>
#include <QMouseEvent>

// A label that acts on a left click, shown with a hand pointer.
class ClickLabel : public QLabel {
    Q_OBJECT
public:
    explicit ClickLabel(const QString& text, QWidget* parent = nullptr) : QLabel(text, parent) {
        setCursor(Qt::PointingHandCursor);
    }

signals:
    void Click();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
            emit Click();
        QLabel::mouseReleaseEvent(event);
    }
};
