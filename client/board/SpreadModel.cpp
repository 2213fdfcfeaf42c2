#include "board/SpreadModel.h"

#include "board/SpreadCellDelegate.h"
#include <QBrush>
#include <QColor>
#include <algorithm>

namespace {

Qt::Alignment alignmentOf(int align) {
    switch (align) {
    case 1:
        return Qt::AlignRight | Qt::AlignVCenter;
    case 2:
        return Qt::AlignCenter;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

} // namespace

int SpreadModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_told;
}

int SpreadModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_cols;
}

QVariant SpreadModel::data(const QModelIndex& index, int role) const {
    const SpreadCell* cell = index.isValid() ? MadeCell(index.row(), index.column()) : nullptr;
    if (!cell)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return cell->text;
    case Qt::BackgroundRole:
        return cell->hasBack ? QVariant(QBrush(QColor::fromRgb(cell->back))) : QVariant();
    case Qt::ForegroundRole:
        return cell->hasFore ? QVariant(QBrush(QColor::fromRgb(cell->fore))) : QVariant();
    case Qt::FontRole:
        return cell->font ? QVariant(FontAt(cell->font)) : QVariant();
    case Qt::CheckStateRole:
        return cell->check >= 0 ? QVariant(int(cell->check)) : QVariant();
    case Qt::TextAlignmentRole:
        return cell->align >= 0 ? QVariant(int(alignmentOf(cell->align))) : QVariant();
    case SpreadCellDelegate::kCheckCenterRole:
        return cell->checkCenter ? QVariant(true) : QVariant();
    default:
        return {};
    }
}

QVariant SpreadModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole || section < 0)
        return QAbstractTableModel::headerData(section, orientation, role);
    const auto& texts = orientation == Qt::Horizontal ? m_headers : m_rowHeaders;
    const auto i = static_cast<std::size_t>(section);
    if (i < texts.size() && !texts[i].isNull())
        return texts[i];
    return section + 1;
}

Qt::ItemFlags SpreadModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

void SpreadModel::SetRows(int rows) {
    rows = std::max(rows, 0);
    const bool removing = rows < m_told;
    if (removing)
        beginRemoveRows(QModelIndex(), rows, m_told - 1);
    // Cells of rows taken away are cleared: a row that comes back is empty.
    const int kept = std::min(rows, m_rows);
    m_cells.resize(static_cast<std::size_t>(kept) * static_cast<std::size_t>(m_cols));
    m_cells.resize(static_cast<std::size_t>(rows) * static_cast<std::size_t>(m_cols));
    if (m_rowHeaders.size() > static_cast<std::size_t>(kept))
        m_rowHeaders.resize(static_cast<std::size_t>(kept));
    if (removing) {
        m_rows = m_told = rows;
        endRemoveRows();
    } else if (rows > m_rows && !m_filling) {
        beginInsertRows(QModelIndex(), m_told, rows - 1);
        m_rows = m_told = rows;
        endInsertRows();
    } else {
        m_rows = rows;
    }
}

void SpreadModel::SetCols(int cols) {
    cols = std::max(cols, 0);
    if (cols == m_cols)
        return;
    const bool adding = cols > m_cols;
    if (adding)
        beginInsertColumns(QModelIndex(), m_cols, cols - 1);
    else
        beginRemoveColumns(QModelIndex(), cols, m_cols - 1);
    std::vector<SpreadCell> cells(static_cast<std::size_t>(m_rows) *
                                  static_cast<std::size_t>(cols));
    const int keep = std::min(cols, m_cols);
    for (int r = 0; r < m_rows; ++r)
        for (int c = 0; c < keep; ++c)
            cells[static_cast<std::size_t>(r) * static_cast<std::size_t>(cols) +
                  static_cast<std::size_t>(c)] = std::move(m_cells[at(r, c)]);
    m_cells = std::move(cells);
    m_cols = cols;
    if (m_headers.size() > static_cast<std::size_t>(cols))
        m_headers.resize(static_cast<std::size_t>(cols));
    if (adding)
        endInsertColumns();
    else
        endRemoveColumns();
}

void SpreadModel::makeCell(SpreadCell& cell, int col) const {
    cell.made = true;
    if (static_cast<std::size_t>(col) >= m_defaults.size())
        return;
    const ColumnDefaults& d = m_defaults[static_cast<std::size_t>(col)];
    if (d.checkBox && cell.check < 0)
        cell.check = Qt::Unchecked;
    if (d.checkCenter)
        cell.checkCenter = true;
    if (d.align >= 0)
        cell.align = static_cast<std::int8_t>(d.align);
}

SpreadCell* SpreadModel::Cell(int row, int col) {
    if (row < 0 || col < 0 || row >= m_rows || col >= m_cols)
        return nullptr;
    SpreadCell& cell = m_cells[at(row, col)];
    if (!cell.made)
        makeCell(cell, col);
    return &cell;
}

