// The model proper. How random descriptions are made is at the end.
#include "support/CaliModel.h"

#include <cctype>
#include <clocale>
#include <cstdio>
#include <iterator>

#include "support/ProcessState.h"

namespace thermika_test {

namespace {

RangeModel defaultRange(float low, float high) {
    RangeModel range;
    range.low = low;
    range.high = high;
    return range;
}

bool fits(const std::optional<std::string>& stored, const std::string& wanted) {
    return stored.value_or("") == wanted;
}

}  // namespace

CaliModel::CaliModel(std::string content) : m_content(std::move(content)) {
    const ScopedLocale decimalPoint({});
    const Part document{0, m_content.size()};
    const Part list = firstOr(firstOr(document, "Temperature"), "Optics");
    for (const Part part : all(list, "OpticsDef")) optics.push_back(readOptics(part));
}

std::optional<CaliModel::Part> CaliModel::first(Part in, const std::string& name) const {
    const std::vector<Part> found = all(in, name);
    if (found.empty()) return std::nullopt;
    return found.front();
}

std::vector<CaliModel::Part> CaliModel::all(Part in, const std::string& name) const {
    std::vector<Part> found;
    std::size_t at = in.from;
    for (;;) {
        const std::size_t opening = m_content.find("<" + name + ">", at);
        if (opening == std::string::npos || opening >= in.to) return found;
        const std::size_t from = opening + name.size() + 2;
        const std::size_t closing = m_content.find("</" + name + ">", from);
        if (closing == std::string::npos || closing >= in.to) return found;
        found.push_back({from, closing});
        at = closing;
    }
}

CaliModel::Part CaliModel::firstOr(Part in, const std::string& name) const {
    return first(in, name).value_or(in);
}

void CaliModel::scanInt(Part in, const std::string& name, int& value) const {
    const std::optional<Part> part = first(in, name);
    if (part)
        std::sscanf(m_content.substr(part->from, part->to - part->from).c_str(), "%i", &value);
}

void CaliModel::scanFloat(Part in, const std::string& name, float& value) const {
    const std::optional<Part> part = first(in, name);
    if (part)
        std::sscanf(m_content.substr(part->from, part->to - part->from).c_str(), "%f", &value);
}

OpticsModel CaliModel::readOptics(Part in) const {
    OpticsModel read;
    read.ranges = {defaultRange(-20, 100), defaultRange(0, 250), defaultRange(150, 900)};
    scanInt(in, "FOV", read.fov);
    scanInt(in, "SerNo", read.serNo);
    if (const auto text = first(in, "Text"))
        read.text = m_content.substr(text->from, text->to - text->from);
    if (const auto flag = first(in, "SamplePointCali")) {
        std::string word = m_content.substr(flag->from, flag->to - flag->from);
        for (char& c : word) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        read.isSamplePoint = word == "true";
    }
    if (const auto ranges = first(in, "TempRanges")) {
        read.ranges.clear();
        for (const Part part : all(*ranges, "TemperatureRange"))
            read.ranges.push_back(readRange(part));
    }
    return read;
}

RangeModel CaliModel::readRange(Part in) const {
    RangeModel read;
    scanInt(in, "Fid", read.fid);
    scanInt(in, "Skim", read.skim);
    scanInt(in, "SkimRatio", read.skimRatio);
    scanFloat(in, "TempLo", read.low);
    scanFloat(in, "TempHi", read.high);
    float given = read.low;
    scanFloat(in, "TempLoExt", given);
    read.lowExt = given < read.low ? given : read.low;
    given = read.high;
    scanFloat(in, "TempHiExt", given);
    read.highExt = given > read.high ? given : read.high;
    if (const auto rates = first(in, "Framerates")) {
        read.rates.emplace();
        for (const Part part : all(*rates, "Framerate")) {
            int rate = 0;
            scanInt(part, "FR", rate);
            read.rates->push_back(static_cast<std::uint16_t>(rate));
        }
    }
    scanInt(in, "Decimal", read.decimal);
    if (const auto table = first(in, "TableParams")) {
        int t1 = 0;
        int t3 = 0;
        int normalize = 0;
        float lambda = 0;
        scanInt(*table, "Normalize", normalize);
        scanInt(*table, "T1", t1);
        scanInt(*table, "T3", t3);
        scanInt(*table, "E1", read.e1);
        scanInt(*table, "E3", read.e3);
        scanFloat(*table, "Lambda", lambda);
        read.isNormalized = normalize != 0;
        read.t1 = t1;
        read.t3 = t3;
        read.lambda = static_cast<double>(lambda);
    }
    for (int* const field : {&read.fid, &read.skim, &read.skimRatio, &read.e1, &read.e3})
        *field = static_cast<std::int16_t>(*field);
    read.decimal = static_cast<std::uint16_t>(read.decimal);
    return read;
}

int CaliModel::strictIndex(int fov, const std::string& text) const {
    for (std::size_t i = 0; i < optics.size(); ++i) {
        if (optics[i].fov == fov && fits(optics[i].text, text)) return static_cast<int>(i);
    }
    return -1;
}

int CaliModel::lenientIndex(int fov, const std::string& text) const {
    for (std::size_t i = 0; i < optics.size(); ++i) {
        if (optics[i].fov == fov &&
            (text.empty() || fits(optics[i].text, "") || fits(optics[i].text, text)))
            return static_cast<int>(i);
    }
    return -1;
}

const OpticsModel* CaliModel::find(int fov, const std::string& text) const {
    const int index = strictIndex(fov, text);
    return index < 0 ? nullptr : &optics[static_cast<std::size_t>(index)];
}

int CaliModel::rangeIndex(int fov, const std::string& text, float min, float max) const {
    const OpticsModel* const found = find(fov, text);
    if (found == nullptr) return -1;
    for (std::size_t j = 0; j < found->ranges.size(); ++j) {
        if (found->ranges[j].low == min && found->ranges[j].high == max) return static_cast<int>(j);
    }
    return -1;
}

const RangeModel* CaliModel::findRange(int fov, const std::string& text, float min,
                                       float max) const {
    const int index = rangeIndex(fov, text, min, max);
    return index < 0 ? nullptr : &find(fov, text)->ranges[static_cast<std::size_t>(index)];
}

std::pair<float, float> CaliModel::span(const std::vector<OpticsModel>& all) {
    std::pair<float, float> span(1000000.0F, -1000000.0F);
    for (const OpticsModel& each : all) {
        for (const RangeModel& range : each.ranges) {
            if (range.low < span.first) span.first = range.low;
            if (range.high > span.second) span.second = range.high;
        }
    }
    return span;
}

int CaliModel::rateIndex(int fov, const std::string& text, float min, float max, int rate) const {
    const RangeModel* const range = findRange(fov, text, min, max);
    if (range == nullptr || !range->rates) return -1;
    for (std::size_t k = 0; k < range->rates->size(); ++k) {
        if ((*range->rates)[k] == rate) return static_cast<int>(k);
    }
    return -2;
}

int CaliModel::decimal(int fov, const std::string& text, float min, float max) const {
    const int at = lenientIndex(fov, text);
    const int range = rangeIndex(fov, text, min, max);
    if (at < 0 || range < 0) return 0;
    const auto& ranges = optics[static_cast<std::size_t>(at)].ranges;
    const auto position = static_cast<std::size_t>(range);
    return position < ranges.size() ? ranges[position].decimal : 0;
}

namespace {

using Values = std::vector<std::string>;

const Values kFovs = {"30", "30", "30", "62", "0x1e", "036", "", "wide", "-1"};
const Values kNumbers = {"0",      "1",    "27", "80",   "65566", "-1",   "0x10",
                         "010",    " 33 ", "",   "many", "99999", "3.9",  "2147483647",
                         "-32769", "08",   "0x", "+5",   "32768", "65535"};
const Values kRates = {"27", "27", "80", "0", "65566", "", "fast"};
const Values kFlags = {"true", "TRUE", "True", "tRuE", "yes", "", " true", "true ", "1"};

/// Grows the pieces of a description; where one piece ends, a line of the document may end.
class Grammar {
public:
    explicit Grammar(std::mt19937& random) : m_random(random) {}

