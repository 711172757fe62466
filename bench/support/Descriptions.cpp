// See the header.
#include "support/Descriptions.h"

#include <string_view>

namespace bench {

namespace {

constexpr int kMinOptics = 3;
constexpr int kRangesPerOptics = 4;
constexpr int kFrameRates[] = {27, 80};

struct Limits {
    int lowC;
    int highC;
};
constexpr Limits kLimits[kRangesPerOptics] = {{-20, 100}, {0, 250}, {150, 900}, {450, 1500}};

/// Writes lines of elements, each as deep as it stands.
class Writer {
public:
    explicit Writer(bool withComments) : m_withComments(withComments) {}

    void open(std::string_view name) {
        indent();
        m_text.append("<").append(name).append(">\n");
        ++m_depth;
    }

    void close(std::string_view name) {
        --m_depth;
        indent();
        m_text.append("</").append(name).append(">\n");
    }

    void value(std::string_view name, std::string_view content) {
        if (m_withComments) comment("as measured on the test bench; -1 where it was not");
        indent();
        m_text.append("<").append(name).append(">").append(content);
        m_text.append("</").append(name).append(">\n");
    }

    void value(std::string_view name, int number) { value(name, std::to_string(number)); }

    /// A decimal with three places.
    void thousandths(std::string_view name, int number) {
        const int size = number < 0 ? -number : number;
        std::string places = std::to_string(size % 1000);
        places.insert(0, 3 - places.size(), '0');
        value(name, (number < 0 ? "-" : "") + std::to_string(size / 1000) + "." + places);
    }

    void comment(std::string_view content) {
        indent();
        m_text.append("<!-- ").append(content).append(" -->\n");
    }

    std::string& text() { return m_text; }

private:
    void indent() { m_text.append(m_depth * 2, ' '); }

    std::string m_text;
    std::size_t m_depth = 0;
    bool m_withComments;
};

void writeMain(Writer& out, bool isSparse) {
    out.open("Main");
    out.value("TecA", 3412);
    out.value("TecB", 398);
    if (!isSparse) {
        out.value("TecC", 401);
        out.value("TecD", 118);
        out.thousandths("TempTEC_Step", 5000);
        out.thousandths("TempTECOffset", 294250);
        out.thousandths("TempTECGain", 13062);
        out.thousandths("TempFlagOffset", 350);
        out.thousandths("TempChipFactor", 1012);
        out.thousandths("TempChipOffset", -750);
        out.thousandths("TempBoxOffset", 500);
        out.thousandths("TempOpticsOffset", -250);
        out.thousandths("TempProcOffset", 1500);
        out.thousandths("TempHouseOffset", 0);
        out.thousandths("PifInOffset", 0);
        out.thousandths("PifInGain", 1000);
        out.thousandths("PifOutOffset", 125);
        out.thousandths("PifOutGain", 985);
        out.value("AddedOffset", -12);
        out.thousandths("BindTempChipToTempFlagOffset", 800);
        out.value("FlagCycles", 10);
        out.value("FlagCycles_Ignore", 2);
        out.thousandths("AlphaLowTemp", 23000);
        out.thousandths("AlphaLowFactor", 1050);
    }
    out.thousandths("TBoxTAmbDiff", 5000);
    out.close("Main");
}

void writeRange(Writer& out, int optics, int range, bool isSparse) {
    const auto [lowC, highC] = kLimits[range];
    out.open("TemperatureRange");
    if (!isSparse) {
        out.value("Fid", range);
        out.value("Skim", 1800 + optics % 97);
        out.value("SkimRatio", 3 + optics % 5);
    }
    out.thousandths("TempLo", lowC * 1000);
    out.thousandths("TempHi", highC * 1000);
    if (!isSparse) {
        out.thousandths("TempLoExt", lowC * 1000 - 10500);
        out.thousandths("TempHiExt", highC * 1000 + 10250);
        out.open("Framerates");
        for (const int rate : kFrameRates) {
            out.open("Framerate");
            out.value("FR", rate);
            out.close("Framerate");
        }
        out.close("Framerates");
        out.value("Decimal", range % 2);
        out.open("TableParams");
        out.value("Normalize", range % 2);
        out.value("T1", lowC);
        out.value("T3", highC);
        out.value("E1", 95);
        out.value("E3", 98 + optics % 3);
        out.thousandths("Lambda", 10500);
        out.close("TableParams");
    }
    out.close("TemperatureRange");
}

void writeOptics(Writer& out, int optics, bool isSparse) {
    out.comment("Optics " + std::to_string(optics + 1));
    out.open("OpticsDef");
    out.value("FOV", 6 + optics % 90);
    if (!isSparse) {
        out.value("SerNo", 1207 + optics);
        out.value("Text", optics % 3 == 0 ? "" : "Close-up " + std::to_string(optics));
        out.value("SamplePointCali", optics % 2 == 0 ? "false" : "True");
    }
    out.open("TempRanges");
    for (int range = 0; range < kRangesPerOptics; ++range) writeRange(out, optics, range, isSparse);
    out.close("TempRanges");
    out.close("OpticsDef");
}

}  // namespace

std::string makeDescription(std::size_t bytes, Content content) {
    const bool isSparse = content == Content::kSparse;
    Writer out(content == Content::kComments);
    std::string& text = out.text();
    text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    out.comment("Calibration description of a camera.");
    out.open("CaliData");
    writeMain(out, isSparse);
    out.open("Temperature");
    out.open("Optics");
    std::size_t opticsBytes = 0;
    for (int optics = 0; optics < kMinOptics || text.size() + opticsBytes <= bytes; ++optics) {
        const std::size_t before = text.size();
        writeOptics(out, optics, isSparse);
        opticsBytes = text.size() - before;
    }
    out.close("Optics");
    out.close("Temperature");
    out.close("CaliData");
    return std::move(text);
}

std::string makeSiblings(std::size_t count) {
    std::string text = "<CaliData>\n";
    for (std::size_t i = 0; i < count; ++i)
        text.append("<Item>").append(std::to_string(i)).append("</Item>\n");
    return text.append("</CaliData>\n");
}

}  // namespace bench
