#include "RowsetFromQuery.h"

#include <QSqlRecord>

namespace {

bool isWholeNumber(const QVariant& value) {
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

} // namespace

wire::Rowset RowsetFromQuery(QSqlQuery& query) {
    wire::Rowset rowset;
    const QSqlRecord record = query.record();
    const int count = record.count();
    // Per column: a value was seen, all values seen were whole numbers, all were text.
    std::vector<char> seen(count, 0), whole(count, 1), text(count, 1);
    while (query.next()) {
        std::vector<QVariant> row;
        row.reserve(count);
        for (int i = 0; i < count; ++i) {
            QVariant value = query.value(i);
            if (value.isNull()) {
                row.emplace_back();
                continue;
            }
            seen[i] = 1;
            whole[i] &= isWholeNumber(value) ? 1 : 0;
            text[i] &= value.typeId() == QMetaType::QString ? 1 : 0;
            row.push_back(std::move(value));
        }
        rowset.rows.push_back(std::move(row));
    }
    for (int i = 0; i < count; ++i) {
        wire::Column column;
        column.name = column.attribute = record.fieldName(i);
        column.number = i + 1;
        const bool integer = seen[i] && whole[i];
        column.type = integer ? wire::FieldType::I4 : wire::FieldType::String;
        column.maxLength = integer ? 4 : 255;
        rowset.columns.push_back(column);
        // Engines give whole numbers as qlonglong and text as QString; only a column of mixed
        // or other values needs converting.
        if (!seen[i] || (integer ? false : text[i]))
            continue;
        for (auto& row : rowset.rows) {
            QVariant& value = row[i];
            if (!value.isValid())
                continue;
            if (integer && value.typeId() != QMetaType::LongLong)
                value = QVariant(value.toLongLong());
            else if (!integer)
                value = QVariant(value.toString());
        }
    }
    return rowset;
}
