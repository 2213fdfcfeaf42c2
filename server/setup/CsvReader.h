#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// One record of a CSV text and the line it starts on (from 1).
struct CsvRecord {
    int line = 0;
    QStringList fields;
};

// Comma-separated text as spreadsheets write it: fields in double quotes may hold commas,
// line breaks and doubled quotes; lines end in LF or CR LF; blank lines are skipped and a
// leading byte-order mark is dropped.
class CsvReader {
public:
    // The records; BadInput when a quoted field never closes or text follows a closing quote.
    static QList<CsvRecord> read(const QString& text);

private:
    explicit CsvReader(const QString& text) : m_text(text) {}
    void field();
    void quoted();
    void endRecord();
    QChar next() const { return m_at < m_text.size() ? m_text[m_at] : QChar(); }

    const QString& m_text;
    qsizetype m_at = 0;
    int m_line = 1;
    CsvRecord m_record{1, {}};
    QList<CsvRecord> m_records;
};
