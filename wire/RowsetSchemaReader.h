#pragma once

#include "Rowset.h"
#include <pugixml.hpp>
#include <string>
#include <vector>

namespace wire {

// The schema part of a persisted rowset: the columns in rs:number order and how a row element
// is named in the data part.
struct RowsetSchema {
    std::vector<Column> columns;
    std::vector<const char*> attributes; // per column: its attribute name, inside the document
    std::string rowNamespace;            // "#" + the schema's id
    std::string rowName;                 // the ElementType's name, usually "row"
};

// Reads an s:Schema element. The column types come from dt:type on the s:datatype child or on
// the s:AttributeType itself; a column without a type is text.
class RowsetSchemaReader {
public:
    static RowsetSchema read(pugi::xml_node schema);
};

} // namespace wire
