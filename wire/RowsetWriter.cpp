#include "RowsetWriter.h"

#include "RowsetValue.h"
#include <QSet>

namespace wire {

namespace {

bool isNameStart(QChar c) {
    return c.isLetter() || c == u'_';
}

bool isNameChar(QChar c) {
    return isNameStart(c) || c.isDigit() || c == u'-' || c == u'.' || c.isMark();
}

// A name usable as an attribute of z:row: an XML name without a colon (which would make it a
// prefix) and not starting with "xml" (reserved, and xmlns would declare a namespace).
bool isAttributeName(const QString& name) {
    if (name.isEmpty() || !isNameStart(name.front()))
        return false;
    if (name.startsWith(QLatin1String("xml"), Qt::CaseInsensitive))
        return false;
    for (QChar c : name) {
        if (!isNameChar(c))
            return false;
    }
    return true;
}

// The alias pattern: a real name that looks like one must not collide with another column's.
bool looksLikeAlias(const QString& name) {
    if (name.size() < 2 || name.front() != u'c')
        return false;
    for (qsizetype i = 1; i < name.size(); ++i) {
        if (!name.at(i).isDigit() || name.at(i).unicode() > '9')
            return false;
    }
    return true;
}

// Attribute names per column: the column's own name where it can serve, else c<index>.
std::vector<QByteArray> attributeNames(const std::vector<Column>& columns) {
    std::vector<QByteArray> names;
    QSet<QString> used;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const QString& name = columns[i].name;
        const QString alias = QStringLiteral("c%1").arg(i);
        const bool usable = isAttributeName(name) && !used.contains(name) &&
                            (!looksLikeAlias(name) || name == alias);
        const QString chosen = usable ? name : alias;
        used.insert(chosen);
        names.push_back(chosen.toUtf8());
    }
    return names;
}

void appendEscaped(QByteArray& out, const QByteArray& text) {
    for (char c : text) {
        switch (c) {
        case '&':
            out.append("&amp;");
            break;
        case '\'':
            out.append("&apos;");
            break;
        case '"':
            out.append("&quot;");
            break;
        case '<':
            out.append("&lt;");
            break;
        case '>':
            out.append("&gt;");
            break;
        case '\t':
            out.append("&#x9;");
            break;
        case '\n':
            out.append("&#xA;");
            break;
        case '\r':
            out.append("&#xD;");
            break;
        case '\0':
            // A document cannot carry NUL in any form; it is dropped.
            break;
        default:
            out.append(c);
        }
    }
}

void appendAttribute(QByteArray& out, const char* name, const QByteArray& value) {
    out.append(' ').append(name).append("='");
    appendEscaped(out, value);
    out.append('\'');
}

void appendColumn(QByteArray& out, const Column& c, const QByteArray& attribute, int number) {
    out.append("\t\t<s:AttributeType");
    appendAttribute(out, "name", attribute);
    if (attribute != c.name.toUtf8())
        appendAttribute(out, "rs:name", c.name.toUtf8());
    appendAttribute(out, "rs:number", QByteArray::number(number));
    if (c.nullable)
        out.append(" rs:nullable='true'");
    out.append(">\n\t\t\t<s:datatype");
    appendAttribute(out, "dt:type", fieldTypeName(c.type).toUtf8());
    if (!c.dbType.isEmpty())
        appendAttribute(out, "rs:dbtype", c.dbType.toUtf8());
    if (c.maxLength >= 0)
        appendAttribute(out, "dt:maxLength", QByteArray::number(c.maxLength));
    if (!c.nullable)
        out.append(" rs:maybenull='false'");
    out.append("/>\n\t\t</s:AttributeType>\n");
}

void appendSchema(QByteArray& out, const Rowset& rowset, const std::vector<QByteArray>& names) {
    out.append("<s:Schema id='RowsetSchema'>\n"
               "\t<s:ElementType name='row' content='eltOnly'>\n");
    for (std::size_t i = 0; i < rowset.columns.size(); ++i)
        appendColumn(out, rowset.columns[i], names[i], int(i) + 1);
    out.append("\t\t<s:extends type='rs:rowbase'/>\n"
               "\t</s:ElementType>\n"
               "</s:Schema>\n");
}

void appendRow(QByteArray& out, const Rowset& rowset, const std::vector<QVariant>& row,
               const std::vector<QByteArray>& names, LocalOffsets& offsets) {
    out.append("\t<z:row");
    const std::size_t n = std::min(row.size(), rowset.columns.size());
    for (std::size_t i = 0; i < n; ++i) {
        if (rowsetvalue::isNull(row[i]))
            continue;
        appendAttribute(out, names[i].constData(),
                        rowsetvalue::format(rowset.columns[i].type, row[i], &offsets));
    }
    out.append("/>\n");
}

} // namespace

QByteArray RowsetWriter::write(const Rowset& rowset) {
    const std::vector<QByteArray> names = attributeNames(rowset.columns);
    QByteArray out;
    out.reserve(1024 + qsizetype(rowset.rows.size() * (rowset.columns.size() + 1)) * 24);
    out.append("<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'\n"
               "\txmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'\n"
               "\txmlns:rs='urn:schemas-microsoft-com:rowset'\n"
               "\txmlns:z='#RowsetSchema'>\n");
    appendSchema(out, rowset, names);
    if (rowset.rows.empty()) {
        out.append("<rs:data/>\n");
    } else {
        out.append("<rs:data>\n");
        LocalOffsets offsets;
        for (const auto& row : rowset.rows)
            appendRow(out, rowset, row, names, offsets);
        out.append("</rs:data>\n");
    }
    out.append("</xml>");
    return out;
}

} // namespace wire
