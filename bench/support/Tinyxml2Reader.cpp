// Reading a description with tinyxml2.
#include <tinyxml2.h>

#include "support/Readers.h"

namespace bench {

namespace {

using Element = tinyxml2::XMLElement;

class Fields {
public:
    explicit Fields(const Element* parent) : m_parent(parent) {}

    template <typename T>
    void operator()(const char* name, T&& field) const {
        if (const Element* const element = m_parent->FirstChildElement(name))
            store(*element, field);
    }

private:
    static void store(const Element& element, std::int32_t& field) { field = element.IntText(); }
    static void store(const Element& element, std::int16_t& field) {
        field = static_cast<std::int16_t>(element.IntText());
    }
    static void store(const Element& element, std::uint16_t& field) {
        field = static_cast<std::uint16_t>(element.UnsignedText());
    }
    static void store(const Element& element, float& field) { field = element.FloatText(); }
    static void store(const Element& element, bool& field) { field = element.IntText() != 0; }
    static void store(const Element& element, std::string& field) { field = text(element); }
    static void store(const Element& element, const Word& field) {
        field.isTrue = saysTrue(text(element));
    }

    static const char* text(const Element& element) {
        const char* const text = element.GetText();
        return text == nullptr ? "" : text;
    }

    const Element* m_parent;
};

void readRange(const Element* node, TemperatureRange& range) {
    visitFields(range, Fields(node));
    if (const Element* const rates = node->FirstChildElement("Framerates")) {
        for (const Element* rate = rates->FirstChildElement("Framerate"); rate;
             rate = rate->NextSiblingElement("Framerate"))
            Fields{rate}("FR", range.frameRates.emplace_back());
    }
    if (const Element* const params = node->FirstChildElement("TableParams"))
        visitFields(range.tableParams, Fields(params));
}

void readOptics(const Element* node, OpticsDef& optics) {
    visitFields(optics, Fields(node));
    const Element* const ranges = node->FirstChildElement("TempRanges");
    if (ranges == nullptr) return;
    for (const Element* range = ranges->FirstChildElement("TemperatureRange"); range;
         range = range->NextSiblingElement("TemperatureRange"))
        readRange(range, optics.ranges.emplace_back());
}

bool read(const char* file, Camera& camera) {
    tinyxml2::XMLDocument document;
    if (document.LoadFile(file) != tinyxml2::XML_SUCCESS) return false;
    const Element* const root = document.FirstChildElement("CaliData");
    visitFields(camera.main, Fields(root->FirstChildElement("Main")));
    const Element* const list = root->FirstChildElement("Temperature")->FirstChildElement("Optics");
    for (const Element* optics = list->FirstChildElement("OpticsDef"); optics;
         optics = optics->NextSiblingElement("OpticsDef"))
        readOptics(optics, camera.optics.emplace_back());
    return true;
}

}  // namespace

const Reader kTinyxml2{"tinyxml2", read};

}  // namespace bench
