#include "Recordset.h"

#include "ComError.h"

namespace wire {

namespace {

[[noreturn]] void itemNotFound() {
    throw ComError(err::ItemNotFound,
                   QStringLiteral("Item cannot be found in the collection corresponding to the "
                                  "requested name or ordinal."));
}

[[noreturn]] void noCurrentRecord() {
    throw ComError(err::NoCurrentRecord,
                   QStringLiteral("Either BOF or EOF is True, or the current record has been "
                                  "deleted. Requested operation requires a current record."));
}

} // namespace

QVariant Field::Value() const {
    return m_recordset->valueAt(m_column);
}

QString Field::Name() const {
    return m_recordset->rowset().columns[std::size_t(m_column)].name;
}

FieldType Field::Type() const {
    return m_recordset->rowset().columns[std::size_t(m_column)].type;
}

Recordset::Recordset(Rowset rowset) : m_rowset(std::move(rowset)), m_open(true) {
    // The first of several columns with one name wins, as a by-name look-up finds it first.
    for (int i = int(m_rowset.columns.size()) - 1; i >= 0; --i) {
        const QString& name = m_rowset.columns[std::size_t(i)].name;
        m_exact.insert(name, i);
        m_index.insert(name.toLower(), i);
    }
}

int Recordset::columnIndex(const QString& name) const {
    // A name written as a literal in the program keeps one address for the program's life, so
    // its column is found by that address without hashing the text: a record fill asks for
    // the same dozen literal names on every record.
    if (!name.data_ptr().isMutable())
        return literalColumn(name);
    return columnByText(name);
}

int Recordset::columnByText(const QString& name) const {
    // Callers mostly spell a column as the server does; only a miss pays for lower-casing.
    if (const auto it = m_exact.constFind(name); it != m_exact.cend())
        return it.value();
    // Any other spelling, and a column that isn't there, is looked up once and remembered.
    const auto it = m_index.constFind(name.toLower());
    const int column = it == m_index.cend() ? -1 : it.value();
    m_exact.insert(name, column);
    return column;
}

int Recordset::literalColumn(const QString& name) const {
    const QChar* text = name.constData();
    const auto address = quintptr(text);
    LiteralSlot& slot = m_literals[((address >> 1) ^ (address >> 9)) % m_literals.size()];
    if (slot.text != text || slot.size != name.size())
        slot = {text, name.size(), columnByText(name)};
    return slot.column;
}

Field Recordset::Fields(const QString& name) const {
    const int column = columnIndex(name);
    if (column < 0)
        itemNotFound();
    return Field(this, column);
}

bool Recordset::HasField(const QString& name) const {
    return columnIndex(name) >= 0;
}

bool Recordset::Eof() const {
    return m_position >= long(m_rowset.rows.size());
}

// A forward-reading recordset never moves before its first record: BOF holds only when there
// is no record at all.
bool Recordset::Bof() const {
    return m_rowset.rows.empty();
}

void Recordset::MoveNext() {
    if (Eof())
        noCurrentRecord();
    ++m_position;
}

void Recordset::MoveFirst() {
    m_position = 0;
}

long Recordset::RecordCount() const {
    return long(m_rowset.rows.size());
}

int Recordset::FieldCount() const {
    return int(m_rowset.columns.size());
}

void Recordset::Close() {
    m_rowset = Rowset();
    m_exact.clear();
    m_index.clear();
    m_position = 0;
    m_open = false;
}

QVariant Recordset::valueAt(int column) const {
    if (column < 0 || column >= FieldCount())
        itemNotFound();
    if (Eof())
        noCurrentRecord();
    const auto& row = m_rowset.rows[std::size_t(m_position)];
    return std::size_t(column) < row.size() ? row[std::size_t(column)] : QVariant();
}

} // namespace wire
