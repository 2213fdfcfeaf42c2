#pragma once

#include "base/Variants.h"
#include "wire/ComError.h"
#include "wire/Recordset.h"
#include <QString>
#include <cstdint>

// How every record fills itself from a result: column by column, a Null or a missing column
// leaves the field as it was, and nothing is reported. So one record can be filled from any
// result that holds some of its columns, and in layers from several results.
class OptionalColumns {
public:
    explicit OptionalColumns(const wire::Recordset* recordset) : m_recordset(recordset) {}

    void Text(const QString& column, const QString& label, QString& field) {
        read(column, label, [&](const QVariant& v) { field = Variants::Trim(Variants::CStr(v)); });
    }
    void UntrimmedText(const QString& column, const QString& label, QString& field) {
        read(column, label, [&](const QVariant& v) { field = Variants::CStr(v); });
    }
    void Long(const QString& column, const QString& label, std::int32_t& field) {
        read(column, label, [&](const QVariant& v) { field = Variants::CLng(v); });
    }
    // Text trimmed, then read as a number.
    void TrimmedLong(const QString& column, const QString& label, std::int32_t& field) {
        read(column, label,
             [&](const QVariant& v) { field = Variants::CLng(Variants::Trim(Variants::CStr(v))); });
    }

    // The labels of the columns the result lacked, each with a comma in front.
    const QString& Missing() const { return m_missing; }

private:
    template <class Assign> void read(const QString& column, const QString& label, Assign assign) {
        try {
            if (!m_recordset)
                return;
            // Asked first, so a result without the column costs no raised failure.
            if (!m_recordset->HasField(column)) {
                m_missing += label;
                return;
            }
            const QVariant value = m_recordset->Fields(column).Value();
            if (Variants::IsNull(value))
                return;
            assign(value);
        } catch (const wire::ComError& error) {
            if (error.number() == wire::err::ItemNotFound)
                m_missing += label;
        }
    }

    const wire::Recordset* m_recordset;
    QString m_missing;
};
