#include "Rowset.h"

#include <array>

namespace wire {

namespace {

struct TypeName {
    FieldType type;
    const char* name;
};

// The written name of each type first; equivalent spellings a reader may meet come after.
constexpr std::array<TypeName, 25> kTypeNames{{
    {FieldType::Int, "int"},
    {FieldType::I1, "i1"},
    {FieldType::I2, "i2"},
    {FieldType::I4, "i4"},
    {FieldType::I8, "i8"},
    {FieldType::UI1, "ui1"},
    {FieldType::UI2, "ui2"},
    {FieldType::UI4, "ui4"},
    {FieldType::UI8, "ui8"},
    {FieldType::R4, "r4"},
    {FieldType::Float, "float"},
    {FieldType::Number, "number"},
    {FieldType::Boolean, "boolean"},
    {FieldType::DateTime, "dateTime"},
    {FieldType::Date, "date"},
    {FieldType::Time, "time"},
    {FieldType::Uuid, "uuid"},
    {FieldType::String, "string"},
    {FieldType::BinHex, "bin.hex"},
    {FieldType::Float, "r8"},
    {FieldType::DateTime, "dateTime.tz"},
    {FieldType::Time, "time.tz"},
    {FieldType::Number, "fixed.14.4"},
    {FieldType::Boolean, "bool"},
    {FieldType::String, "char"},
}};

} // namespace

QString fieldTypeName(FieldType type) {
    for (const auto& entry : kTypeNames) {
        if (entry.type == type)
            return QString::fromLatin1(entry.name);
    }
    return QStringLiteral("string");
}

FieldType fieldTypeFromName(QStringView name) {
    for (const auto& entry : kTypeNames) {
        if (name.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0)
            return entry.type;
    }
    return FieldType::String;
}

} // namespace wire
