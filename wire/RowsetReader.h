#pragma once

#include "Rowset.h"
#include <QByteArray>

namespace wire {

// Reads a rowset persisted as XML in ADO's own style (UTF-8 without declaration, or UTF-16LE
// with a BOM) into a Rowset. Raw control characters inside attribute values are accepted.
// Empty, HTML, truncated or non-rowset input raises ComError(err::Unspecified, reason).
class RowsetReader {
public:
    static Rowset read(const QByteArray& bytes);
};

} // namespace wire
