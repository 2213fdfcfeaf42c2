#include "TablePrinter.h"

#include "wire/RowsetValue.h"
#include <QStringList>
#include <algorithm>

namespace {

bool isNumeric(wire::FieldType t) {
    using wire::FieldType;
    switch (t) {
    case FieldType::Int:
    case FieldType::I1:
    case FieldType::I2:
    case FieldType::I4:
    case FieldType::I8:
    case FieldType::UI1:
    case FieldType::UI2:
    case FieldType::UI4:
    case FieldType::UI8:
    case FieldType::R4:
    case FieldType::Float:
    case FieldType::Number:
        return true;
    default:
        return false;
    }
}

QString valueText(const wire::Column& column, const QVariant& value) {
    return QString::fromUtf8(wire::rowsetvalue::format(column.type, value));
}

// For the table: every control character made visible, so one record stays one line.
QString visible(const QString& text) {
    QString out;
    out.reserve(text.size());
    for (QChar c : text) {
        if (c == u'\t')
            out += QLatin1String("\\t");
        else if (c == u'\r')
            out += QLatin1String("\\r");
        else if (c == u'\n')
            out += QLatin1String("\\n");
        else if (c.unicode() < 0x20 || c.unicode() == 0x7F)
            out += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out;
}

QString tsvEscaped(const QString& text) {
    QString out;
    out.reserve(text.size());
    for (QChar c : text) {
        if (c == u'\\')
            out += QLatin1String("\\\\");
        else if (c == u'\t')
            out += QLatin1String("\\t");
        else if (c == u'\r')
            out += QLatin1String("\\r");
        else if (c == u'\n')
            out += QLatin1String("\\n");
        else
            out += c;
    }
    return out;
}

QString cellAt(const wire::Rowset& r, std::size_t row, std::size_t column) {
    const auto& values = r.rows[row];
    const QVariant v = column < values.size() ? values[column] : QVariant();
    return wire::rowsetvalue::isNull(v) ? QStringLiteral("NULL")
                                        : visible(valueText(r.columns[column], v));
}

QString padded(const QString& text, qsizetype width, bool right) {
    return right ? text.rightJustified(width) : text.leftJustified(width);
}

} // namespace

QString TablePrinter::table(const wire::Rowset& r) {
    const std::size_t n = r.columns.size();
    std::vector<std::vector<QString>> cells(r.rows.size(), std::vector<QString>(n));
    std::vector<qsizetype> width(n);
    for (std::size_t c = 0; c < n; ++c)
        width[c] = visible(r.columns[c].name).size();
    for (std::size_t row = 0; row < r.rows.size(); ++row) {
        for (std::size_t c = 0; c < n; ++c) {
            cells[row][c] = cellAt(r, row, c);
            width[c] = std::max(width[c], cells[row][c].size());
        }
    }
    QStringList lines;
    QStringList header;
    QStringList rule;
    for (std::size_t c = 0; c < n; ++c) {
        header << padded(visible(r.columns[c].name), width[c], false);
        rule << QString(width[c], u'-');
    }
    lines << header.join(QLatin1String(" | ")) << rule.join(QLatin1String("-+-"));
    for (const auto& row : cells) {
        QStringList line;
        for (std::size_t c = 0; c < n; ++c)
            line << padded(row[c], width[c], isNumeric(r.columns[c].type));
        lines << line.join(QLatin1String(" | "));
    }
    for (QString& line : lines) {
        while (line.endsWith(u' '))
            line.chop(1);
    }
    lines << (r.rows.size() == 1 ? QStringLiteral("(1 row)")
                                 : QStringLiteral("(%1 rows)").arg(r.rows.size()));
    return lines.join(u'\n') + u'\n';
}

QString TablePrinter::tsv(const wire::Rowset& r) {
    QStringList lines;
    QStringList header;
    for (const auto& column : r.columns)
        header << tsvEscaped(column.name);
    lines << header.join(u'\t');
    for (const auto& values : r.rows) {
        QStringList line;
        for (std::size_t c = 0; c < r.columns.size(); ++c) {
            const QVariant v = c < values.size() ? values[c] : QVariant();
            line << (wire::rowsetvalue::isNull(v) ? QStringLiteral("\\N")
                                                  : tsvEscaped(valueText(r.columns[c], v)));
        }
        lines << line.join(u'\t');
    }
    return lines.join(u'\n') + u'\n';
}
