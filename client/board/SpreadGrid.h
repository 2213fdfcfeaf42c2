#pragma once

#include <QString>
#include <QTableView>
#include <cstdint>
#include <vector>

class SpreadCellDelegate;
class SpreadModel;
struct SpreadCell;

// A sheet addressed the way the board's code speaks of it: Row and Col name a cell, row 0 is
// the column header and column 0 the row header, and -1 in Row or Col means the whole column or
// row. Data rows and columns count from 1. Each row carries one number (row item data), and the
// whole grid has one tool tip text. Cells aren't edited in place; a check box cell shows its
// Value and changes only when the program writes it. The cells live in a SpreadModel of plain
// values; a fill (a Batch) adds its rows to the view in one go.
class SpreadGrid : public QTableView {
    Q_OBJECT
public:
    enum class CellKind { Text, CheckBox };
    static constexpr int kAlignLeft = 0;
    static constexpr int kAlignRight = 1;
    static constexpr int kAlignCenter = 2;

    explicit SpreadGrid(QWidget* parent = nullptr);

    // While one lives, rows added reach the view only at its end, in one change: a load of
    // thousands of rows costs the view one insertion.
    class Batch {
    public:
        explicit Batch(SpreadGrid& grid);
        ~Batch();
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

    private:
        SpreadGrid& m_grid;
    };

    int Row = 0;
    int Col = 0;
    int Row2 = 0; // last row of a block, for deleting rows

    int MaxRows() const;
    // 0 drops every row with its content and row data; growing adds empty rows at the end.
    void SetMaxRows(int rows);
    int MaxCols() const;
    void SetMaxCols(int cols);

    QString Text() const;
    void SetText(const QString& text);
    // A check box cell: 1 ticked, 0 not.
    int Value() const;
    void SetValue(int value);
    void SetBackColor(std::int32_t colorNumber);
    void SetForeColor(std::int32_t colorNumber);
    void SetFontName(const QString& name);
    void SetFontSize(int points);
    void SetFontBold(bool bold);
    void SetFontUnderline(bool underline);
    bool FontBold() const; // of the cell at Row, Col
    void SetLock(bool locked);
    // The cell kind and check box centring of the addressed cells; with Row -1 they hold for
    // every cell the column gets later too.
    void SetCellType(CellKind kind);
    void SetTypeCheckCenter(bool center);
    // 0 left, 1 right, 2 centre; with Row -1 for the whole column, present and future cells.
    void SetTypeHAlign(int align);

    // Hides or shows column Col (0: the row header) or row Row (0: the column header).
    void SetColHidden(bool hidden);
    void SetRowHidden(bool hidden);
    // Widths in twips.
    void SetColWidth(int col, int twips);
    int ColWidth(int col) const;
    void SetColsFrozen(int cols);
    int ColsFrozen() const { return m_colsFrozen; }

    void SetGridShowHoriz(bool show);
    void SetGridShowVert(bool show);
    bool GridShowHoriz() const { return m_showHoriz; }
    bool GridShowVert() const { return m_showVert; }

    // Painting off while the sheet is filled; on paints everything once.
    void SetReDraw(bool redraw);
    bool ReDraw() const { return m_redraw; }

    void SetRowItemData(int row, std::int32_t value);
    std::int32_t GetRowItemData(int row) const;

    // The cell under a point of this widget: row 0 over the column header, column 0 over the
    // row header, -1 where there is no cell.
    void GetCellFromScreenCoord(int& col, int& row, int x, int y) const;
    // Deletes the rows Row to Row2 with their row data; the rows below move up. The sheet keeps
    // its size, so the caller lowers MaxRows.
    void DeleteRows();
    // 2 selects whole rows; other modes select cells.
    void SetOperationMode(int mode);
    int ActiveRow() const { return currentRow() + 1; }
    // The current cell, 0-based as Qt counts (-1: none).
    int currentRow() const { return currentIndex().row(); }
    void setCurrentCell(int row, int col);

    QString ToolTipText() const { return m_toolTipText; }
    void SetToolTipText(const QString& text) { m_toolTipText = text; }

signals:
    void Click(int col, int row);
    void KeyUp(int keyCode);
    void DblClick(int col, int row);
    // Click type 1 (single); the cell; the pointer's position on the screen.
    void RightClick(int clickType, int col, int row, int mouseX, int mouseY);
    // The pressed buttons and modifiers as numbers, and the pointer's position in this widget.
    void SpreadMouseMove(int button, int shift, int x, int y);

protected:
    bool viewportEvent(QEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    template <class F> void forEachAddressed(F&& apply);
    template <class F> void changeFont(F&& change);
    const SpreadCell* existingCell(int row, int col) const;
    QPoint cellAt(const QPoint& widgetPos) const;
    void endBatch();

    SpreadModel* m_model;
    std::vector<std::int32_t> m_rowData; // index = row, 0 unused
    std::vector<int> m_hiddenLater;      // rows to hide once the batch shows them
    int m_batches = 0;
    QString m_toolTipText;
    int m_colsFrozen = 0;
    bool m_showHoriz = true;
    bool m_showVert = true;
    bool m_redraw = true;
    SpreadCellDelegate* m_cells;
};