const SpreadCell* SpreadModel::MadeCell(int row, int col) const {
    if (row < 0 || col < 0 || row >= m_rows || col >= m_cols)
        return nullptr;
    const SpreadCell& cell = m_cells[at(row, col)];
    return cell.made ? &cell : nullptr;
}

void SpreadModel::CellChanged(int row, int col) {
    if (row >= m_told)
        return; // told with its row at the end of the fill
    if (m_filling) {
        m_dirty = true;
        return;
    }
    const QModelIndex changed = index(row, col);
    emit dataChanged(changed, changed);
}

SpreadModel::ColumnDefaults& SpreadModel::Defaults(int col) {
    if (m_defaults.size() <= static_cast<std::size_t>(col))
        m_defaults.resize(static_cast<std::size_t>(col) + 1);
    return m_defaults[static_cast<std::size_t>(col)];
}

void SpreadModel::SetHeaderText(int col, const QString& text) {
    if (col < 0 || col >= m_cols)
        return;
    if (m_headers.size() <= static_cast<std::size_t>(col))
        m_headers.resize(static_cast<std::size_t>(col) + 1);
    m_headers[static_cast<std::size_t>(col)] = text.isNull() ? QStringLiteral("") : text;
    emit headerDataChanged(Qt::Horizontal, col, col);
}

QString SpreadModel::HeaderText(int col) const {
    if (col < 0 || static_cast<std::size_t>(col) >= m_headers.size())
        return {};
    return m_headers[static_cast<std::size_t>(col)];
}

void SpreadModel::SetRowHeaderText(int row, const QString& text) {
    if (row < 0 || row >= m_rows)
        return;
    if (m_rowHeaders.size() <= static_cast<std::size_t>(row))
        m_rowHeaders.resize(static_cast<std::size_t>(row) + 1);
    m_rowHeaders[static_cast<std::size_t>(row)] = text.isNull() ? QStringLiteral("") : text;
    if (row < m_told)
        emit headerDataChanged(Qt::Vertical, row, row);
}

std::uint16_t SpreadModel::FontIndex(const QFont& font) {
    const auto found = std::find(m_fonts.begin() + 1, m_fonts.end(), font);
    if (found != m_fonts.end())
        return static_cast<std::uint16_t>(found - m_fonts.begin());
    m_fonts.push_back(font);
    return static_cast<std::uint16_t>(m_fonts.size() - 1);
}

QFont SpreadModel::FontAt(std::uint16_t index) const {
    return index < m_fonts.size() ? m_fonts[index] : QFont();
}

void SpreadModel::DeleteRows(int first, int last) {
    first = std::max(first, 0);
    last = std::min(last, m_rows - 1);
    if (first > last)
        return;
    const auto from = m_cells.begin() + static_cast<std::ptrdiff_t>(at(first, 0));
    const auto to = m_cells.begin() + static_cast<std::ptrdiff_t>(at(last + 1, 0));
    const bool told = first < m_told && !m_filling;
    if (told)
        beginRemoveRows(QModelIndex(), first, std::min(last, m_told - 1));
    m_cells.erase(from, to);
    if (m_rowHeaders.size() > static_cast<std::size_t>(first))
        m_rowHeaders.erase(
            m_rowHeaders.begin() + first,
            m_rowHeaders.begin() +
                std::min<std::ptrdiff_t>(last + 1, std::ptrdiff_t(m_rowHeaders.size())));
    const int removed = last - first + 1;
    if (!told) {
        m_cells.resize(static_cast<std::size_t>(m_rows) * static_cast<std::size_t>(m_cols));
        m_dirty = m_dirty || first < m_told;
        return;
    }
    const int toldRemoved = std::min(last, m_told - 1) - first + 1;
    m_rows -= removed;
    m_told -= toldRemoved;
    endRemoveRows();
    // The sheet keeps its size: empty rows come in at the end.
    m_cells.resize(static_cast<std::size_t>(m_rows + removed) * static_cast<std::size_t>(m_cols));
    beginInsertRows(QModelIndex(), m_told, m_told + toldRemoved - 1);
    m_rows += removed;
    m_told += toldRemoved;
    endInsertRows();
}

void SpreadModel::BeginFill() {
    m_filling = true;
}

void SpreadModel::EndFill() {
    if (!m_filling)
        return;
    m_filling = false;
    if (m_dirty && m_told > 0 && m_cols > 0)
        emit dataChanged(index(0, 0), index(m_told - 1, m_cols - 1));
    m_dirty = false;
    if (m_rows > m_told) {
        beginInsertRows(QModelIndex(), m_told, m_rows - 1);
        m_told = m_rows;
        endInsertRows();
    }
}
