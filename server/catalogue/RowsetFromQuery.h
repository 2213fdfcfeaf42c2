#pragma once

#include "wire/Rowset.h"
#include <QSqlQuery>

// The rows of a query as the answer the client reads: columns named as the query's aliases,
// whole numbers as i4, everything else as text, NULL as Null.
wire::Rowset RowsetFromQuery(QSqlQuery& query);
