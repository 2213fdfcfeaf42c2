#include "RowsetBuilder.h"

RowsetBuilder::RowsetBuilder(const QStringList& names)
    : m_seen(names.size(), 0), m_whole(names.size(), 1), m_text(names.size(), 1) {
    for (int i = 0; i < names.size(); ++i) {
        wire::Column column;
        column.name = column.attribute = names[i];
        column.number = i + 1;
        m_rowset.columns.push_back(column);
    }
}

bool RowsetBuilder::isWholeNumber(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::Short:
        return true;
    default:
        return false;
    }
}

void RowsetBuilder::addRow(std::vector<QVariant>&& row) {
    for (size_t i = 0; i < row.size(); ++i) {
        const QVariant& value = row[i];
        if (!value.isValid())
            continue;
        m_seen[i] = 1;
        m_whole[i] &= isWholeNumber(value) ? 1 : 0;
        m_text[i] &= value.typeId() == QMetaType::QString ? 1 : 0;
    }
    m_rowset.rows.push_back(std::move(row));
}

wire::Rowset RowsetBuilder::finish() {
    for (size_t i = 0; i < m_rowset.columns.size(); ++i) {
        const bool integer = m_seen[i] && m_whole[i];
        m_rowset.columns[i].type = integer ? wire::FieldType::I4 : wire::FieldType::String;
        m_rowset.columns[i].maxLength = integer ? 4 : 255;
        // Only a column of mixed or other values needs converting.
        if (!m_seen[i] || (!integer && m_text[i]))
            continue;
        for (auto& row : m_rowset.rows) {
            QVariant& value = row[i];
            if (!value.isValid())
                continue;
            if (integer && value.typeId() != QMetaType::LongLong)
                value = QVariant(value.toLongLong());
            else if (!integer)
                value = QVariant(value.toString());
        }
    }
    return std::move(m_rowset);
}
