#include "CsvReader.h"

#include "BadInput.h"

QList<CsvRecord> CsvReader::read(const QString& text) {
    CsvReader reader(text);
    if (reader.next() == QChar(0xFEFF))
        ++reader.m_at;
    while (reader.m_at < text.size())
        reader.field();
    reader.endRecord();
    return reader.m_records;
}

// One field and what ends it: a comma, a line end or the end of the text.
void CsvReader::field() {
    QString value;
    if (next() == QLatin1Char('"')) {
        const int started = m_line;
        ++m_at;
        quoted();
        value = m_record.fields.takeLast();
        if (m_at < m_text.size() && next() != QLatin1Char(',') && next() != QLatin1Char('\r') &&
            next() != QLatin1Char('\n'))
            throw BadInput(QStringLiteral("line %1: text after a closing quote").arg(started));
    } else {
        while (m_at < m_text.size() && next() != QLatin1Char(',') && next() != QLatin1Char('\r') &&
               next() != QLatin1Char('\n'))
            value += m_text[m_at++];
    }
    m_record.fields << value;
    if (next() == QLatin1Char(',')) {
        ++m_at;
        if (m_at == m_text.size())
            m_record.fields << QString();
        return;
    }
    if (next() == QLatin1Char('\r'))
        ++m_at;
    if (next() == QLatin1Char('\n'))
        ++m_at;
    endRecord();
    ++m_line;
}

// Inside quotes, up to the closing one; "" stands for one quote.
void CsvReader::quoted() {
    const int started = m_line;
    QString value;
    for (;;) {
        if (m_at >= m_text.size())
            throw BadInput(QStringLiteral("line %1: a quoted field never closes").arg(started));
        const QChar c = m_text[m_at++];
        if (c == QLatin1Char('"')) {
            if (next() != QLatin1Char('"'))
                break;
            ++m_at;
        } else if (c == QLatin1Char('\n')) {
            ++m_line;
        }
        value += c;
    }
    m_record.fields << value;
}

// A record is kept unless the line was blank.
void CsvReader::endRecord() {
    const bool blank = m_record.fields.isEmpty() ||
                       (m_record.fields.size() == 1 && m_record.fields.first().trimmed().isEmpty());
    if (!blank)
        m_records << m_record;
    m_record = {m_line + 1, {}};
}
