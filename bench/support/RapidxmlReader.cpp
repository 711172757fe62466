// Reading a description with rapidxml: neither terminators nor data nodes are written.
#include <rapidxml/rapidxml.hpp>
#include <rapidxml/rapidxml_utils.hpp>

#include "support/Characters.h"
#include "support/Readers.h"

namespace bench {

namespace {

using Node = rapidxml::xml_node<>;

class Loaded {
public:
    explicit Loaded(const char* path) : m_file(path) {
        m_document.parse<rapidxml::parse_fastest>(m_file.data());
    }

    Node* root() const { return m_document.first_node("CaliData", 8); }

private:
    rapidxml::file<> m_file;
    rapidxml::xml_document<> m_document;
};

template <std::size_t N>
Node* child(const Node* parent, const char (&name)[N]) {
    return parent->first_node(name, N - 1);
}

template <std::size_t N>
Node* sibling(const Node* node, const char (&name)[N]) {
    return node->next_sibling(name, N - 1);
}

class Fields {
public:
    explicit Fields(const Node* parent) : m_parent(parent) {}

    template <std::size_t N, typename T>
    void operator()(const char (&name)[N], T&& field) const {
        if (const Node* const node = child(m_parent, name))
            assign(std::string_view(node->value(), node->value_size()), field);
    }

private:
    const Node* m_parent;
};

void readRange(const Node* node, TemperatureRange& range) {
    visitFields(range, Fields(node));
    if (const Node* const rates = child(node, "Framerates")) {
        for (const Node* rate = child(rates, "Framerate"); rate; rate = sibling(rate, "Framerate"))
            Fields{rate}("FR", range.frameRates.emplace_back());
    }
    if (const Node* const params = child(node, "TableParams"))
        visitFields(range.tableParams, Fields(params));
}

void readOptics(const Node* node, OpticsDef& optics) {
    visitFields(optics, Fields(node));
    const Node* const ranges = child(node, "TempRanges");
    if (ranges == nullptr) return;
    for (const Node* range = child(ranges, "TemperatureRange"); range;
         range = sibling(range, "TemperatureRange"))
        readRange(range, optics.ranges.emplace_back());
}

bool read(const char* file, Camera& camera) {
    const Loaded document(file);
    const Node* const root = document.root();
    visitFields(camera.main, Fields(child(root, "Main")));
    const Node* const list = child(child(root, "Temperature"), "Optics");
    for (const Node* optics = child(list, "OpticsDef"); optics;
         optics = sibling(optics, "OpticsDef"))
        readOptics(optics, camera.optics.emplace_back());
    return true;
}

}  // namespace

const Reader kRapidxml{"rapidxml", read};

}  // namespace bench
