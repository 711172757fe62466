// Reads the compiled-in schema once: as a validator and as a list of elements in words.
#include "cli/ValidateSchema.h"

#include <libxml/parser.h>

#include <algorithm>

#include "cli/XmlText.h"
#include "fetch/Memory.h"

namespace thermika::cli {

namespace {

struct ParserDeleter {
    void operator()(xmlSchemaParserCtxt* context) const { xmlSchemaFreeParserCtxt(context); }
};

std::string attribute(xmlNode* node, const char* name) {
    const XmlText value(xmlGetNoNsProp(node, reinterpret_cast<const xmlChar*>(name)));
    return value ? std::string(view(value.get())) : std::string();
}

bool isNamed(const xmlNode* node, std::string_view name) {
    return node->type == XML_ELEMENT_NODE && view(node->name) == name;
}

/// The first descendant of that name. An element's own description stands before its children.
xmlNode* below(xmlNode* node, std::string_view name) {
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (isNamed(child, name)) return child;
        if (xmlNode* const found = below(child, name)) return found;
    }
    return nullptr;
}

void collect(xmlNode* node, const std::string& parent, std::vector<SchemaElement>& elements) {
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE) continue;
        if (!isNamed(child, "element")) {
            collect(child, parent, elements);
            continue;
        }
        SchemaElement element;
        element.name = attribute(child, "name");
        element.parent = parent;
        element.words = contentOf(below(child, "documentation"));
        element.isRequired = !parent.empty() && attribute(child, "minOccurs").empty();
        element.isContainer = below(child, "complexType") != nullptr;
        elements.push_back(element);
        collect(child, element.name, elements);
    }
}

}  // namespace

const ImagerSchema& ImagerSchema::instance() {
    static const ImagerSchema schema;
    return schema;
}

ImagerSchema::ImagerSchema() {
    const std::string_view text = imagerSchemaText();
    m_document.reset(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                   XML_PARSE_NONET | XML_PARSE_NOBLANKS));
    fetch::ensureMemory(m_document != nullptr);  // nothing else can go wrong with our own text
    const std::unique_ptr<xmlSchemaParserCtxt, ParserDeleter> context(
        xmlSchemaNewDocParserCtxt(m_document.get()));
    fetch::ensureMemory(context != nullptr);
    m_schema.reset(xmlSchemaParse(context.get()));
    fetch::ensureMemory(m_schema != nullptr);
    collect(xmlDocGetRootElement(m_document.get()), "", m_elements);
}

const SchemaElement* ImagerSchema::find(std::string_view name) const {
    const auto found =
        std::find_if(m_elements.begin(), m_elements.end(),
                     [name](const SchemaElement& element) { return element.name == name; });
    return found == m_elements.end() ? nullptr : &*found;
}

}  // namespace thermika::cli
