// Reading a description with libxml2's tree.
#include <libxml/parser.h>

#include <cstring>
#include <memory>

#include "support/Characters.h"
#include "support/Readers.h"

namespace bench {

namespace {

constexpr int kFlags = XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_COMPACT | XML_PARSE_HUGE |
                       XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

struct DocumentRelease {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using Document = std::unique_ptr<xmlDoc, DocumentRelease>;

bool isNamed(const xmlNode* node, const char* name) {
    return node->type == XML_ELEMENT_NODE &&
           std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

const xmlNode* firstNamed(const xmlNode* node, const char* name) {
    while (node != nullptr && !isNamed(node, name)) node = node->next;
    return node;
}

const xmlNode* child(const xmlNode* parent, const char* name) {
    return firstNamed(parent->children, name);
}

const xmlNode* sibling(const xmlNode* node, const char* name) {
    return firstNamed(node->next, name);
}

class Fields {
public:
    explicit Fields(const xmlNode* parent) : m_parent(parent) {}

    template <typename T>
    void operator()(const char* name, T&& field) const {
        const xmlNode* const node = child(m_parent, name);
        if (node == nullptr) return;
        const xmlNode* const text = node->children;
        assign(text == nullptr ? "" : reinterpret_cast<const char*>(text->content), field);
    }

private:
    const xmlNode* m_parent;
};

void readRange(const xmlNode* node, TemperatureRange& range) {
    visitFields(range, Fields(node));
    if (const xmlNode* const rates = child(node, "Framerates")) {
        for (const xmlNode* rate = child(rates, "Framerate"); rate;
             rate = sibling(rate, "Framerate"))
            Fields{rate}("FR", range.frameRates.emplace_back());
    }
    if (const xmlNode* const params = child(node, "TableParams"))
        visitFields(range.tableParams, Fields(params));
}

void readOptics(const xmlNode* node, OpticsDef& optics) {
    visitFields(optics, Fields(node));
    const xmlNode* const ranges = child(node, "TempRanges");
    if (ranges == nullptr) return;
    for (const xmlNode* range = child(ranges, "TemperatureRange"); range;
         range = sibling(range, "TemperatureRange"))
        readRange(range, optics.ranges.emplace_back());
}

bool read(const char* file, Camera& camera) {
    const Document document(xmlReadFile(file, nullptr, kFlags));
    if (document == nullptr) return false;
    const xmlNode* const root = xmlDocGetRootElement(document.get());
    visitFields(camera.main, Fields(child(root, "Main")));
    const xmlNode* const list = child(child(root, "Temperature"), "Optics");
    for (const xmlNode* optics = child(list, "OpticsDef"); optics;
         optics = sibling(optics, "OpticsDef"))
        readOptics(optics, camera.optics.emplace_back());
    return true;
}

}  // namespace

const Reader kLibxml2{"libxml2", read};

}  // namespace bench
