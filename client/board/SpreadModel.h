#pragma once

#include "board/SpreadCell.h"
#include <QAbstractTableModel>
#include <QFont>
#include <QString>
#include <vector>

// The cells behind a SpreadGrid, 0-based, row by row in one block. A fill (BeginFill to
// EndFill) tells views of the rows added only once, at its end, and of changed cells in one
// signal, so that a board of thousands of people loads in one structural change; rows taken
// away are told at once, so views never see more rows than there are.
class SpreadModel : public QAbstractTableModel {
    Q_OBJECT
public:
    struct ColumnDefaults {
        bool checkBox = false;
        bool checkCenter = false;
        int align = -1; // none set
    };

    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // The rows and columns held, told to views or not yet.
    int Rows() const { return m_rows; }
    int Cols() const { return m_cols; }
    void SetRows(int rows);
    void SetCols(int cols);

    // The cell, made (with its column's defaults) if it wasn't; nullptr outside the sheet.
    SpreadCell* Cell(int row, int col);
    // The cell if made, else nullptr.
    const SpreadCell* MadeCell(int row, int col) const;
    // Tells views that the cell changed (or, inside a fill, at its end).
    void CellChanged(int row, int col);

    ColumnDefaults& Defaults(int col);
    void SetHeaderText(int col, const QString& text);
    QString HeaderText(int col) const;
    void SetRowHeaderText(int row, const QString& text);

    std::uint16_t FontIndex(const QFont& font);
    QFont FontAt(std::uint16_t index) const;

    // Removes rows first..last; as many empty rows come in at the end.
    void DeleteRows(int first, int last);

    void BeginFill();
    // Tells views of the rows that came in during the fill and of the changed cells.
    void EndFill();
    // Rows views know of; inside a fill, rows beyond wait for its end.
    int ToldRows() const { return m_told; }
    bool Filling() const { return m_filling; }

private:
    std::size_t at(int row, int col) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_cols) +
               static_cast<std::size_t>(col);
    }
    void makeCell(SpreadCell& cell, int col) const;

    std::vector<SpreadCell> m_cells;
    std::vector<ColumnDefaults> m_defaults;
    std::vector<QString> m_headers;
    std::vector<QString> m_rowHeaders;
    std::vector<QFont> m_fonts{QFont()}; // 0: no font of its own
    int m_rows = 0;
    int m_cols = 0;
    int m_told = 0; // rows views know of
    bool m_filling = false;
    bool m_dirty = false;
};