    DescriptionText make() {
        parent("Main", 0.9, [&] { leaf("TecA", kNumbers, 0.5); });
        parent("Temperature", 0.9, [&] { parent("Optics", 0.9, [&] { optics(5); }); });
        if (chance(0.1)) optics(1);
        return finish();
    }

private:
    bool chance(double share) { return std::bernoulli_distribution(share)(m_random); }

    std::size_t below(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }

    void add(const std::string& piece) { m_pieces.push_back(piece); }

    /// Usually an element with what `inside` adds, at times that alone or without its closing tag.
    template <typename Inside>
    void parent(const std::string& name, double share, Inside inside) {
        const bool isThere = chance(share);
        if (isThere) add("<" + name + ">");
        inside();
        if (isThere && !chance(0.01)) add("</" + name + ">");
    }

    void leaf(const std::string& name, const Values& values, double share) {
        if (!chance(share)) return;
        for (int times = chance(0.05) ? 2 : 1; times > 0; --times)
            add("<" + name + (chance(0.02) ? " unit=\"x\">" : ">") + values[below(values.size())] +
                "</" + name + ">");
        if (chance(0.03)) parent("Other", 0.9, [&] { leaf("TempLo", randomBounds(), 0.9); });
    }

    void optics(std::size_t most) {
        for (std::size_t count = below(most + 1); count > 0; --count) {
            parent("OpticsDef", 0.98, [&] {
                if (chance(0.03)) optics(1);
                if (chance(0.1)) ranges();
                leaf("FOV", kFovs, 0.95);
                leaf("SerNo", kNumbers, 0.5);
                leaf("Text", randomTexts(), 0.8);
                leaf("SamplePointCali", kFlags, 0.5);
                ranges();
            });
        }
    }

