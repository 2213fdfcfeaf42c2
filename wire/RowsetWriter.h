#pragma once

#include "Rowset.h"
#include <QByteArray>

namespace wire {

// Writes a Rowset as ADO persists it: UTF-8 with no declaration, the s:Schema then rs:data,
// single-quoted attributes, nulls as absent attributes, TAB/CR/LF as character references.
// Column names that are not XML names get attribute names c0, c1, ... and rs:name.
class RowsetWriter {
public:
    static QByteArray write(const Rowset& rowset);
};

} // namespace wire
