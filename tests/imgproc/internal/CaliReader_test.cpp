// Every field of a description: where it is read from, what it is without its element, and what
// odd documents give.
#include "imgproc/internal/CaliReader.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "support/CaliDescriptions.h"
#include "support/TestFiles.h"

namespace thermika_test {
namespace {

using Rates = std::vector<std::uint16_t>;

OpticsDef onlyOptics(std::string_view inside) {
    std::vector<OpticsDef> all =
        opticsOf(opticsList("<OpticsDef>" + std::string(inside) + "</OpticsDef>"));
    if (all.size() != 1) throw std::runtime_error("not one optics");
    return std::move(all.front());
}

TemperatureRange onlyRange(std::string_view inside) {
    const OpticsDef optics = onlyOptics("<TempRanges><TemperatureRange>" + std::string(inside) +
                                        "</TemperatureRange></TempRanges>");
    if (optics.TempRanges.size() != 1) throw std::runtime_error("not one range");
    return optics.TempRanges.front();
}

void expectDefaultTable(const TableParams& table) {
    EXPECT_EQ(table.T1, 0.0);
    EXPECT_EQ(table.T3, 0.0);
    EXPECT_EQ(table.E1, 0);
    EXPECT_EQ(table.E3, 0);
    EXPECT_EQ(table.Lambda, 0.0);
    EXPECT_EQ(table.Reserved1, 0.0);
    EXPECT_EQ(table.Reserved2, -100.0);
    EXPECT_EQ(table.Reserved3, 0);
    EXPECT_FALSE(table.Normalize);
}

void expectDefaultRanges(const OpticsDef& optics) {
    constexpr float kLows[] = {-20.0F, 0.0F, 150.0F};
    constexpr float kHighs[] = {100.0F, 250.0F, 900.0F};
    ASSERT_EQ(optics.TempRanges.size(), 3U);
    for (std::size_t j = 0; j < 3; ++j) {
        const TemperatureRange& range = optics.TempRanges[j];
        EXPECT_EQ(range.TempLo, kLows[j]);
        EXPECT_EQ(range.TempHi, kHighs[j]);
        EXPECT_EQ(range.TempLoExt, -100.0F);
        EXPECT_EQ(range.TempHiExt, -100.0F);
        EXPECT_EQ(range.Fid, 0);
        EXPECT_EQ(range.Skim, 0);
        EXPECT_EQ(range.SkimRatio, 0);
        EXPECT_FALSE(range.Framerates.has_value());
        EXPECT_EQ(range.Decimal, 1);
        expectDefaultTable(range.Table);
    }
}

void expectDefaults(const MainSection& section) {
    EXPECT_EQ(section.TecA, 3400);
    EXPECT_EQ(section.TecB, 400);
    EXPECT_EQ(section.TecC, 400);
    EXPECT_EQ(section.TecD, 120);
    EXPECT_EQ(section.TempTEC_Step, 5.0F);
    EXPECT_EQ(section.Reserved, 10.0F);
    EXPECT_EQ(section.TempTECOffset, 294.5F);
    EXPECT_EQ(section.TempTECGain, 13.055F);
    EXPECT_EQ(section.TempFlagOffset, 0.0F);
    EXPECT_EQ(section.TempChipFactor, 1.0F);
    EXPECT_EQ(section.TempChipOffset, 0.0F);
    EXPECT_EQ(section.TempBoxOffset, 0.0F);
    EXPECT_EQ(section.TempOpticsOffset, 0.0F);
    EXPECT_EQ(section.TempProcOffset, 0.0F);
    EXPECT_EQ(section.TempHouseOffset, 0.0F);
    EXPECT_EQ(section.PifInOffset, 0.0F);
    EXPECT_EQ(section.PifInGain, 1.0F);
    EXPECT_EQ(section.PifOutOffset, 0.0F);
    EXPECT_EQ(section.PifOutGain, 1.0F);
    EXPECT_EQ(section.AddedOffset, 0);
    EXPECT_EQ(section.BindTempChipToTempFlagOffset, 0.8F);
    EXPECT_EQ(section.FlagCycles, 10);
    EXPECT_EQ(section.FlagCycles_Ignore, 2);
    EXPECT_EQ(section.AlphaLowTemp, 23.0F);
    EXPECT_EQ(section.AlphaLowFactor, 1.0F);
    EXPECT_EQ(section.TBoxTAmbDiff, 5.0F);
}

TEST(CaliReader, mainSectionHasItsDefaults) {
    expectDefaults(MainSection());
    expectDefaults(mainOf(""));
    expectDefaults(mainOf("<Main></Main>"));
}

/// An element for each name, holding numbers that count from 1 between `before` and `after`.
std::string numbered(std::initializer_list<const char*> names, const std::string& before,
                     const std::string& after) {
    std::string text;
    int number = 0;
    for (const std::string name : names)
        text += "<" + name + ">" + before + std::to_string(++number) + after + "</" + name + ">\n";
    return text;
}

TEST(CaliReader, readsEveryParameterFromItsElement) {
    const std::string floats = numbered(
        {"TempTEC_Step", "TempTECOffset", "TempTECGain", "TempFlagOffset", "TempChipFactor",
         "TempChipOffset", "TempBoxOffset", "TempOpticsOffset", "TempProcOffset", "TempHouseOffset",
         "PifInOffset", "PifInGain", "PifOutOffset", "PifOutGain", "BindTempChipToTempFlagOffset",
         "AlphaLowTemp", "AlphaLowFactor", "TBoxTAmbDiff"},
        "", ".25");
    const std::string integers =
        numbered({"TecA", "TecB", "TecC", "TecD", "AddedOffset", "FlagCycles", "FlagCycles_Ignore"},
                 "0x", "");
    const MainSection section = mainOf("<Main>\n" + floats + integers + "</Main>");
    const float readFloats[] = {
        section.TempTEC_Step,    section.TempTECOffset,    section.TempTECGain,
        section.TempFlagOffset,  section.TempChipFactor,   section.TempChipOffset,
        section.TempBoxOffset,   section.TempOpticsOffset, section.TempProcOffset,
        section.TempHouseOffset, section.PifInOffset,      section.PifInGain,
        section.PifOutOffset,    section.PifOutGain,       section.BindTempChipToTempFlagOffset,
        section.AlphaLowTemp,    section.AlphaLowFactor,   section.TBoxTAmbDiff};
    float expected = 0.25F;
    for (const float value : readFloats) EXPECT_EQ(value, expected += 1.0F);
    EXPECT_EQ(section.TecA, 1);
    EXPECT_EQ(section.TecB, 2);
    EXPECT_EQ(section.TecC, 3);
    EXPECT_EQ(section.TecD, 4);
    EXPECT_EQ(section.AddedOffset, 5);
    EXPECT_EQ(section.FlagCycles, 6);
    EXPECT_EQ(section.FlagCycles_Ignore, 7);
    EXPECT_EQ(section.Reserved, 10.0F) << "in no file";
}

TEST(CaliReader, cutsParametersToSixteenBits) {
    const MainSection section = mainOf(
        "<Main><TecA>65566</TecA><TecB>-1</TecB><TecC>0x1FFFF</TecC><TecD>0200</TecD>"
        "<AddedOffset>32768</AddedOffset><FlagCycles>65536</FlagCycles>"
        "<FlagCycles_Ignore>2147483647</FlagCycles_Ignore></Main>");
    EXPECT_EQ(section.TecA, 30);
    EXPECT_EQ(section.TecB, 65535);
    EXPECT_EQ(section.TecC, 65535);
    EXPECT_EQ(section.TecD, 128);
    EXPECT_EQ(section.AddedOffset, -32768);
    EXPECT_EQ(section.FlagCycles, 0);
    EXPECT_EQ(section.FlagCycles_Ignore, 65535);
}

TEST(CaliReader, keepsParametersWhoseTextIsNoNumber) {
    const MainSection section = mainOf(
        "<Main><TecA></TecA><TecB>many</TecB><PifInGain></PifInGain>"
        "<AlphaLowTemp>warm</AlphaLowTemp></Main>");
    expectDefaults(section);
}

TEST(CaliReader, readsOptics) {
    const OpticsDef optics = onlyOptics(
        "<FOV>0x21</FOV><SerNo>70000</SerNo><Text> wide </Text>"
        "<SamplePointCali>true</SamplePointCali><TempRanges></TempRanges>");
    EXPECT_EQ(optics.FOV, 33);
    EXPECT_EQ(optics.SerNo, 70000) << "not cut to sixteen bits";
    EXPECT_STREQ(optics.Text.get(), " wide ");
    EXPECT_EQ(optics.Reserved, -1.0);
    EXPECT_TRUE(optics.SamplePointCali);
    EXPECT_TRUE(optics.TempRanges.empty());
}

TEST(CaliReader, givesEmptyOpticsTheirDefaults) {
    for (const OpticsDef& optics : {OpticsDef(), onlyOptics("")}) {
        EXPECT_EQ(optics.FOV, 0);
        EXPECT_EQ(optics.SerNo, 0);
        EXPECT_EQ(optics.Text, nullptr);
        EXPECT_EQ(optics.Reserved, -1.0);
        EXPECT_FALSE(optics.SamplePointCali);
        expectDefaultRanges(optics);
    }
}

TEST(CaliReader, keepsOpticsFieldsWhoseTextIsNoNumber) {
    const OpticsDef optics = onlyOptics("<FOV>wide</FOV><SerNo></SerNo><Text></Text>");
    EXPECT_EQ(optics.FOV, 0);
    EXPECT_EQ(optics.SerNo, 0);
    EXPECT_STREQ(optics.Text.get(), "") << "there, but empty";
}

TEST(CaliReader, takesOnlyTrueInAnyCaseForASamplePointCalibration) {
    const auto flagOf = [](const std::string& text) {
        return onlyOptics("<SamplePointCali>" + text + "</SamplePointCali>").SamplePointCali;
    };
    for (const char* text : {"true", "True", "TRUE", "tRuE"}) EXPECT_TRUE(flagOf(text)) << text;
    for (const char* text : {"", "yes", "1", "false", " true", "true ", "truer", "tru", "t"})
        EXPECT_FALSE(flagOf(text)) << text;
}

TEST(CaliReader, keepsTheDefaultRangesOfOpticsWithoutRanges) {
    expectDefaultRanges(onlyOptics("<FOV>33</FOV>"));
    EXPECT_TRUE(onlyOptics("<TempRanges></TempRanges>").TempRanges.empty());
    expectDefaultRanges(onlyOptics("<TemperatureRange></TemperatureRange>"));
}

TEST(CaliReader, readsEveryFieldOfARange) {
    const TemperatureRange range = onlyRange(
        "<Fid>1</Fid><Skim>2</Skim><SkimRatio>3</SkimRatio><TempLo>-20.5</TempLo>"
        "<TempHi>120.25</TempHi><TempLoExt>-30</TempLoExt><TempHiExt>130</TempHiExt>"
        "<Framerates><Framerate><FR>27</FR></Framerate><Framerate><FR>80</FR></Framerate>"
        "</Framerates><Decimal>2</Decimal><TableParams><Normalize>1</Normalize><T1>-20</T1>"
        "<T3>100000</T3><E1>95</E1><E3>98</E3><Lambda>10.5</Lambda></TableParams>");
    EXPECT_EQ(range.Fid, 1);
    EXPECT_EQ(range.Skim, 2);
    EXPECT_EQ(range.SkimRatio, 3);
    EXPECT_EQ(range.TempLo, -20.5F);
    EXPECT_EQ(range.TempHi, 120.25F);
    EXPECT_EQ(range.TempLoExt, -30.0F);
    EXPECT_EQ(range.TempHiExt, 130.0F);
    EXPECT_EQ(range.Framerates, (Rates{27, 80}));
    EXPECT_EQ(range.Decimal, 2);
    EXPECT_TRUE(range.Table.Normalize);
    EXPECT_EQ(range.Table.T1, -20.0);
    EXPECT_EQ(range.Table.T3, 100000.0) << "not cut to sixteen bits";
    EXPECT_EQ(range.Table.E1, 95);
    EXPECT_EQ(range.Table.E3, 98);
    EXPECT_EQ(range.Table.Lambda, 10.5);
    EXPECT_EQ(range.Table.Reserved2, -100.0);
}

TEST(CaliReader, givesAnEmptyRangeItsDefaults) {
    const TemperatureRange range = onlyRange("");
    EXPECT_EQ(range.Fid, 0);
    EXPECT_EQ(range.Skim, 0);
    EXPECT_EQ(range.SkimRatio, 0);
    EXPECT_EQ(range.TempLo, 0.0F);
    EXPECT_EQ(range.TempHi, 0.0F);
    EXPECT_EQ(range.TempLoExt, 0.0F) << "-100 does not survive a load";
    EXPECT_EQ(range.TempHiExt, 0.0F);
    EXPECT_FALSE(range.Framerates.has_value());
    EXPECT_EQ(range.Decimal, 1);
    expectDefaultTable(range.Table);
}

TEST(CaliReader, cutsRangeFieldsToSixteenBits) {
    const TemperatureRange range = onlyRange(
        "<Fid>65535</Fid><Skim>32768</Skim><SkimRatio>65537</SkimRatio><Decimal>-2</Decimal>"
        "<TableParams><E1>65535</E1><E3>0x18000</E3></TableParams>");
    EXPECT_EQ(range.Fid, -1);
    EXPECT_EQ(range.Skim, -32768);
    EXPECT_EQ(range.SkimRatio, 1);
    EXPECT_EQ(range.Decimal, 65534);
    EXPECT_EQ(range.Table.E1, -1);
    EXPECT_EQ(range.Table.E3, -32768);
}

TEST(CaliReader, readsHexadecimalAndOctalNumbers) {
    const TemperatureRange range = onlyRange(
        "<Fid>0x10</Fid><Skim>010</Skim><SkimRatio>0x1F</SkimRatio><Decimal>0x2</Decimal>"
        "<TableParams><Normalize>0x1</Normalize><T1>0x20</T1><T3>-040</T3><E1>0xF</E1>"
        "<E3>017</E3></TableParams>");
    EXPECT_EQ(range.Fid, 16);
    EXPECT_EQ(range.Skim, 8);
    EXPECT_EQ(range.SkimRatio, 31);
    EXPECT_EQ(range.Decimal, 2);
    EXPECT_TRUE(range.Table.Normalize);
    EXPECT_EQ(range.Table.T1, 32.0);
    EXPECT_EQ(range.Table.T3, -32.0);
    EXPECT_EQ(range.Table.E1, 15);
    EXPECT_EQ(range.Table.E3, 15);
    EXPECT_EQ(onlyOptics("<SerNo>0x100000</SerNo>").SerNo, 1048576);
    EXPECT_EQ(onlyRange("<Decimal>08</Decimal>").Decimal, 0) << "octal, which ends before the 8";
}

TEST(CaliReader, readsNumbersUpToTheirEnd) {
    const TemperatureRange range =
        onlyRange("<Fid> 12 </Fid><Skim>3.9</Skim><TempLo>1.5C</TempLo><TempHi> \t7</TempHi>");
    EXPECT_EQ(range.Fid, 12);
    EXPECT_EQ(range.Skim, 3);
    EXPECT_EQ(range.TempLo, 1.5F);
    EXPECT_EQ(range.TempHi, 7.0F);
}

TEST(CaliReader, takesAnyNumberButZeroForNormalize) {
    const auto isNormalized = [](const std::string& text) {
        return onlyRange("<TableParams><Normalize>" + text + "</Normalize></TableParams>")
            .Table.Normalize;
    };
    for (const char* text : {"1", "-1", "65536", "0x1"}) EXPECT_TRUE(isNormalized(text)) << text;
    for (const char* text : {"0", "", "true", "0.9"}) EXPECT_FALSE(isNormalized(text)) << text;
}

TEST(CaliReader, readsLambdaWithTheDigitsOfAFloat) {
    const double lambda = onlyRange("<TableParams><Lambda>0.1</Lambda></TableParams>").Table.Lambda;
    EXPECT_EQ(lambda, static_cast<double>(0.1F));
    EXPECT_NE(lambda, 0.1);
}

TEST(CaliReader, keepsAnEmptyTableAtItsDefaults) {
    expectDefaultTable(onlyRange("<TableParams></TableParams>").Table);
    expectDefaultTable(onlyRange("<T1>5</T1><Lambda>2</Lambda>").Table);
    expectDefaultTable(
        onlyRange("<TableParams><T1>x</T1><E1></E1><Lambda>x</Lambda></TableParams>").Table);
}

TEST(CaliReader, makesExtendedBoundsContainTheBounds) {
    const auto extended = [](const std::string& elements) {
        const TemperatureRange range =
            onlyRange("<TempLo>-20</TempLo><TempHi>120</TempHi>" + elements);
        return std::make_pair(range.TempLoExt, range.TempHiExt);
    };
    EXPECT_EQ(extended(""), std::make_pair(-20.0F, 120.0F));
    EXPECT_EQ(extended("<TempLoExt>-30</TempLoExt>"), std::make_pair(-30.0F, 120.0F));
    EXPECT_EQ(extended("<TempLoExt>0</TempLoExt>"), std::make_pair(-20.0F, 120.0F));
    EXPECT_EQ(extended("<TempHiExt>130</TempHiExt>"), std::make_pair(-20.0F, 130.0F));
    EXPECT_EQ(extended("<TempHiExt>110</TempHiExt>"), std::make_pair(-20.0F, 120.0F));
    EXPECT_EQ(extended("<TempLoExt>x</TempLoExt><TempHiExt></TempHiExt>"),
              std::make_pair(-20.0F, 120.0F));
}

TEST(CaliReader, tellsNoListOfFrameratesFromAnEmptyOne) {
    EXPECT_FALSE(onlyRange("").Framerates.has_value());
    EXPECT_EQ(onlyRange("<Framerates></Framerates>").Framerates, Rates());
    EXPECT_FALSE(onlyRange("<Framerate><FR>27</FR></Framerate>").Framerates.has_value());
}

TEST(CaliReader, keepsTheLowSixteenBitsOfAFramerate) {
    const auto rate = [](const std::string& inside) {
        return onlyRange("<Framerates><Framerate>" + inside + "</Framerate></Framerates>")
            .Framerates;
    };
    EXPECT_EQ(rate("<FR>65566</FR>"), Rates{30});
    EXPECT_EQ(rate("<FR>-1</FR>"), Rates{65535});
    EXPECT_EQ(rate("<FR>0x1b</FR>"), Rates{27});
    EXPECT_EQ(rate("<FR>fast</FR>"), Rates{0});
    EXPECT_EQ(rate("<FR></FR>"), Rates{0});
    EXPECT_EQ(rate(""), Rates{0});
}

}  // namespace
}  // namespace thermika_test
