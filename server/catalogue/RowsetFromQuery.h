#pragma once

#include "wire/Rowset.h"
#include <QSqlQuery>
#include <QVariantList>

class Database;

// The rows of a query as the answer the client reads: columns named as the query's aliases,
// whole numbers as i4, everything else as text, NULL as Null.
wire::Rowset RowsetFromQuery(QSqlQuery& query);

// The same for a statement run here. On SQLite the rows are read straight from the engine
// through the connection's own handle, which is several times cheaper than QSqlQuery's
// per-value path on a board of thousands; other engines go through QSqlQuery.
wire::Rowset ReadRowset(Database& db, const QString& sql, const QVariantList& values);
