#pragma once

#include <pugixml.hpp>
#include <string_view>

namespace wire {

// Namespace-aware look-ups over a pugixml tree, which itself knows only qualified names.
// Elements and attributes are matched by namespace URI, never by prefix: a rowset may bind
// any prefix to the rowset namespaces.
namespace xmlns {

inline constexpr std::string_view Schema = "uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882";
inline constexpr std::string_view DataType = "uuid:C2F41010-65B3-11d1-A29F-00AA00C14882";
inline constexpr std::string_view Rowset = "urn:schemas-microsoft-com:rowset";
inline constexpr std::string_view RowsetSchema = "#RowsetSchema";

struct QName {
    std::string_view prefix; // empty when unprefixed
    std::string_view local;
};
QName split(const char* qualifiedName);

// The URI bound to a prefix at an element (its own declarations, then its ancestors').
// The empty prefix gives the default namespace. Unbound: an empty view.
std::string_view lookup(pugi::xml_node element, std::string_view prefix);

// Whether the node names {uri}local. The URIs compare without regard to case: the rowset
// namespaces are GUIDs, written either way.
bool isElement(pugi::xml_node node, std::string_view uri, std::string_view local);

// Whether the element itself declares a namespace (an xmlns or xmlns:p attribute).
bool declaresNamespace(pugi::xml_node element);

// The attribute {uri}local of an element, or an empty attribute. An empty uri finds the
// unprefixed attribute local.
pugi::xml_attribute attribute(pugi::xml_node element, std::string_view uri, std::string_view local);

} // namespace xmlns

} // namespace wire
