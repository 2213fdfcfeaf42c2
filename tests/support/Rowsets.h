#pragma once

#include "wire/RowsetWriter.h"
#include <QList>
#include <QStringList>
#include <QVariantList>

// A rowset of the given columns and rows, each column typed by its first value that isn't Null:
// a whole number is a four-byte integer, anything else text.
inline wire::Rowset RowsetOf(const QStringList& names, const QList<QVariantList>& rows) {
    wire::Rowset rowset;
    for (int i = 0; i < names.size(); ++i) {
        wire::FieldType type = wire::FieldType::String;
        for (const QVariantList& row : rows) {
            if (!row.value(i).isValid())
                continue;
            const int id = row[i].typeId();
            if (id == QMetaType::Int || id == QMetaType::LongLong)
                type = wire::FieldType::I4;
            break;
        }
        rowset.columns.push_back({names[i], names[i], i + 1, type, {}, -1, true});
    }
    for (const QVariantList& row : rows)
        rowset.rows.push_back(std::vector<QVariant>(row.begin(), row.end()));
    return rowset;
}

// The same rowset as the server sends it.
inline QByteArray RowsetBytes(const QStringList& names, const QList<QVariantList>& rows) {
    return wire::RowsetWriter::write(RowsetOf(names, rows));
}
