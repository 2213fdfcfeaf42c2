#include "board/SpreadCellDelegate.h"

#include <QApplication>
#include <QPainter>

void SpreadCellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
    const QVariant check = index.data(Qt::CheckStateRole);
    if (check.isValid() && index.data(kCheckCenterRole).toBool()) {
        QStyleOptionViewItem opt = option;
        initStyleOption(&opt, index);
        const QStyle* style = opt.widget ? opt.widget->style() : QApplication::style();
        // Background and selection without the check box, then the box in the middle.
        opt.features &= ~QStyleOptionViewItem::HasCheckIndicator;
        style->drawControl(QStyle::CE_ItemViewItem, &opt, painter, opt.widget);
        QStyleOptionViewItem box = opt;
        const int w = style->pixelMetric(QStyle::PM_IndicatorWidth, &opt, opt.widget);
        const int h = style->pixelMetric(QStyle::PM_IndicatorHeight, &opt, opt.widget);
        box.rect = QRect(0, 0, w, h);
        box.rect.moveCenter(option.rect.center());
        box.state &= ~(QStyle::State_On | QStyle::State_Off | QStyle::State_NoChange);
        box.state |= check.toInt() == Qt::Checked ? QStyle::State_On : QStyle::State_Off;
        style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &box, painter, opt.widget);
    } else {
        QStyledItemDelegate::paint(painter, option, index);
    }
    painter->save();
    painter->setPen(option.palette.color(QPalette::Mid));
    if (showHoriz)
        painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
    if (showVert)
        painter->drawLine(option.rect.topRight(), option.rect.bottomRight());
    painter->restore();
}
