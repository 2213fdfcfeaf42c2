#pragma once

#include <QString>
#include <QVariant>
#include <vector>

namespace wire {

// Column types of a persisted rowset (the dt:type values). Unknown types read as String.
enum class FieldType {
    Int,
    I1,
    I2,
    I4,
    I8,
    UI1,
    UI2,
    UI4,
    UI8, // whole numbers: QVariant qlonglong (UI8: qulonglong)
    R4,
    Float,
    Number,  // QVariant double
    Boolean, // QVariant bool ("True"/"False", also 1/0)
    DateTime,
    Date,
    Time, // QVariant QDateTime / QDate / QTime
    Uuid,
    String, // QVariant QString
    BinHex  // QVariant QByteArray (decoded bytes)
};

struct Column {
    QString name;      // the real name (rs:name when given, else the attribute name)
    QString attribute; // the attribute name used on z:row ("c0" style when name is no XML name)
    int number = 0;    // rs:number, 1-based; columns are kept sorted by it
    FieldType type = FieldType::String;
    QString dbType;     // rs:dbtype, e.g. "currency", "numeric", "decimal"; empty when absent
    int maxLength = -1; // dt:maxLength, -1 when absent
    bool nullable = true;
};

// One result set: columns and rows. A value that is Null is an invalid QVariant (QVariant()),
// distinct from an empty QString.
struct Rowset {
    std::vector<Column> columns;
    std::vector<std::vector<QVariant>> rows; // each row has columns.size() values
};

// Name for a dt:type value and back ("int", "i4", "dateTime", "bin.hex", ...).
QString fieldTypeName(FieldType type);
FieldType fieldTypeFromName(QStringView name);

} // namespace wire
