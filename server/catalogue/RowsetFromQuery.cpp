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
    std::vector<bool> seen(count, false), whole(count, true);
    while (query.next()) {
        std::vector<QVariant> row(count);
        for (int i = 0; i < count; ++i) {
            const QVariant value = query.value(i);
            if (value.isNull())
                continue;
            row[i] = value;
            seen[i] = true;
            if (!isWholeNumber(value))
                whole[i] = false;
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
    }
    for (auto& row : rowset.rows)
        for (int i = 0; i < count; ++i)
            if (row[i].isValid())
                row[i] = rowset.columns[i].type == wire::FieldType::I4
                             ? QVariant(row[i].toLongLong())
                             : QVariant(row[i].toString());
    return rowset;
}
