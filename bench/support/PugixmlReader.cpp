// Reading a description with pugixml: nothing but elements and their text, the text kept in them.
#include <pugixml.hpp>

#include "support/Readers.h"

namespace bench {

namespace {

constexpr unsigned int kFlags = pugi::parse_minimal | pugi::parse_embed_pcdata;

class Fields {
public:
    explicit Fields(pugi::xml_node parent) : m_parent(parent) {}

    template <typename T>
    void operator()(const char* name, T&& field) const {
        if (const pugi::xml_node node = m_parent.child(name)) store(node.text(), field);
    }

private:
    static void store(pugi::xml_text text, std::int32_t& field) { field = text.as_int(); }
    static void store(pugi::xml_text text, std::int16_t& field) {
        field = static_cast<std::int16_t>(text.as_int());
    }
    static void store(pugi::xml_text text, std::uint16_t& field) {
        field = static_cast<std::uint16_t>(text.as_uint());
    }
    static void store(pugi::xml_text text, float& field) { field = text.as_float(); }
    static void store(pugi::xml_text text, bool& field) { field = text.as_int() != 0; }
    static void store(pugi::xml_text text, std::string& field) { field = text.get(); }
    static void store(pugi::xml_text text, const Word& field) {
        field.isTrue = saysTrue(text.get());
    }

    pugi::xml_node m_parent;
};

void readRange(pugi::xml_node node, TemperatureRange& range) {
    visitFields(range, Fields(node));
    for (const pugi::xml_node rate : node.child("Framerates").children("Framerate"))
        Fields{rate}("FR", range.frameRates.emplace_back());
    if (const pugi::xml_node params = node.child("TableParams"))
        visitFields(range.tableParams, Fields(params));
}

void readOptics(pugi::xml_node node, OpticsDef& optics) {
    visitFields(optics, Fields(node));
    for (const pugi::xml_node range : node.child("TempRanges").children("TemperatureRange"))
        readRange(range, optics.ranges.emplace_back());
}

bool read(const char* file, Camera& camera) {
    pugi::xml_document document;
    if (!document.load_file(file, kFlags)) return false;
    const pugi::xml_node root = document.child("CaliData");
    visitFields(camera.main, Fields(root.child("Main")));
    for (const pugi::xml_node optics :
         root.child("Temperature").child("Optics").children("OpticsDef"))
        readOptics(optics, camera.optics.emplace_back());
    return true;
}

}  // namespace

const Reader kPugixml{"pugixml", read};

}  // namespace bench
