// The elements of a calibration description, in the order in which they are read.
#include "imgproc/CaliReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "sdk/StringHelpers.h"

namespace {

using dax::SimpleXML;

/// Fields of 16 bits keep the low ones of what the document says, fields of 64 bits all of it.
template <typename T>
void readInteger(SimpleXML& document, const char* name, T& field) {
    auto value = static_cast<int>(field);
    if (document.getInt(name, &value)) field = static_cast<T>(value);
}

std::unique_ptr<char[]> readString(SimpleXML& document, const char* name) {
    char* text = nullptr;
    document.getString(name, &text);
    return std::unique_ptr<char[]>(text);
}

void readTableParams(SimpleXML& document, TableParams& table) {
    int normalize = 0;
    if (document.getInt("Normalize", &normalize)) table.Normalize = normalize != 0;
    readInteger(document, "T1", table.T1);
    readInteger(document, "T3", table.T3);
    readInteger(document, "E1", table.E1);
    readInteger(document, "E3", table.E3);
    float lambda = 0.0F;
    if (document.getFloat("Lambda", &lambda)) table.Lambda = static_cast<double>(lambda);
}

std::vector<std::uint16_t> readFramerates(SimpleXML& document) {
    std::vector<std::uint16_t> rates(static_cast<std::size_t>(document.getNodeCount("Framerate")));
    for (std::size_t k = 0; k < rates.size(); ++k) {
        if (!document.setNode("Framerate", static_cast<int>(k))) continue;
        readInteger(document, "FR", rates[k]);
        document.resetNode();
    }
    return rates;
}

void readTemperatureRange(SimpleXML& document, TemperatureRange& range) {
    readInteger(document, "Fid", range.Fid);
    readInteger(document, "Skim", range.Skim);
    readInteger(document, "SkimRatio", range.SkimRatio);
    document.getFloat("TempLo", &range.TempLo);
    document.getFloat("TempHi", &range.TempHi);
    float lowest = range.TempLo;
    document.getFloat("TempLoExt", &lowest);
    range.TempLoExt = std::min(range.TempLo, lowest);
    float highest = range.TempHi;
    document.getFloat("TempHiExt", &highest);
    range.TempHiExt = std::max(range.TempHi, highest);
    if (document.setNode("Framerates")) {
        range.Framerates = readFramerates(document);
        document.resetNode();
    }
    readInteger(document, "Decimal", range.Decimal);
    if (document.setNode("TableParams")) {
        readTableParams(document, range.Table);
        document.resetNode();
    }
}

std::vector<TemperatureRange> readTemperatureRanges(SimpleXML& document) {
    std::vector<TemperatureRange> ranges(
        static_cast<std::size_t>(document.getNodeCount("TemperatureRange")));
    for (std::size_t j = 0; j < ranges.size(); ++j) {
        if (!document.setNode("TemperatureRange", static_cast<int>(j))) continue;
        readTemperatureRange(document, ranges[j]);
        document.resetNode();
    }
    return ranges;
}

OpticsDef readOpticsDef(SimpleXML& document) {
    std::optional<std::vector<TemperatureRange>> ranges;
    if (document.setNode("TempRanges")) {
        ranges = readTemperatureRanges(document);
        document.resetNode();
    }
    OpticsDef optics = ranges ? OpticsDef(std::move(*ranges)) : OpticsDef();
    document.getInt("FOV", &optics.FOV);
    document.getInt("SerNo", &optics.SerNo);
    optics.Text = readString(document, "Text");
    if (const auto flag = readString(document, "SamplePointCali"))
        optics.SamplePointCali = tstrcmp(tstrlwr(flag.get()), "true") == 0;
    return optics;
}

}  // namespace

void readMainSection(SimpleXML& document, MainSection& section) {
    document.setNode();
    document.setNode("Main");
    readInteger(document, "TecA", section.TecA);
    readInteger(document, "TecB", section.TecB);
    readInteger(document, "TecC", section.TecC);
    readInteger(document, "TecD", section.TecD);
    document.getFloat("TempTEC_Step", &section.TempTEC_Step);
    document.getFloat("TempTECOffset", &section.TempTECOffset);
    document.getFloat("TempTECGain", &section.TempTECGain);
    document.getFloat("TempFlagOffset", &section.TempFlagOffset);
    document.getFloat("TempChipFactor", &section.TempChipFactor);
    document.getFloat("TempChipOffset", &section.TempChipOffset);
    document.getFloat("TempBoxOffset", &section.TempBoxOffset);
    document.getFloat("TempOpticsOffset", &section.TempOpticsOffset);
    document.getFloat("TempProcOffset", &section.TempProcOffset);
    document.getFloat("TempHouseOffset", &section.TempHouseOffset);
    document.getFloat("PifInOffset", &section.PifInOffset);
    document.getFloat("PifInGain", &section.PifInGain);
    document.getFloat("PifOutOffset", &section.PifOutOffset);
    document.getFloat("PifOutGain", &section.PifOutGain);
    readInteger(document, "AddedOffset", section.AddedOffset);
    document.getFloat("BindTempChipToTempFlagOffset", &section.BindTempChipToTempFlagOffset);
    readInteger(document, "FlagCycles", section.FlagCycles);
    readInteger(document, "FlagCycles_Ignore", section.FlagCycles_Ignore);
    document.getFloat("AlphaLowTemp", &section.AlphaLowTemp);
    document.getFloat("AlphaLowFactor", &section.AlphaLowFactor);
    document.getFloat("TBoxTAmbDiff", &section.TBoxTAmbDiff);
}

std::vector<OpticsDef> readOptics(SimpleXML& document) {
    document.setNode();
    document.setNode("Temperature");
    document.setNode("Optics");
    std::vector<OpticsDef> optics;
    const int count = document.getNodeCount("OpticsDef");
    optics.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        if (!document.setNode("OpticsDef", i)) {
            optics.emplace_back();
            continue;
        }
        optics.push_back(readOpticsDef(document));
        document.resetNode();
    }
    return optics;
}