    void ranges() {
        if (chance(0.1)) return;
        parent("TempRanges", 0.95, [&] {
            for (std::size_t count = below(5); count > 0; --count)
                parent("TemperatureRange", 0.98, [&] { range(); });
        });
    }

    void range() {
        leaf("Fid", kNumbers, 0.7);
        leaf("Skim", kNumbers, 0.7);
        leaf("SkimRatio", kNumbers, 0.7);
        leaf("TempLo", randomBounds(), 0.9);
        leaf("TempHi", randomBounds(), 0.9);
        leaf("TempLoExt", randomBounds(), 0.5);
        leaf("TempHiExt", randomBounds(), 0.5);
        if (chance(0.7)) {
            parent("Framerates", 0.95, [&] {
                for (std::size_t count = below(4); count > 0; --count)
                    parent("Framerate", 0.95, [&] { leaf("FR", kRates, 0.95); });
            });
        }
        leaf("Decimal", kNumbers, 0.5);
        if (chance(0.6)) {
            parent("TableParams", 0.95, [&] {
                for (const char* name : {"Normalize", "T1", "T3", "E1", "E3"})
                    leaf(name, kNumbers, 0.7);
                leaf("Lambda", randomBounds(), 0.7);
            });
        }
    }

    DescriptionText finish() {
        DescriptionText text;
        text.document = "<CaliData>\n";
        for (const std::string& piece : m_pieces) {
            text.document += piece;
            text.content += piece;
            if (chance(0.7)) text.document += chance(0.1) ? "\n\n" : "\n";
            if (chance(0.05)) text.document += "<!-- <FOV>77</FOV> --> ";
            if (!text.document.empty() && text.document.back() == ' ') text.content += ' ';
        }
        text.document += "\n</CaliData>\n";
        return text;
    }

    std::mt19937& m_random;
    std::vector<std::string> m_pieces;
};

}  // namespace

DescriptionText randomDescription(std::mt19937& random) { return Grammar(random).make(); }

const Values& randomTexts() {
    static const Values texts = {"", "", "A", "A", "a", "B", "A ", "HT"};
    return texts;
}

const Values& randomBounds() {
    static const Values bounds = {"-20", "100", "0",    "250", "-0",  "-0.5",    "1e30",
                                  "inf", "nan", "-inf", "",    "hot", "-100.25", "1e2"};
    return bounds;
}

}  // namespace thermika_test
