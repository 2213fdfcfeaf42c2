#include "board/SpreadGrid.h"

#include "base/ColorNumber.h"
#include "base/Twips.h"
#include "board/SpreadCellDelegate.h"
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTimer>
#include <QToolTip>

namespace {

Qt::Alignment alignmentOf(int align) {
    switch (align) {
    case SpreadGrid::kAlignRight:
        return Qt::AlignRight | Qt::AlignVCenter;
    case SpreadGrid::kAlignCenter:
        return Qt::AlignCenter;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

} // namespace

SpreadGrid::SpreadGrid(QWidget* parent)
    : QTableWidget(parent), m_cells(new SpreadCellDelegate(this)) {
    setItemDelegate(m_cells);
    setShowGrid(false);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setMouseTracking(true);
    setWordWrap(false);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    horizontalHeader()->setHighlightSections(false);
    m_rowData.assign(1, 0);
}

void SpreadGrid::SetMaxRows(int rows) {
    rows = std::max(rows, 0);
    setRowCount(rows);
    m_rowData.resize(static_cast<size_t>(rows) + 1, 0);
}

void SpreadGrid::SetMaxCols(int cols) {
    cols = std::max(cols, 0);
    setColumnCount(cols);
    if (m_columns.size() < static_cast<size_t>(cols) + 1)
        m_columns.resize(static_cast<size_t>(cols) + 1);
}

SpreadGrid::ColumnDefaults& SpreadGrid::defaults(int col) {
    if (m_columns.size() <= static_cast<size_t>(col))
        m_columns.resize(static_cast<size_t>(col) + 1);
    return m_columns[static_cast<size_t>(col)];
}

void SpreadGrid::applyDefaults(QTableWidgetItem* item, int col) const {
    if (static_cast<size_t>(col) >= m_columns.size())
        return;
    const ColumnDefaults& d = m_columns[static_cast<size_t>(col)];
    if (d.kind == CellKind::CheckBox && !item->data(Qt::CheckStateRole).isValid())
        item->setCheckState(Qt::Unchecked);
    if (d.checkCenter)
        item->setData(SpreadCellDelegate::kCheckCenterRole, true);
    if (d.align >= 0)
        item->setTextAlignment(alignmentOf(d.align));
}

QTableWidgetItem* SpreadGrid::cell(int row, int col) {
    if (row < 1 || col < 1 || row > rowCount() || col > columnCount())
        return nullptr;
    QTableWidgetItem* existing = item(row - 1, col - 1);
    if (existing)
        return existing;
    auto* created = newCell(col);
    setItem(row - 1, col - 1, created); // the table owns it
    return created;
}

QTableWidgetItem* SpreadGrid::newCell(int col) const {
    auto* created = new QTableWidgetItem(); // owned by the caller until it goes into the table
    created->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    applyDefaults(created, col);
    return created;
}

const QTableWidgetItem* SpreadGrid::existingCell(int row, int col) const {
    if (row < 1 || col < 1 || row > rowCount() || col > columnCount())
        return nullptr;
    return item(row - 1, col - 1);
}

// Calls apply(item, row, col) for each cell that Row and Col address: one cell, a whole
// column (Row -1), a whole row (Col -1) or the whole sheet. Header cells aren't included.
template <class F> void SpreadGrid::forEachAddressed(F&& apply) {
    // One new cell is written before it goes into the table: one insertion, no change signal.
    if (Row >= 1 && Col >= 1 && Row <= rowCount() && Col <= columnCount() &&
        !item(Row - 1, Col - 1)) {
        auto* created = newCell(Col);
        apply(created, Row, Col);
        setItem(Row - 1, Col - 1, created); // the table owns it
        return;
    }
    const int firstRow = Row == -1 ? 1 : Row;
    const int lastRow = Row == -1 ? rowCount() : Row;
    const int firstCol = Col == -1 ? 1 : Col;
    const int lastCol = Col == -1 ? columnCount() : Col;
    for (int r = firstRow; r <= lastRow; ++r)
        for (int c = firstCol; c <= lastCol; ++c)
            if (QTableWidgetItem* it = cell(r, c))
                apply(it, r, c);
}

QString SpreadGrid::Text() const {
    if (Row == 0 && Col >= 1 && Col <= columnCount()) {
        const QTableWidgetItem* header = horizontalHeaderItem(Col - 1);
        return header ? header->text() : QString();
    }
    const QTableWidgetItem* it = existingCell(Row, Col);
    return it ? it->text() : QString();
}

void SpreadGrid::SetText(const QString& text) {
    if (Row == 0) {
        if (Col >= 1 && Col <= columnCount())
            setHorizontalHeaderItem(Col - 1, new QTableWidgetItem(text));
        return;
    }
    if (Col == 0) {
        if (Row >= 1 && Row <= rowCount())
            setVerticalHeaderItem(Row - 1, new QTableWidgetItem(text));
        return;
    }
    forEachAddressed([&](QTableWidgetItem* it, int, int) { it->setText(text); });
}

int SpreadGrid::Value() const {
    const QTableWidgetItem* it = existingCell(Row, Col);
    if (!it)
        return 0;
    return it->data(Qt::CheckStateRole).toInt() == Qt::Checked ? 1 : 0;
}

void SpreadGrid::SetValue(int value) {
    forEachAddressed([&](QTableWidgetItem* it, int, int) {
        it->setCheckState(value == 1 ? Qt::Checked : Qt::Unchecked);
    });
}

void SpreadGrid::SetBackColor(std::int32_t colorNumber) {
    const QColor color = ColorFromNumber(colorNumber);
    forEachAddressed([&](QTableWidgetItem* it, int, int) { it->setBackground(color); });
}

void SpreadGrid::SetForeColor(std::int32_t colorNumber) {
    const QColor color = ColorFromNumber(colorNumber);
    forEachAddressed([&](QTableWidgetItem* it, int, int) { it->setForeground(color); });
}

template <class F> void SpreadGrid::changeFont(F&& change) {
    forEachAddressed([&](QTableWidgetItem* it, int, int) {
        QFont font = it->font();
        change(font);
        it->setFont(font);
    });
}

void SpreadGrid::SetFontName(const QString& name) {
    changeFont([&](QFont& font) { font.setFamily(name); });
}

void SpreadGrid::SetFontSize(int points) {
    changeFont([&](QFont& font) { font.setPointSize(points); });
}

void SpreadGrid::SetFontBold(bool bold) {
    changeFont([&](QFont& font) { font.setBold(bold); });
}

void SpreadGrid::SetFontUnderline(bool underline) {
    changeFont([&](QFont& font) { font.setUnderline(underline); });
}

bool SpreadGrid::FontBold() const {
    const QTableWidgetItem* it = existingCell(Row, Col);
    return it && it->font().bold();
}

bool SpreadGrid::FontUnderline() const {
    const QTableWidgetItem* it = existingCell(Row, Col);
    return it && it->font().underline();
}

void SpreadGrid::SetOperationMode(int mode) {
    setSelectionBehavior(mode == 2 ? QAbstractItemView::SelectRows
                                   : QAbstractItemView::SelectItems);
}

// Cells are never edited in place on this sheet, so every cell is locked already; a lock
// changes nothing that shows.
void SpreadGrid::SetLock(bool) {}

void SpreadGrid::SetCellType(CellKind kind) {
    if (Row == -1 && Col >= 1)
        defaults(Col).kind = kind;
    forEachAddressed([&](QTableWidgetItem* it, int, int) {
        if (kind == CellKind::CheckBox) {
            if (!it->data(Qt::CheckStateRole).isValid())
                it->setCheckState(Qt::Unchecked);
        } else {
            it->setData(Qt::CheckStateRole, QVariant());
        }
    });
}

void SpreadGrid::SetTypeCheckCenter(bool center) {
    if (Row == -1 && Col >= 1)
        defaults(Col).checkCenter = center;
    forEachAddressed([&](QTableWidgetItem* it, int, int) {
        it->setData(SpreadCellDelegate::kCheckCenterRole, center);
    });
}

void SpreadGrid::SetTypeHAlign(int align) {
    if (Row == -1 && Col >= 1)
        defaults(Col).align = align;
    forEachAddressed(
        [&](QTableWidgetItem* it, int, int) { it->setTextAlignment(alignmentOf(align)); });
}

void SpreadGrid::SetColHidden(bool hidden) {
    if (Col == 0) {
        verticalHeader()->setVisible(!hidden);
        return;
    }
    const int first = Col == -1 ? 1 : Col;
    const int last = Col == -1 ? columnCount() : std::min(Col, columnCount());
    for (int c = first; c <= last; ++c)
        if (isColumnHidden(c - 1) != hidden)
            setColumnHidden(c - 1, hidden);
}

void SpreadGrid::SetRowHidden(bool hidden) {
    if (Row == 0) {
        horizontalHeader()->setVisible(!hidden);
        return;
    }
    const int first = Row == -1 ? 1 : Row;
    const int last = Row == -1 ? rowCount() : std::min(Row, rowCount());
    for (int r = first; r <= last; ++r)
        if (isRowHidden(r - 1) != hidden)
            setRowHidden(r - 1, hidden);
}

void SpreadGrid::SetColWidth(int col, int twips) {
    if (col < 1 || col > columnCount())
        return;
    // A negative request, from a window narrower than the fixed columns, leaves no room.
    setColumnWidth(col - 1, std::max(0, Twips::ToPixelsX(twips, this)));
}

int SpreadGrid::ColWidth(int col) const {
    if (col < 1 || col > columnCount())
        return 0;
    return Twips::FromPixelsX(columnWidth(col - 1), this);
}

void SpreadGrid::SetColsFrozen(int cols) {
    m_colsFrozen = std::max(cols, 0);
}

void SpreadGrid::SetGridShowHoriz(bool show) {
    m_showHoriz = show;
    m_cells->showHoriz = show;
    viewport()->update();
}

void SpreadGrid::SetGridShowVert(bool show) {
    m_showVert = show;
    m_cells->showVert = show;
    viewport()->update();
}

// The sheet is filled in one go on the one thread, so nothing paints in between anyway;
// holding updates only spares the view its bookkeeping. Painting comes back when control
// returns to the event loop, whatever the flag says, so a sheet is never left stale on screen.
void SpreadGrid::SetReDraw(bool redraw) {
    m_redraw = redraw;
    setUpdatesEnabled(redraw);
    if (!redraw)
        QTimer::singleShot(0, this, [this] { setUpdatesEnabled(true); });
}

void SpreadGrid::SetRowItemData(int row, std::int32_t value) {
    if (row >= 1 && static_cast<size_t>(row) < m_rowData.size())
        m_rowData[static_cast<size_t>(row)] = value;
}

std::int32_t SpreadGrid::GetRowItemData(int row) const {
    if (row >= 1 && static_cast<size_t>(row) < m_rowData.size())
        return m_rowData[static_cast<size_t>(row)];
    return 0;
}

QPoint SpreadGrid::cellAt(const QPoint& widgetPos) const {
    const QPoint vp = viewport()->mapFrom(this, widgetPos);
    const QHeaderView* top = horizontalHeader();
    const QHeaderView* left = verticalHeader();
    const bool overTop = top->isVisible() && top->geometry().contains(widgetPos);
    const bool overLeft = left->isVisible() && left->geometry().contains(widgetPos);
    int col = overLeft ? 0 : columnAt(vp.x());
    int row = overTop ? 0 : rowAt(vp.y());
    if (!overLeft)
        col = col < 0 ? -1 : col + 1;
    if (!overTop)
        row = row < 0 ? -1 : row + 1;
    return {col, row};
}

void SpreadGrid::GetCellFromScreenCoord(int& col, int& row, int x, int y) const {
    const QPoint at = cellAt(QPoint(x, y));
    col = at.x();
    row = at.y();
}

void SpreadGrid::DeleteRows() {
    const int first = std::max(Row, 1);
    const int last = std::min(std::max(Row2, Row), rowCount());
    for (int r = last; r >= first; --r) {
        removeRow(r - 1);
        insertRow(rowCount());
        m_rowData.erase(m_rowData.begin() + r);
        m_rowData.push_back(0);
    }
}

bool SpreadGrid::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        if (m_toolTipText.isEmpty())
            QToolTip::hideText();
        else
            QToolTip::showText(help->globalPos(), m_toolTipText, this);
        return true;
    }
    return QTableWidget::viewportEvent(event);
}

