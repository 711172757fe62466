// Markup first; then what stands where it does not belong is noted and taken out of the tree, so
// that the schema's validator, which has the last word, comes to everything else.
#include "cli/ValidateDocument.h"

#include <libxml/tree.h>
#include <libxml/xmlschemas.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "cli/ValidateMarkup.h"
#include "cli/ValidateNames.h"
#include "cli/ValidateSchema.h"
#include "cli/XmlText.h"
#include "fetch/Memory.h"

namespace thermika::cli {

namespace {

constexpr std::string_view kInstanceNamespace = "http://www.w3.org/2001/XMLSchema-instance";

struct ValidatorDeleter {
    void operator()(xmlSchemaValidCtxt* context) const { xmlSchemaFreeValidCtxt(context); }
};

/// Where a schema lies, or an element's type: meant for editors. The validator, which has a schema,
/// follows no hint to another one; a type it judges.
bool isSchemaHint(const xmlAttr* attribute) {
    static constexpr std::string_view kNames[] = {"noNamespaceSchemaLocation", "schemaLocation",
                                                  "type"};
    return attribute->ns != nullptr &&
           reinterpret_cast<const char*>(attribute->ns->href) == kInstanceNamespace &&
           std::count(std::begin(kNames), std::end(kNames), view(attribute->name)) != 0;
}

/// The attribute that gives an element another type.
const xmlAttr* typeOf(const xmlNode* element) {
    return xmlHasNsProp(element, reinterpret_cast<const xmlChar*>("type"),
                        reinterpret_cast<const xmlChar*>(kInstanceNamespace.data()));
}

/// Whether a text that the schema takes for no whole number would be one for others.
bool hasZeroInFront(std::string_view content) {
    std::string_view digits = trimmed(content);
    if (digits.find_first_of("+-") == 0) digits.remove_prefix(1);
    return digits.substr(0, 1) == "0" &&
           digits.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string tag(std::string_view name) { return "<" + std::string(name) + ">"; }

bool isElement(const xmlNode* node) { return node->type == XML_ELEMENT_NODE; }

bool isText(const xmlNode* node) {
    return node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
}

void removeNode(xmlNode* node) {
    xmlUnlinkNode(node);
    xmlFreeNode(node);
}

class Checker {
public:
    explicit Checker(Markup markup) : m_markup(std::move(markup)) {}

    DocumentFindings run() {
        xmlNode* const root = xmlDocGetRootElement(m_markup.document.get());
        if (isRootRight(root)) {
            checkPlaces(root);
            validate();
            readSettings(root);
        }
        auto& findings = m_result.findings;
        std::stable_sort(findings.begin(), findings.end(),
                         [](const Finding& a, const Finding& b) { return a.line < b.line; });
        m_result.areMore = findings.size() > kMostFindings;
        if (m_result.areMore) findings.resize(kMostFindings);
        return std::move(m_result);
    }

private:
    void add(long line, std::string wrong, std::string right) {
        m_result.findings.push_back({line, std::move(wrong), std::move(right)});
    }

    long lineOf(const xmlNode* node) const {
        const auto at = m_markup.lines.find(node);
        return at == m_markup.lines.end() ? 1 : at->second;
    }

    bool isRootRight(const xmlNode* root) {
        const std::string& expected = m_schema.elements().front().name;
        const std::string name = nameOf(root);
        if (name != expected) {
            add(lineOf(root), "the root element is " + tag(name), "make it " + tag(expected));
            return false;
        }
        if (root->ns != nullptr) {
            addNamespace(root);
            return false;
        }
        return true;
    }

    void addNamespace(const xmlNode* element) {
        add(lineOf(element), tag(nameOf(element)) + " is in a namespace",
            "remove its attribute xmlns");
    }

    void addAttribute(const xmlNode* element, const xmlAttr* attribute) {
        const auto* const node = reinterpret_cast<const xmlNode*>(attribute);
        add(lineOf(element), tag(nameOf(element)) + " has the attribute " + inQuotes(nameOf(node)),
            "remove it");
    }

    /// Texts, elements and attributes of a container that do not belong there.
    void checkPlaces(xmlNode* container) {
        const std::string name = nameOf(container);
        checkAttributes(container);
        std::set<std::string> seen;
        for (xmlNode *child = container->children, *next = nullptr; child != nullptr;
             child = next) {
            next = child->next;
            if (isText(child)) {
                checkText(child);
                continue;
            }
            if (!isElement(child)) continue;
            const SchemaElement* const known =
                child->ns == nullptr ? m_schema.find(nameOf(child)) : nullptr;
            if (known != nullptr && known->parent == name && seen.insert(known->name).second) {
                if (known->isContainer)
                    checkPlaces(child);
                else
                    checkAttributes(child);
                continue;
            }
            reportPlace(child, known, name);
            removeNode(child);
        }
    }

    void checkText(xmlNode* text) {
        const auto at = m_markup.lines.find(text);
        if (at == m_markup.lines.end()) return;
        const std::string content = contentOf(text);
        const std::string_view shown = trimmed(content);
        if (shown == "-->")
            add(at->second, "\"-->\" ends no comment",
                "of the two comment lines around the suggested field of view, remove both or none");
        else if (shown.empty())
            add(at->second, "an empty character data section stands between elements", "remove it");
        else
            add(at->second, "the text " + inQuotes(shown) + " stands between elements",
                "remove it, or put it between \"<!--\" and \"-->\"");
        removeNode(text);
    }

    void checkAttributes(xmlNode* element) {
        for (xmlAttr *attribute = element->properties, *next = nullptr; attribute != nullptr;
             attribute = next) {
            next = attribute->next;
            if (isSchemaHint(attribute)) continue;
            addAttribute(element, attribute);
            xmlRemoveProp(attribute);
        }
    }

    void reportPlace(const xmlNode* element, const SchemaElement* known,
                     const std::string& container) {
        const std::string name = nameOf(element);
        const long line = lineOf(element);
        if (known == nullptr && element->ns != nullptr && m_schema.find(name) != nullptr) {
            addNamespace(element);
        } else if (known == nullptr) {
            const std::string nearest = nearestName(name, m_schema.elements());
            add(line, "no element is named " + tag(name),
                nearest.empty() ? "remove it; " + tag(container) + " holds " + childrenOf(container)
                                : "write " + tag(nearest) + " or remove it");
        } else if (known->parent == container) {
            add(line, tag(name) + " stands here a second time", "keep one of them");
        } else if (known->parent.empty()) {
            add(line, tag(name) + " stands inside " + tag(container), "keep the outer one");
        } else {
            add(line, tag(name) + " does not belong into " + tag(container),
                "move it into " + tag(known->parent));
        }
    }

    std::string childrenOf(const std::string& container) const {
        std::string names;
        for (const SchemaElement& element : m_schema.elements())
            if (element.parent == container) names += (names.empty() ? "" : ", ") + element.name;
        return names;
    }

    void validate() {
        const std::unique_ptr<xmlSchemaValidCtxt, ValidatorDeleter> context(
            xmlSchemaNewValidCtxt(m_schema.get()));
        fetch::ensureMemory(context != nullptr);
        xmlSchemaSetValidStructuredErrors(
            context.get(),
            [](void* self, xmlError* error) { static_cast<Checker*>(self)->report(*error); }, this);
        fetch::ensureMemory(xmlSchemaValidateDoc(context.get(), m_markup.document.get()) >= 0);
    }

    void report(const xmlError& error) {
        auto* const node = static_cast<xmlNode*>(error.node);
        if (node == nullptr || !m_wrongNodes.insert(node).second) return;
        if (const xmlAttr* const type = typeOf(node)) {
            addAttribute(node, type);
            return;
        }
        const std::string name = nameOf(node);
        const SchemaElement* const known = m_schema.find(name);
        if (known == nullptr || known->isContainer) {
            if (!reportMissing(node, name))
                add(lineOf(node), tag(name) + " is not as it should be",
                    "leave it as thermika config prints it");
            return;
        }
        if (const xmlNode* const inner = xmlFirstElementChild(node)) {
            add(lineOf(inner), tag(name) + " holds the element " + tag(nameOf(inner)),
                "without its tags give " + known->words);
            return;
        }
        const std::string content = contentOf(node);
        std::string wrong = tag(name);
        wrong += content.empty() ? " is empty" : " holds " + inQuotes(content);
        if (error.code == XML_SCHEMAV_CVC_PATTERN_VALID && hasZeroInFront(content))
            wrong += ", with a zero in front";
        add(lineOf(node), std::move(wrong), "give " + known->words);
    }

    bool reportMissing(const xmlNode* container, const std::string& name) {
        bool isAnyMissing = false;
        for (const SchemaElement& element : m_schema.elements()) {
            if (element.parent != name || !element.isRequired ||
                childOf(container, element.name) != nullptr)
                continue;
            isAnyMissing = true;
            add(lineOf(container), tag(name) + " has no " + tag(element.name),
                "add it with " + element.words);
        }
        return isAnyMissing;
    }

    static const xmlNode* childOf(const xmlNode* container, std::string_view name) {
        const xmlNode* child = container->children;
        while (child != nullptr && !(isElement(child) && nameOf(child) == name))
            child = child->next;
        return child;
    }

    bool isRight(const xmlNode* node) const {
        return node != nullptr && m_wrongNodes.count(node) == 0;
    }

    void readSettings(const xmlNode* root) {
        ImagerSettings& settings = m_result.settings;
        settings.serial = number(childOf(root, "serial"));
        settings.fovDeg = number(childOf(root, "fov"));
        if (const xmlNode* const limits = childOf(root, "temperature")) {
            settings.minTempC = number(childOf(limits, "min"));
            settings.maxTempC = number(childOf(limits, "max"));
        }
        const xmlNode* const text = childOf(root, "optics_text");
        if (isRight(text)) settings.opticsText = DocumentText{contentOf(text), lineOf(text)};
    }

    /// What the schema took for a whole number: blanks around it and a sign of plus may stand
    /// there.
    std::optional<DocumentNumber> number(const xmlNode* node) const {
        if (!isRight(node)) return std::nullopt;
        const std::string content = contentOf(node);
        std::string_view digits = trimmed(content);
        if (digits.substr(0, 1) == "+") digits.remove_prefix(1);
        DocumentNumber found{0, lineOf(node)};
        std::from_chars(digits.data(), digits.data() + digits.size(), found.value);
        return found;
    }

    const ImagerSchema& m_schema = ImagerSchema::instance();
    Markup m_markup;
    DocumentFindings m_result;
    std::set<const xmlNode*> m_wrongNodes;
};

}  // namespace

DocumentFindings checkDocument(std::string_view bytes) {
    if (bytes.size() > kMostDocumentBytes)
        return {{{1, "the document has more than " + std::to_string(kMostDocumentBytes) + " bytes",
                  "begin with the one that thermika config prints"}},
                {}};
    Markup markup = parseMarkup(bytes);
    if (markup.wrong) return {{std::move(*markup.wrong)}, {}};
    return Checker(std::move(markup)).run();
}

}  // namespace thermika::cli
