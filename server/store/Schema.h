#pragma once

#include <QStringList>

// The server's tables. Moments are stored as ISO text ("2026-11-18T09:05:00") so that both
// engines keep and sort them alike.
namespace Schema {

QStringList statements(bool postgres); // CREATE TABLE IF NOT EXISTS ..., in dependency order
// Every table of the office's data, in the same order (not the sign-in throttle's counts).
QStringList tables();

// Columns that later releases added to existing tables; a database made before gets them.
struct AddedColumn {
    QString table;
    QString column;
    QString type;
};
QList<AddedColumn> addedColumns();

// Tables whose key is one whole number that the server hands out, with that key's column.
struct KeyedTable {
    QString table;
    QString key;
};
QList<KeyedTable> keyedTables();
// The PostgreSQL sequence that hands out a keyed table's keys.
QString sequenceOf(const QString& table);

} // namespace Schema
