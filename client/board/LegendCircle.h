#pragma once

#include <QColor>
#include <QWidget>

// A filled circle of the board's legend: the colour of a status.
class LegendCircle : public QWidget {
    Q_OBJECT
public:
    explicit LegendCircle(QWidget* parent = nullptr);

    QColor FillColor() const { return m_fill; }
    // Takes the program's colour number: blue, green, red from the high byte down.
    void SetFillColor(std::int32_t colorNumber);

    QSize sizeHint() const override { return {16, 16}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_fill = Qt::white;
};
