// Reads the elements of a calibration description into records.
#include "imgproc/internal/CaliReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "sdk/StringHelpers.h"

namespace dax {

namespace {

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

/// Descends to the element `name` that becomes the next of `records`; false behind the last.
template <typename Record>
bool descendToNext(SimpleXML& document, const char* name, const std::vector<Record>& records) {
    return document.setNode(name, static_cast<int>(records.size()));
}

std::vector<std::uint16_t> readFramerates(SimpleXML& document) {
    std::vector<std::uint16_t> rates;
    while (descendToNext(document, "Framerate", rates)) {
        readInteger(document, "FR", rates.emplace_back());
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
    std::vector<TemperatureRange> ranges;
    while (descendToNext(document, "TemperatureRange", ranges)) {
        readTemperatureRange(document, ranges.emplace_back());
        document.resetNode();
    }
    return ranges;
}

void readOpticsDef(SimpleXML& document, std::vector<OpticsDef>& all) {
    OpticsDef& optics = all.emplace_back();
    document.getInt("FOV", &optics.FOV);
    document.getInt("SerNo", &optics.SerNo);
    optics.Text = readString(document, "Text");
    if (const auto flag = readString(document, "SamplePointCali"))
        optics.SamplePointCali = tstrcmp(tstrlwr(flag.get()), "true") == 0;
    if (document.setNode("TempRanges")) {
        optics.TempRanges = readTemperatureRanges(document);
        document.resetNode();
    }
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
    while (descendToNext(document, "OpticsDef", optics)) {
        readOpticsDef(document, optics);
        document.resetNode();
    }
    return optics;
}

}  // namespace dax
