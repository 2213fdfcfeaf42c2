#pragma once

#include <QStyledItemDelegate>

// Paints the cells of a SpreadGrid: check boxes centred where the cell asks for it, and the
// horizontal and vertical grid lines each on its own switch.
class SpreadCellDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    // Item data role that asks for a centred check box.
    static constexpr int kCheckCenterRole = Qt::UserRole + 1;

    using QStyledItemDelegate::QStyledItemDelegate;

    bool showHoriz = true;
    bool showVert = true;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};
