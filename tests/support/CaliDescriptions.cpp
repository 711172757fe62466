// See the header.
#include "support/CaliDescriptions.h"

#include <memory>
#include <stdexcept>

#include "imgproc/internal/CaliReader.h"
#include "sdk/SimpleXML.h"

namespace thermika_test {

namespace {

std::string element(std::string_view name, std::string_view content) {
    return std::string("<")
        .append(name)
        .append(">")
        .append(content)
        .append("</")
        .append(name)
        .append(">\n");
}

void openDocument(dax::SimpleXML& document, std::string_view content) {
    const TempDir folder;
    writeFile(folder / "document.xml", description(content));
    if (!document.open((folder / "document.xml").c_str(), "CaliData"))
        throw std::runtime_error("the document does not open");
}

}  // namespace

std::string description(std::string_view content) {
    return std::string("<CaliData>\n").append(content).append("\n</CaliData>\n");
}

std::string opticsList(std::string_view optics) {
    return element("Temperature", element("Optics", optics));
}

std::string opticsElement(int fov, std::string_view text, std::string_view ranges) {
    return element("OpticsDef", element("FOV", std::to_string(fov)) + element("Text", text) +
                                    element("TempRanges", ranges));
}

std::string rangeElement(std::string_view low, std::string_view high, std::string_view more) {
    return element("TemperatureRange",
                   element("TempLo", low) + element("TempHi", high) + std::string(more));
}

void writeDescription(const TempDir& folder, int serial, std::string_view content) {
    writeFile(folder / ("Cali-" + std::to_string(serial) + ".xml"), description(content));
}

MainSection mainOf(std::string_view content) {
    dax::SimpleXML document;
    openDocument(document, content);
    MainSection section;
    readMainSection(document, section);
    return section;
}

std::vector<OpticsDef> opticsOf(std::string_view content) {
    dax::SimpleXML document;
    openDocument(document, content);
    return readOptics(document);
}

LoadedCali::LoadedCali(std::string_view content) {
    writeDescription(m_folder, kSerial, content);
    if (m_cali.load(m_folder.path().c_str(), kSerial) != 0)
        throw std::runtime_error("the description does not load");
}

char* asText(const char* text) { return const_cast<char*>(text); }

Bounds take(Range* range) {
    const std::unique_ptr<Range> owned(range);
    if (!owned) return std::nullopt;
    return std::make_pair(owned->min, owned->max);
}

std::pair<int, std::string> take(OPTICS* optics) {
    const std::unique_ptr<OPTICS> owned(optics);
    if (!owned) throw std::runtime_error("no optics was handed out");
    return {owned->fov, owned->text == nullptr ? "(null)" : owned->text};
}

}  // namespace thermika_test
