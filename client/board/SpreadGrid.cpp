#include "board/SpreadGrid.h"

#include "base/ColorNumber.h"
#include "base/Twips.h"
#include "board/SpreadCellDelegate.h"
#include "board/SpreadModel.h"
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTimer>
#include <QToolTip>

SpreadGrid::SpreadGrid(QWidget* parent)
    : QTableView(parent), m_model(new SpreadModel(this)), m_cells(new SpreadCellDelegate(this)) {
    setModel(m_model);
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

SpreadGrid::Batch::Batch(SpreadGrid& grid) : m_grid(grid) {
    if (m_grid.m_batches++ == 0)
        m_grid.m_model->BeginFill();
}

SpreadGrid::Batch::~Batch() {
    if (--m_grid.m_batches == 0)
        m_grid.endBatch();
}

void SpreadGrid::endBatch() {
    m_model->EndFill();
    for (int row : m_hiddenLater)
        if (row <= m_model->ToldRows())
            setRowHidden(row - 1, true);
    m_hiddenLater.clear();
}

int SpreadGrid::MaxRows() const {
    return m_model->Rows();
}

int SpreadGrid::MaxCols() const {
    return m_model->Cols();
}

void SpreadGrid::SetMaxRows(int rows) {
    rows = std::max(rows, 0);
    m_model->SetRows(rows);
    m_rowData.resize(static_cast<size_t>(rows) + 1, 0);
    std::erase_if(m_hiddenLater, [rows](int row) { return row > rows; });
}

void SpreadGrid::SetMaxCols(int cols) {
    m_model->SetCols(cols);
}

const SpreadCell* SpreadGrid::existingCell(int row, int col) const {
    return m_model->MadeCell(row - 1, col - 1);
}

// Calls apply(cell) for each cell that Row and Col address: one cell, a whole column (Row -1),
// a whole row (Col -1) or the whole sheet, making the cells that weren't. Header cells aren't
// included.
template <class F> void SpreadGrid::forEachAddressed(F&& apply) {
    const int firstRow = Row == -1 ? 1 : Row;
    const int lastRow = Row == -1 ? MaxRows() : Row;
    const int firstCol = Col == -1 ? 1 : Col;
    const int lastCol = Col == -1 ? MaxCols() : Col;
    for (int r = firstRow; r <= lastRow; ++r)
        for (int c = firstCol; c <= lastCol; ++c)
            if (SpreadCell* cell = m_model->Cell(r - 1, c - 1)) {
                apply(*cell);
                m_model->CellChanged(r - 1, c - 1);
            }
}

QString SpreadGrid::Text() const {
    if (Row == 0 && Col >= 1 && Col <= MaxCols())
        return m_model->HeaderText(Col - 1);
    const SpreadCell* cell = existingCell(Row, Col);
    return cell ? cell->text : QString();
}

void SpreadGrid::SetText(const QString& text) {
    if (Row == 0) {
        m_model->SetHeaderText(Col - 1, text);
        return;
    }
    if (Col == 0) {
        m_model->SetRowHeaderText(Row - 1, text);
        return;
    }
    forEachAddressed([&](SpreadCell& cell) { cell.text = text; });
}

int SpreadGrid::Value() const {
    const SpreadCell* cell = existingCell(Row, Col);
    return cell && cell->check == Qt::Checked ? 1 : 0;
}

void SpreadGrid::SetValue(int value) {
    forEachAddressed([&](SpreadCell& cell) {
        cell.check = static_cast<std::int8_t>(value == 1 ? Qt::Checked : Qt::Unchecked);
    });
}

void SpreadGrid::SetBackColor(std::int32_t colorNumber) {
    const QRgb color = ColorFromNumber(colorNumber).rgb();
    forEachAddressed([&](SpreadCell& cell) {
        cell.back = color;
        cell.hasBack = true;
    });
}

void SpreadGrid::SetForeColor(std::int32_t colorNumber) {
    const QRgb color = ColorFromNumber(colorNumber).rgb();
    forEachAddressed([&](SpreadCell& cell) {
        cell.fore = color;
        cell.hasFore = true;
    });
}

template <class F> void SpreadGrid::changeFont(F&& change) {
    forEachAddressed([&](SpreadCell& cell) {
        QFont font = m_model->FontAt(cell.font);
        change(font);
        cell.font = m_model->FontIndex(font);
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
    const SpreadCell* cell = existingCell(Row, Col);
    return cell && m_model->FontAt(cell->font).bold();
}

void SpreadGrid::SetOperationMode(int mode) {
    setSelectionBehavior(mode == 2 ? QAbstractItemView::SelectRows
                                   : QAbstractItemView::SelectItems);
}

// Cells are never edited in place on this sheet, so every cell is locked already; a lock
// changes nothing that shows.
void SpreadGrid::SetLock(bool) {}

void SpreadGrid::SetCellType(CellKind kind) {
    const bool checkBox = kind == CellKind::CheckBox;
    if (Row == -1 && Col >= 1)
        m_model->Defaults(Col - 1).checkBox = checkBox;
    forEachAddressed([&](SpreadCell& cell) {
        if (!checkBox)
            cell.check = -1;
        else if (cell.check < 0)
            cell.check = Qt::Unchecked;
    });
}

void SpreadGrid::SetTypeCheckCenter(bool center) {
    if (Row == -1 && Col >= 1)
        m_model->Defaults(Col - 1).checkCenter = center;
    forEachAddressed([&](SpreadCell& cell) { cell.checkCenter = center; });
}

void SpreadGrid::SetTypeHAlign(int align) {
    if (Row == -1 && Col >= 1)
        m_model->Defaults(Col - 1).align = align;
    forEachAddressed([&](SpreadCell& cell) { cell.align = static_cast<std::int8_t>(align); });
}

void SpreadGrid::SetColHidden(bool hidden) {
    if (Col == 0) {
        verticalHeader()->setVisible(!hidden);
        return;
    }
    const int first = Col == -1 ? 1 : Col;
    const int last = Col == -1 ? MaxCols() : std::min(Col, MaxCols());
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
    const int last = Row == -1 ? MaxRows() : std::min(Row, MaxRows());
    const int told = m_model->ToldRows();
    for (int r = first; r <= std::min(last, told); ++r)
        if (isRowHidden(r - 1) != hidden)
            setRowHidden(r - 1, hidden);
    // Rows the view doesn't have yet take the flag at the end of the batch.
    for (int r = std::max(first, told + 1); r <= last; ++r) {
        std::erase(m_hiddenLater, r);
        if (hidden)
            m_hiddenLater.push_back(r);
    }
}

void SpreadGrid::SetColWidth(int col, int twips) {
    if (col < 1 || col > MaxCols())
        return;
    // A negative request, from a window narrower than the fixed columns, leaves no room.
    setColumnWidth(col - 1, std::max(0, Twips::ToPixelsX(twips, this)));
}

int SpreadGrid::ColWidth(int col) const {
    if (col < 1 || col > MaxCols())
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
    const int last = std::min(std::max(Row2, Row), MaxRows());
    if (first > last)
        return;
    m_model->DeleteRows(first - 1, last - 1);
    m_rowData.erase(m_rowData.begin() + first, m_rowData.begin() + last + 1);
    m_rowData.resize(m_rowData.size() + static_cast<size_t>(last - first + 1), 0);
}

void SpreadGrid::setCurrentCell(int row, int col) {
    setCurrentIndex(m_model->index(row, col));
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
    return QTableView::viewportEvent(event);
}

void SpreadGrid::mouseDoubleClickEvent(QMouseEvent* event) {
    QTableView::mouseDoubleClickEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    const QPoint at = cellAt(viewport()->mapTo(this, event->position().toPoint()));
    emit DblClick(at.x(), at.y());
}

void SpreadGrid::keyReleaseEvent(QKeyEvent* event) {
    QTableView::keyReleaseEvent(event);
    // The key codes of the program: 38 up, 40 down, the others as Qt names them.
    const int code = event->key() == Qt::Key_Up     ? 38
                     : event->key() == Qt::Key_Down ? 40
                                                    : event->key();
    emit KeyUp(code);
}

void SpreadGrid::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::RightButton) {
        QTableView::mousePressEvent(event);
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
    QTableView::mouseMoveEvent(event);
    const QPoint pos = viewport()->mapTo(this, event->position().toPoint());
    emit SpreadMouseMove(event->buttons().toInt(), event->modifiers().toInt(), pos.x(), pos.y());
}
