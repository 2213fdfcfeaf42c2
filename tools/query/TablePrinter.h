#pragma once

#include "wire/Rowset.h"
#include <QString>

// Text forms of a recordset for tavlo-query.
class TablePrinter {
public:
    // Aligned columns under a header, numbers to the right, NULL for Null, control characters
    // shown as \t \r \n or \xNN, and a last line with the number of rows.
    static QString table(const wire::Rowset& rowset);

    // Tab-separated values with a header line: backslash, TAB, CR and LF escaped as \\ \t \r
    // \n, Null as \N. One line per record.
    static QString tsv(const wire::Rowset& rowset);
};
