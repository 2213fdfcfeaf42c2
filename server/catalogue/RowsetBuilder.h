#pragma once

#include "wire/Rowset.h"
#include <QStringList>
#include <QVariant>
#include <vector>

// Collects rows of plain values (qlonglong, QString, or Null) and types each column at the
// end: i4 when every value seen was a whole number, text otherwise.
class RowsetBuilder {
public:
    explicit RowsetBuilder(const QStringList& names);
    // Takes one row of names().size() values.
    void addRow(std::vector<QVariant>&& row);
    wire::Rowset finish();

private:
    static bool isWholeNumber(const QVariant& value);
    wire::Rowset m_rowset;
    std::vector<char> m_seen, m_whole, m_text;
};
