#include "RowsetSchemaReader.h"

#include "RowsetValue.h"
#include "XmlNamespaces.h"
#include <algorithm>
#include <charconv>
#include <cstring>

namespace wire {

namespace {

struct Definition {
    pugi::xml_node node;
    int order = 0; // position in the document, for columns without rs:number
};

std::string_view text(pugi::xml_attribute a) {
    return a ? std::string_view(a.value()) : "";
}

bool isTrue(std::string_view s) {
    return s == "true" || s == "1" || s == "True";
}
bool isFalse(std::string_view s) {
    return s == "false" || s == "0" || s == "False";
}

int toInt(std::string_view s, int fallback) {
    int value = 0;
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), value);
    return (ec == std::errc() && end == s.data() + s.size() && !s.empty()) ? value : fallback;
}

QString qtext(std::string_view s) {
    return rowsetvalue::text(s);
}

// The type facts of a column: on the s:datatype child when there is one, else on the
// s:AttributeType itself.
pugi::xml_attribute typeFact(pugi::xml_node attributeType, pugi::xml_node datatype,
                             std::string_view uri, std::string_view local) {
    if (datatype) {
        if (auto a = xmlns::attribute(datatype, uri, local))
            return a;
    }
    return xmlns::attribute(attributeType, uri, local);
}

Column readColumn(const Definition& d) {
    const pugi::xml_node node = d.node;
    pugi::xml_node datatype;
    for (pugi::xml_node child : node.children()) {
        if (xmlns::isElement(child, xmlns::Schema, "datatype")) {
            datatype = child;
            break;
        }
    }
    Column c;
    c.attribute = qtext(text(xmlns::attribute(node, {}, "name")));
    const auto realName = xmlns::attribute(node, xmlns::Rowset, "name");
    c.name = realName ? qtext(realName.value()) : c.attribute;
    c.number = toInt(text(xmlns::attribute(node, xmlns::Rowset, "number")), d.order);
    const auto type = typeFact(node, datatype, xmlns::DataType, "type");
    c.type = type ? fieldTypeFromName(qtext(type.value())) : FieldType::String;
    c.dbType = qtext(text(typeFact(node, datatype, xmlns::Rowset, "dbtype")));
    c.maxLength = toInt(text(typeFact(node, datatype, xmlns::DataType, "maxLength")), -1);
    const std::string_view maybeNull = text(typeFact(node, datatype, xmlns::Rowset, "maybenull"));
    const std::string_view nullable = text(xmlns::attribute(node, xmlns::Rowset, "nullable"));
    c.nullable = !isFalse(maybeNull) && !isFalse(nullable);
    if (isTrue(nullable) || isTrue(maybeNull))
        c.nullable = true;
    return c;
}

// Columns are the s:AttributeType children of the row's s:ElementType, and those declared at
// the top of the schema (which an ElementType refers to with s:attribute).
void collectDefinitions(pugi::xml_node parent, std::vector<Definition>& out) {
    for (pugi::xml_node child : parent.children()) {
        if (xmlns::isElement(child, xmlns::Schema, "AttributeType")) {
            const auto name = xmlns::attribute(child, {}, "name");
            if (!name || name.value()[0] == '\0')
                continue;
            const bool known = std::any_of(out.begin(), out.end(), [&](const Definition& d) {
                return std::strcmp(d.node.attribute("name").value(), name.value()) == 0;
            });
            if (!known)
                out.push_back({child, int(out.size()) + 1});
        }
    }
}

} // namespace

RowsetSchema RowsetSchemaReader::read(pugi::xml_node schema) {
    RowsetSchema result;
    const auto id = xmlns::attribute(schema, {}, "id");
    result.rowNamespace = "#" + std::string(id ? id.value() : "RowsetSchema");
    result.rowName = "row";

    std::vector<Definition> definitions;
    for (pugi::xml_node child : schema.children()) {
        if (xmlns::isElement(child, xmlns::Schema, "ElementType")) {
            if (const auto name = xmlns::attribute(child, {}, "name"))
                result.rowName = name.value();
            collectDefinitions(child, definitions);
            break;
        }
    }
    collectDefinitions(schema, definitions);

    std::vector<std::pair<Column, const char*>> columns;
    columns.reserve(definitions.size());
    for (const Definition& d : definitions)
        columns.emplace_back(readColumn(d), xmlns::attribute(d.node, {}, "name").value());
    std::stable_sort(columns.begin(), columns.end(),
                     [](const auto& a, const auto& b) { return a.first.number < b.first.number; });
    for (auto& [column, attribute] : columns) {
        result.columns.push_back(std::move(column));
        result.attributes.push_back(attribute);
    }
    return result;
}

} // namespace wire
