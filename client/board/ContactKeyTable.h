#pragma once

#include <QString>
#include <vector>

// The key of the person each occupied grid cell shows, addressed by grid row and column from
// 0. Redim drops the old content. Reading outside the table gives an empty key: a cell that
// shows nobody.
class ContactKeyTable {
public:
    void Redim(int lastRow, int lastCol) {
        m_rows = std::max(lastRow + 1, 0);
        m_cols = std::max(lastCol + 1, 0);
        m_keys.assign(static_cast<size_t>(m_rows) * static_cast<size_t>(m_cols), QString());
    }
    QString At(int row, int col) const {
        if (!inside(row, col))
            return {};
        return m_keys[index(row, col)];
    }
    void Set(int row, int col, const QString& key) {
        if (inside(row, col))
            m_keys[index(row, col)] = key;
    }
    int LastRow() const { return m_rows - 1; }
    int LastCol() const { return m_cols - 1; }

private:
    bool inside(int row, int col) const {
        return row >= 0 && col >= 0 && row < m_rows && col < m_cols;
    }
    size_t index(int row, int col) const {
        return static_cast<size_t>(row) * static_cast<size_t>(m_cols) + static_cast<size_t>(col);
    }
    int m_rows = 0;
    int m_cols = 0;
    std::vector<QString> m_keys;
};
