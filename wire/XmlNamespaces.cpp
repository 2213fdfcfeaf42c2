#include "XmlNamespaces.h"

#include <cstring>

namespace wire::xmlns {

namespace {

bool sameUri(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        char x = a[i];
        char y = b[i];
        if (x >= 'A' && x <= 'Z')
            x = char(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z')
            y = char(y - 'A' + 'a');
        if (x != y)
            return false;
    }
    return true;
}

bool isDeclaration(const char* name) {
    return std::strncmp(name, "xmlns", 5) == 0;
}

} // namespace

QName split(const char* qualifiedName) {
    const std::string_view name(qualifiedName);
    const auto colon = name.find(':');
    if (colon == std::string_view::npos)
        return {{}, name};
    return {name.substr(0, colon), name.substr(colon + 1)};
}

std::string_view lookup(pugi::xml_node element, std::string_view prefix) {
    for (pugi::xml_node n = element; n && n.type() == pugi::node_element; n = n.parent()) {
        for (pugi::xml_attribute a = n.first_attribute(); a; a = a.next_attribute()) {
            const char* name = a.name();
            if (name[0] != 'x' || !isDeclaration(name))
                continue;
            const std::string_view declared =
                name[5] == ':' ? std::string_view(name + 6) : std::string_view();
            if (name[5] != ':' && name[5] != '\0')
                continue;
            if (declared == prefix)
                return a.value();
        }
    }
    return {};
}

bool isElement(pugi::xml_node node, std::string_view uri, std::string_view local) {
    if (node.type() != pugi::node_element)
        return false;
    const QName q = split(node.name());
    return q.local == local && sameUri(lookup(node, q.prefix), uri);
}

bool declaresNamespace(pugi::xml_node element) {
    for (pugi::xml_attribute a = element.first_attribute(); a; a = a.next_attribute()) {
        if (a.name()[0] == 'x' && isDeclaration(a.name()))
            return true;
    }
    return false;
}

pugi::xml_attribute attribute(pugi::xml_node element, std::string_view uri,
                              std::string_view local) {
    for (pugi::xml_attribute a = element.first_attribute(); a; a = a.next_attribute()) {
        const QName q = split(a.name());
        if (q.local != local)
            continue;
        // An unprefixed attribute is in no namespace, whatever the default namespace is.
        if (uri.empty() ? q.prefix.empty()
                        : (!q.prefix.empty() && sameUri(lookup(element, q.prefix), uri)))
            return a;
    }
    return {};
}

} // namespace wire::xmlns
