#include "RowsetReader.h"

#include "ComError.h"
#include "RowsetSchemaReader.h"
#include "RowsetValue.h"
#include "XmlNamespaces.h"
#include <QString>
#include <cstring>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace wire {

namespace {

[[noreturn]] void unreadable(const QString& reason) {
    throw ComError(err::Unspecified, QStringLiteral("The answer is no rowset: ") + reason);
}

// The document as UTF-8 text. A rowset saved to a stream is UTF-16LE with a byte order mark;
// answers on the wire are UTF-8, sometimes with a mark of their own.
QByteArray utf8Text(const QByteArray& bytes) {
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.constData());
    const qsizetype n = bytes.size();
    if (n >= 2 && ((p[0] == 0xFF && p[1] == 0xFE) || (p[0] == 0xFE && p[1] == 0xFF))) {
        if (n % 2 != 0)
            unreadable(QStringLiteral("the UTF-16 text ends in half a character"));
        const bool little = p[0] == 0xFF;
        QString text(n / 2 - 1, Qt::Uninitialized);
        char16_t* out = reinterpret_cast<char16_t*>(text.data());
        for (qsizetype i = 2; i < n; i += 2)
            *out++ = little ? char16_t(p[i] | p[i + 1] << 8) : char16_t(p[i] << 8 | p[i + 1]);
        return text.toUtf8();
    }
    if (n >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF)
        return bytes.mid(3);
    return bytes;
}

bool blank(const QByteArray& text) {
    for (char c : text) {
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n')
            return false;
    }
    return true;
}

pugi::xml_node childElement(pugi::xml_node parent, std::string_view uri, std::string_view local) {
    for (pugi::xml_node child : parent.children()) {
        if (xmlns::isElement(child, uri, local))
            return child;
    }
    return {};
}

// Turns z:row elements into rows. Attributes usually come in column order, so the next
// column is tried first and the map only when that fails.
class RowBuilder {
public:
    explicit RowBuilder(const RowsetSchema& schema) : m_schema(schema) {
        for (std::size_t i = 0; i < schema.attributes.size(); ++i)
            m_byName.emplace(schema.attributes[i], int(i));
    }

    bool isRow(pugi::xml_node node) {
        if (node.type() != pugi::node_element)
            return false;
        // Siblings share their namespace bindings unless they declare their own.
        if (node.parent() == m_cachedParent && std::strcmp(node.name(), m_cachedName) == 0 &&
            !xmlns::declaresNamespace(node))
            return m_cachedIsRow;
        m_cachedParent = node.parent();
        m_cachedName = node.name();
        m_cachedIsRow = xmlns::isElement(node, m_schema.rowNamespace, m_schema.rowName);
        if (xmlns::declaresNamespace(node))
            m_cachedParent = pugi::xml_node();
        return m_cachedIsRow;
    }

    // Sets the values the element carries; columns it leaves out keep what the row holds.
    void fill(pugi::xml_node element, std::vector<QVariant>& row) {
        std::size_t next = 0;
        for (pugi::xml_attribute a = element.first_attribute(); a; a = a.next_attribute()) {
            const int column = columnOf(a.name(), next);
            if (column < 0)
                continue;
            const char* value = a.value();
            row[std::size_t(column)] = rowsetvalue::parse(
                m_schema.columns[std::size_t(column)].type, std::string_view(value), &m_offsets);
            next = std::size_t(column) + 1;
        }
    }

    std::vector<QVariant> emptyRow() const {
        return std::vector<QVariant>(m_schema.columns.size());
    }

private:
    int columnOf(const char* name, std::size_t hint) const {
        if (hint < m_schema.attributes.size() && std::strcmp(m_schema.attributes[hint], name) == 0)
            return int(hint);
        const auto it = m_byName.find(std::string_view(name));
        return it == m_byName.end() ? -1 : it->second;
    }

    const RowsetSchema& m_schema;
    std::unordered_map<std::string_view, int> m_byName;
    LocalOffsets m_offsets;
    pugi::xml_node m_cachedParent;
    const char* m_cachedName = "";
    bool m_cachedIsRow = false;
};

// Rows of the data part: plain rows, rows pending insertion, and updated rows (the original
// values overlaid with the changed ones). Rows pending deletion are no longer part of the set.
class DataReader {
public:
    DataReader(const RowsetSchema& schema, Rowset& out) : m_rows(schema), m_out(out) {}

    void read(pugi::xml_node data) {
        for (pugi::xml_node child : data.children()) {
            if (m_rows.isRow(child))
                addRow(child, nullptr);
            else if (xmlns::isElement(child, xmlns::Rowset, "insert"))
                readInsert(child);
            else if (xmlns::isElement(child, xmlns::Rowset, "update"))
                readUpdate(child);
        }
    }

private:
    void addRow(pugi::xml_node element, const std::vector<QVariant>* original) {
        std::vector<QVariant> row = original ? *original : m_rows.emptyRow();
        m_rows.fill(element, row);
        m_out.rows.push_back(std::move(row));
    }

    void readInsert(pugi::xml_node insert) {
        for (pugi::xml_node child : insert.children()) {
            if (m_rows.isRow(child))
                addRow(child, nullptr);
        }
    }

    void readUpdate(pugi::xml_node update) {
        std::unique_ptr<std::vector<QVariant>> original;
        for (pugi::xml_node child : update.children()) {
            if (xmlns::isElement(child, xmlns::Rowset, "original")) {
                if (original)
                    m_out.rows.push_back(*original);
                original = std::make_unique<std::vector<QVariant>>(m_rows.emptyRow());
                for (pugi::xml_node row : child.children()) {
                    if (m_rows.isRow(row)) {
                        m_rows.fill(row, *original);
                        break;
                    }
                }
            } else if (m_rows.isRow(child)) {
                addRow(child, original.get());
                original.reset();
            }
        }
        if (original)
            m_out.rows.push_back(*original);
    }

    RowBuilder m_rows;
    Rowset& m_out;
};

} // namespace

Rowset RowsetReader::read(const QByteArray& bytes) {
    QByteArray text = utf8Text(bytes);
    if (blank(text))
        unreadable(QStringLiteral("empty answer"));

    pugi::xml_document doc;
    // No whitespace conversion in attribute values and no line-end normalisation: rowsets
    // carry raw TAB, CR and LF inside values, and those must come through as they were.
    const unsigned options = pugi::parse_minimal | pugi::parse_escapes;
    const pugi::xml_parse_result parsed = doc.load_buffer_inplace(
        text.data(), std::size_t(text.size()), options, pugi::encoding_utf8);
    if (!parsed) {
        unreadable(QStringLiteral("not well-formed XML (%1 at byte %2)")
                       .arg(QString::fromUtf8(parsed.description()))
                       .arg(parsed.offset));
    }

    const pugi::xml_node root = doc.document_element();
    const pugi::xml_node schema = childElement(root, xmlns::Schema, "Schema");
    if (!schema) {
        unreadable(QStringLiteral("the document <%1> has no rowset schema")
                       .arg(QString::fromUtf8(root.name()).left(40)));
    }
    const pugi::xml_node data = childElement(root, xmlns::Rowset, "data");
    if (!data)
        unreadable(QStringLiteral("the rowset has no rs:data part"));

    const RowsetSchema rowsetSchema = RowsetSchemaReader::read(schema);
    Rowset rowset;
    rowset.columns = rowsetSchema.columns;
    DataReader(rowsetSchema, rowset).read(data);
    return rowset;
}

} // namespace wire
