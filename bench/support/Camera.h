// The values of a calibration description, as the calibration data keeps them, and the names under
// which they stand in the file. Every reader of the benchmarks fills these same records.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace bench {

struct MainSection {
    std::uint16_t TecA = 3400;
    std::uint16_t TecB = 400;
    std::uint16_t TecC = 400;
    std::uint16_t TecD = 120;
    float TempTEC_Step = 5.0F;
    float TempTECOffset = 294.5F;
    float TempTECGain = 13.055F;
    float TempFlagOffset = 0.0F;
    float TempChipFactor = 1.0F;
    float TempChipOffset = 0.0F;
    float TempBoxOffset = 0.0F;
    float TempOpticsOffset = 0.0F;
    float TempProcOffset = 0.0F;
    float TempHouseOffset = 0.0F;
    float PifInOffset = 0.0F;
    float PifInGain = 1.0F;
    float PifOutOffset = 0.0F;
    float PifOutGain = 1.0F;
    std::int16_t AddedOffset = 0;
    float BindTempChipToTempFlagOffset = 0.8F;
    std::uint16_t FlagCycles = 10;
    std::uint16_t FlagCycles_Ignore = 2;
    float AlphaLowTemp = 23.0F;
    float AlphaLowFactor = 1.0F;
    float TBoxTAmbDiff = 5.0F;
};

struct TableParams {
    bool Normalize = false;
    std::int32_t T1 = 0;
    std::int32_t T3 = 0;
    std::int16_t E1 = 0;
    std::int16_t E3 = 0;
    float Lambda = 0.0F;
};

struct TemperatureRange {
    std::int16_t Fid = 0;
    std::int16_t Skim = 0;
    std::int16_t SkimRatio = 0;
    float TempLo = 0.0F;
    float TempHi = 0.0F;
    float TempLoExt = -100.0F;
    float TempHiExt = -100.0F;
    std::uint16_t Decimal = 1;
    std::vector<std::uint16_t> frameRates;
    TableParams tableParams;
};

struct OpticsDef {
    std::int32_t FOV = 0;
    std::int32_t SerNo = 0;
    std::string Text;
    bool SamplePointCali = false;
    std::vector<TemperatureRange> ranges;
};

struct Camera {
    MainSection main;
    std::vector<OpticsDef> optics;
};

/// A yes-or-no that stands in the file as a word.
struct Word {
    bool& isTrue;
};

/// Whether `text` says "true" in any letter case.
inline bool saysTrue(std::string_view text) {
    constexpr std::string_view kTrue = "true";
    if (text.size() != kTrue.size()) return false;
    for (std::size_t i = 0; i < kTrue.size(); ++i)
        if ((text[i] | ('a' - 'A')) != kTrue[i]) return false;
    return true;
}

/// Each calls `visit(name, field)` for the values that stand directly in the element, in their
/// order; the names are literals.
template <typename Visit>
void visitFields(MainSection& main, Visit&& visit) {
    visit("TecA", main.TecA);
    visit("TecB", main.TecB);
    visit("TecC", main.TecC);
    visit("TecD", main.TecD);
    visit("TempTEC_Step", main.TempTEC_Step);
    visit("TempTECOffset", main.TempTECOffset);
    visit("TempTECGain", main.TempTECGain);
    visit("TempFlagOffset", main.TempFlagOffset);
    visit("TempChipFactor", main.TempChipFactor);
    visit("TempChipOffset", main.TempChipOffset);
    visit("TempBoxOffset", main.TempBoxOffset);
    visit("TempOpticsOffset", main.TempOpticsOffset);
    visit("TempProcOffset", main.TempProcOffset);
    visit("TempHouseOffset", main.TempHouseOffset);
    visit("PifInOffset", main.PifInOffset);
    visit("PifInGain", main.PifInGain);
    visit("PifOutOffset", main.PifOutOffset);
    visit("PifOutGain", main.PifOutGain);
    visit("AddedOffset", main.AddedOffset);
    visit("BindTempChipToTempFlagOffset", main.BindTempChipToTempFlagOffset);
    visit("FlagCycles", main.FlagCycles);
    visit("FlagCycles_Ignore", main.FlagCycles_Ignore);
    visit("AlphaLowTemp", main.AlphaLowTemp);
    visit("AlphaLowFactor", main.AlphaLowFactor);
    visit("TBoxTAmbDiff", main.TBoxTAmbDiff);
}

template <typename Visit>
void visitFields(OpticsDef& optics, Visit&& visit) {
    visit("FOV", optics.FOV);
    visit("SerNo", optics.SerNo);
    visit("Text", optics.Text);
    visit("SamplePointCali", Word{optics.SamplePointCali});
}

template <typename Visit>
void visitFields(TemperatureRange& range, Visit&& visit) {
    visit("Fid", range.Fid);
    visit("Skim", range.Skim);
    visit("SkimRatio", range.SkimRatio);
    visit("TempLo", range.TempLo);
    visit("TempHi", range.TempHi);
    visit("TempLoExt", range.TempLoExt);
    visit("TempHiExt", range.TempHiExt);
    visit("Decimal", range.Decimal);
}

template <typename Visit>
void visitFields(TableParams& params, Visit&& visit) {
    visit("Normalize", params.Normalize);
    visit("T1", params.T1);
    visit("T3", params.T3);
    visit("E1", params.E1);
    visit("E3", params.E3);
    visit("Lambda", params.Lambda);
}

/// Whether both hold the same values.
bool operator==(const Camera& a, const Camera& b);

}  // namespace bench
