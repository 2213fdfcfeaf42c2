#pragma once

#include "Rowset.h"
#include <QHash>
#include <QString>
#include <QVariant>
#include <array>

namespace wire {

class Recordset;

// One field of the current record. Value() is an invalid QVariant for Null.
class Field {
public:
    Field(const Recordset* recordset, int column) : m_recordset(recordset), m_column(column) {}
    QVariant Value() const;
    QString Name() const;
    FieldType Type() const;

private:
    const Recordset* m_recordset;
    int m_column;
};

// A forward-reading recordset over a Rowset, addressed as the program reads its answers:
// Fields(name).Value(), Eof(), MoveNext(), RecordCount(), Close(). Field names match without
// regard to case. A missing column raises ComError 3265, a read with no current record 3021.
// (Eof rather than EOF: the C library defines EOF as a macro.)
class Recordset {
public:
    Recordset() = default;
    explicit Recordset(Rowset rowset);

    Field Fields(const QString& name) const;
    bool HasField(const QString& name) const;
    bool Eof() const;
    bool Bof() const;
    void MoveNext();
    void MoveFirst();
    long RecordCount() const;
    int FieldCount() const;
    void Close();
    bool IsOpen() const { return m_open; }

    const Rowset& rowset() const { return m_rowset; }
    QVariant valueAt(int column) const; // current record; raises 3021 at EOF

private:
    int columnIndex(const QString& name) const; // -1 when absent
    int literalColumn(const QString& name) const;
    int columnByText(const QString& name) const;
    struct LiteralSlot {
        const QChar* text = nullptr;
        qsizetype size = 0;
        int column = -1;
    };
    Rowset m_rowset;
    mutable std::array<LiteralSlot, 128> m_literals{}; // by the address of a literal name
    mutable QHash<QString, int> m_exact; // name as asked for -> column, or -1 when absent
    QHash<QString, int> m_index;         // lower-cased name -> column
    long m_position = 0;
    bool m_open = false;
};

} // namespace wire
