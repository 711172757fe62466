// Reading a description with dax::SimpleXML, as the calibration data's loader does.
#include <memory>

#include "sdk/SimpleXML.h"
#include "support/Readers.h"

namespace bench {

namespace {

class Fields {
public:
    explicit Fields(dax::SimpleXML& document) : m_document(document) {}

    void operator()(const char* name, std::int32_t& field) { m_document.getInt(name, &field); }

    void operator()(const char* name, std::uint16_t& field) {
        m_document.getUnsignedShort(name, &field);
    }

    void operator()(const char* name, std::int16_t& field) {
        int value = field;
        m_document.getInt(name, &value);
        field = static_cast<std::int16_t>(value);
    }

    void operator()(const char* name, float& field) { m_document.getFloat(name, &field); }

    void operator()(const char* name, bool& field) { m_document.getBool(name, &field); }

    void operator()(const char* name, std::string& field) {
        if (const auto text = string(name)) field = text.get();
    }

    void operator()(const char* name, Word field) {
        if (const auto text = string(name)) field.isTrue = saysTrue(text.get());
    }

private:
    std::unique_ptr<char[]> string(const char* name) {
        char* text = nullptr;
        m_document.getString(name, &text);
        return std::unique_ptr<char[]>(text);
    }

    dax::SimpleXML& m_document;
};

void readRange(dax::SimpleXML& document, TemperatureRange& range) {
    Fields fields(document);
    visitFields(range, fields);
    if (document.setNode("Framerates")) {
        const int count = document.getNodeCount("Framerate");
        range.frameRates.resize(static_cast<std::size_t>(count));
        for (int k = 0; k < count; ++k) {
            if (!document.setNode("Framerate", k)) continue;
            fields("FR", range.frameRates[static_cast<std::size_t>(k)]);
            document.resetNode();
        }
        document.resetNode();
    }
    if (document.setNode("TableParams")) {
        visitFields(range.tableParams, fields);
        document.resetNode();
    }
}

void readOptics(dax::SimpleXML& document, OpticsDef& optics) {
    visitFields(optics, Fields(document));
    if (!document.setNode("TempRanges")) return;
    const int count = document.getNodeCount("TemperatureRange");
    optics.ranges.resize(static_cast<std::size_t>(count));
    for (int j = 0; j < count; ++j) {
        if (!document.setNode("TemperatureRange", j)) continue;
        readRange(document, optics.ranges[static_cast<std::size_t>(j)]);
        document.resetNode();
    }
    document.resetNode();
}

bool read(const char* file, Camera& camera) {
    dax::SimpleXML document;
    if (!document.open(file, "CaliData")) return false;
    document.setNode();
    document.setNode("Main");
    visitFields(camera.main, Fields(document));
    document.setNode();
    document.setNode("Temperature");
    document.setNode("Optics");
    const int count = document.getNodeCount("OpticsDef");
    camera.optics.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        if (!document.setNode("OpticsDef", i)) continue;
        readOptics(document, camera.optics[static_cast<std::size_t>(i)]);
        document.resetNode();
    }
    return true;
}

}  // namespace

const Reader kSimpleXml{"SimpleXML", read};

}  // namespace bench