void SpreadGrid::mouseDoubleClickEvent(QMouseEvent* event) {
    QTableWidget::mouseDoubleClickEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    const QPoint at = cellAt(viewport()->mapTo(this, event->position().toPoint()));
    emit DblClick(at.x(), at.y());
}

void SpreadGrid::keyReleaseEvent(QKeyEvent* event) {
    QTableWidget::keyReleaseEvent(event);
    // The key codes of the program: 38 up, 40 down, the others as Qt names them.
    const int code = event->key() == Qt::Key_Up     ? 38
                     : event->key() == Qt::Key_Down ? 40
                                                    : event->key();
    emit KeyUp(code);
}

void SpreadGrid::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::RightButton) {
        QTableWidget::mousePressEvent(event);
        if (event->button() == Qt::LeftButton) {
            const QPoint at = cellAt(viewport()->mapTo(this, event->position().toPoint()));
            emit Click(at.x(), at.y());
        }
        return;
    }
    const QPoint at = cellAt(viewport()->mapTo(this, event->position().toPoint()));
    const QPoint global = event->globalPosition().toPoint();
    emit RightClick(1, at.x(), at.y(), global.x(), global.y());
}

void SpreadGrid::mouseMoveEvent(QMouseEvent* event) {
    QTableWidget::mouseMoveEvent(event);
    const QPoint pos = viewport()->mapTo(this, event->position().toPoint());
    emit SpreadMouseMove(event->buttons().toInt(), event->modifiers().toInt(), pos.x(), pos.y());
}
