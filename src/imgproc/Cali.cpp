// Loads and holds the calibration data, answers questions about it and makes the names of a
// camera's files. CaliReader reads a document into records.
#include "imgproc/Cali.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "imgproc/internal/CaliReader.h"
#include "sdk/Logger.h"
#include "sdk/SimpleXML.h"
#include "sdk/StringHelpers.h"
#include "sdk/base/BoundedText.h"
#include "sdk/base/Truncation.h"

namespace {

constexpr int kLoaded = 0;
constexpr int kCannotOpen = static_cast<int>(0x80070005U);  // what callers compare with
constexpr int kNoSerial = -1;
constexpr int kNotFound = -1;
constexpr int kNoSuchFramerate = -2;
constexpr std::int32_t kBuiltInFov = 30;
constexpr unsigned int kStemBytes = 20;
constexpr Range kUsualRanges[] = {{-20.0F, 100.0F}, {0.0F, 250.0F}, {150.0F, 900.0F}};
constexpr Range kInvertedRange = {1000000.0F, -1000000.0F};

void log(int line, const std::string& message) {
    kelvra::Logger::getInstance()->print(kelvra::kLogDebug, "Cali", line, message);
}

std::string_view textOf(const char* text) { return text == nullptr ? "" : text; }

std::string_view textOf(const OpticsDef& optics) { return textOf(optics.Text.get()); }

using OpticsKey = std::pair<int, std::string_view>;

OpticsKey keyOf(const OpticsDef& optics) { return {optics.FOV, textOf(optics)}; }

bool isPast(std::size_t count, int index) {
    return index < 0 || static_cast<std::size_t>(index) >= count;
}

/// A record for the caller.
template <typename Record>
Record* handOut(const Record& record) {
    try {
        return new Record(record);
        // Deliberate: a program whose operator new throws a character string gets null; anything
        // else that it throws propagates.
    } catch (const char*) {
        return nullptr;
    }
}

void widen(Range& range, const OpticsDef& optics) {
    for (const TemperatureRange& each : optics.TempRanges) {
        range.min = std::min(range.min, each.TempLo);
        range.max = std::max(range.max, each.TempHi);
    }
}

int positionOf(const OpticsDef& optics, float min, float max) {
    const auto& ranges = optics.TempRanges;
    const auto found = std::find_if(
        ranges.begin(), ranges.end(),
        [&](const TemperatureRange& each) { return each.TempLo == min && each.TempHi == max; });
    return found == ranges.end() ? kNotFound : static_cast<int>(found - ranges.begin());
}

bool isFramerateAllowed(int index, unsigned short& framerate) {
    if (index < 0) framerate = 0;
    return index != kNoSuchFramerate;
}

}  // namespace

OpticsDef::OpticsDef() : TempRanges(std::size(kUsualRanges)) {
    for (std::size_t i = 0; i < TempRanges.size(); ++i) {
        TempRanges[i].TempLo = kUsualRanges[i].min;
        TempRanges[i].TempHi = kUsualRanges[i].max;
    }
}

ConfigCali* ConfigCali::_this = nullptr;

ConfigCali* ConfigCali::getInstance() {
    if (_this == nullptr) _this = std::make_unique<ConfigCali>().release();
    return _this;
}

ConfigCali::OpticsIndex::OpticsIndex(const std::vector<OpticsDef>& optics)
    : firstOfSame(optics.size()) {
    std::vector<std::pair<OpticsKey, std::size_t>> sorted;
    sorted.reserve(optics.size());
    for (const OpticsDef& each : optics) sorted.emplace_back(keyOf(each), sorted.size());
    std::sort(sorted.begin(), sorted.end());
    const OpticsKey* last = nullptr;
    for (const auto& [key, at] : sorted) {
        if (last == nullptr || *last != key) firstOfKey.push_back(at);
        firstOfSame[at] = firstOfKey.back();
        last = &key;
    }
}

ConfigCali::ConfigCali() { reset(); }

ConfigCali::~ConfigCali() = default;

int ConfigCali::load(const char* dir, int serialToLoad) {
    if (isLoaded(serialToLoad)) {
        log(__LINE__, "Calibration XML file already loaded.");
        return kLoaded;
    }
    if (loaded) {
        log(__LINE__, "Serial number has changed (" + std::to_string(serialToLoad) +
                          "), reload Calibration XML.");
        reset();
    }
    // Deliberate: for the whole process, so that "." is the decimal point, until the first getter
    // that finds its element gives LC_NUMERIC the name of LC_CTYPE.
    std::setlocale(LC_NUMERIC, "C");
    char stem[kStemBytes];
    tsnprintf(stem, kStemBytes, "Cali-%i", serialToLoad);
    log(__LINE__, std::string("Calibration directory path: ").append(textOf(dir)));
    log(__LINE__, std::string("Calibration file name: ") + stem + ".xml");

    dax::SimpleXML document;
    if (!document.open(dir, stem, "CaliData")) return kCannotOpen;
    MainSection main;
    dax::readMainSection(document, main);
    log(__LINE__, "Calibration data A: " + std::to_string(main.TecA) +
                      " B:" + std::to_string(main.TecB) + " C:" + std::to_string(main.TecC) +
                      " D:" + std::to_string(main.TecD));
    hold(dax::readOptics(document));
    m_main = main;
    loaded = m_hasEverLoaded = true;
    serial = serialToLoad;
    return kLoaded;
}

bool ConfigCali::isLoaded(int wanted) { return loaded && serial == wanted; }

int ConfigCali::getOpticsCount() { return static_cast<int>(m_optics.size()); }

OPTICS* ConfigCali::getOptics(int index) {
    if (isPast(m_optics.size(), index)) return nullptr;
    m_lastAsked = static_cast<std::size_t>(index);
    return handOut(OPTICS{m_optics[m_lastAsked].FOV, m_optics[m_lastAsked].Text.get()});
}

int ConfigCali::getOpticsIndex(OPTICS* key) {
    const OpticsDef* const optics = key == nullptr ? nullptr : findOptics(key->fov, key->text);
    return optics == nullptr ? kNotFound : static_cast<int>(optics - m_optics.data());
}

// Deliberate: unlike every other lookup, a text missing on either side matches any.
int ConfigCali::getOpticsIndex(int fov, char* text) {
    const std::string_view wanted = textOf(text);
    const auto found = std::find_if(m_optics.begin(), m_optics.end(), [&](const OpticsDef& optics) {
        if (optics.FOV != fov) return false;
        const std::string_view stored = textOf(optics);
        return stored.empty() || wanted.empty() || stored == wanted;
    });
    return found == m_optics.end() ? kNotFound : static_cast<int>(found - m_optics.begin());
}

bool ConfigCali::isSamplePointCali(int index) {
    return !isPast(m_optics.size(), index) &&
           m_optics[static_cast<std::size_t>(index)].SamplePointCali;
}

int ConfigCali::getTempRangeCount(OPTICS* key) {
    return key == nullptr ? kNotFound : getTempRangeCount(key->fov, key->text);
}

int ConfigCali::getTempRangeCount(int fov, char* text) {
    const OpticsDef* const optics = findOptics(fov, text);
    return optics == nullptr ? kNotFound : static_cast<int>(optics->TempRanges.size());
}

Range* ConfigCali::getTempRange(OPTICS* key, int index) {
    return key == nullptr ? nullptr : getTempRange(key->fov, key->text, index);
}

Range* ConfigCali::getTempRange(int fov, char* text, int index) {
    const TemperatureRange* const range = rangeAt(fov, text, index);
    return range == nullptr ? nullptr : handOut(Range{range->TempLo, range->TempHi});
}

Range* ConfigCali::getExtendedTempRange(OPTICS* key, int index) {
    return key == nullptr ? nullptr : getExtendedTempRange(key->fov, key->text, index);
}

Range* ConfigCali::getExtendedTempRange(int fov, char* text, int index) {
    const TemperatureRange* const range = rangeAt(fov, text, index);
    return range == nullptr ? nullptr : handOut(Range{range->TempLoExt, range->TempHiExt});
}

Range* ConfigCali::getExtendedTempRange(int fov, char* text, float min, float max) {
    const TemperatureRange* const range = findRange(fov, text, min, max);
    return range == nullptr ? nullptr : handOut(Range{range->TempLoExt, range->TempHiExt});
}

int ConfigCali::getTempRangeIndex(OPTICS* key, Range* range) {
    if (key == nullptr || range == nullptr) return kNotFound;
    return getTempRangeIndex(key->fov, key->text, range->min, range->max);
}

int ConfigCali::getTempRangeIndex(int fov, char* text, float min, float max) {
    const OpticsDef* const optics = findOptics(fov, text);
    return optics == nullptr ? kNotFound : positionOf(*optics, min, max);
}

Range* ConfigCali::getTempRangeOverAll() {
    Range all = kInvertedRange;
    for (const OpticsDef& optics : m_optics) widen(all, optics);
    return handOut(all);
}

Range* ConfigCali::getTempRangeOverAll(OPTICS* key) {
    const OpticsDef* const optics = key == nullptr ? nullptr : findOptics(key->fov, key->text);
    if (optics == nullptr) return nullptr;
    Range all = kInvertedRange;
    widen(all, *optics);
    return handOut(all);
}

int ConfigCali::getFramerateCount(OPTICS* key, Range* range) {
    if (key == nullptr || range == nullptr) return kNotFound;
    const TemperatureRange* const found = findRange(key->fov, key->text, range->min, range->max);
    if (found == nullptr) return kNotFound;
    return found->Framerates ? static_cast<int>(found->Framerates->size()) : 0;
}

int ConfigCali::getFramerateIndex(OPTICS* key, Range* range, unsigned short framerate) {
    if (key == nullptr || range == nullptr) return kNotFound;
    return getFramerateIndex(key->fov, key->text, range->min, range->max, framerate);
}

// Deliberate: no list (-1) and not in the list (-2) differ, because checkFramerate() allows any
// rate in the first case and none in the second.
int ConfigCali::getFramerateIndex(int fov, char* text, float min, float max,
                                  unsigned short framerate) {
    const TemperatureRange* const range = findRange(fov, text, min, max);
    if (range == nullptr || !range->Framerates) return kNotFound;
    const auto& rates = *range->Framerates;
    const auto found = std::find(rates.begin(), rates.end(), framerate);
    return found == rates.end() ? kNoSuchFramerate : static_cast<int>(found - rates.begin());
}

unsigned short ConfigCali::getFramerate(OPTICS* key, Range* range, int index) {
    if (key == nullptr || range == nullptr) return 0;
    const TemperatureRange* const found = findRange(key->fov, key->text, range->min, range->max);
    if (found == nullptr || !found->Framerates || isPast(found->Framerates->size(), index))
        return 0;
    return (*found->Framerates)[static_cast<std::size_t>(index)];
}

bool ConfigCali::checkFramerate(OPTICS* optics, Range* range, unsigned short& framerate) {
    return isFramerateAllowed(getFramerateIndex(optics, range, framerate), framerate);
}

bool ConfigCali::checkFramerate(int fov, char* text, float min, float max,
                                unsigned short& framerate) {
    return isFramerateAllowed(getFramerateIndex(fov, text, min, max, framerate), framerate);
}

// Deliberate: the optics is found leniently and the range strictly, so the position of one optics'
// range may be applied to another optics of the same field of view.
unsigned short ConfigCali::getTempRangeDecimal(int fov, char* text, float min, float max) {
    const int optics = getOpticsIndex(fov, text);
    const int range = getTempRangeIndex(fov, text, min, max);
    if (optics < 0) return 0;
    const auto& ranges = m_optics[static_cast<std::size_t>(optics)].TempRanges;
    return isPast(ranges.size(), range) ? std::uint16_t{0}
                                        : ranges[static_cast<std::size_t>(range)].Decimal;
}

bool ConfigCali::caliFilenameString(int camera, int fov, char* text, Range* range,
                                    unsigned short framerate, char* out, int outSize) {
    if (range == nullptr) return false;
    return caliFilenameString(camera, fov, text, range->min, range->max, framerate, out, outSize);
}

bool ConfigCali::caliFilenameString(int camera, int fov, char* text, float min, float max,
                                    unsigned short framerate, char* out, int outSize) {
    dax::BoundedText name(out, static_cast<std::size_t>(std::max(outSize, 0)));
    name.append(camera).append('-').append(fov);
    if (!textOf(text).empty()) name.append('-').append(text);
    // Deliberate: the sign is that of the bound, the number is cut, so -0.5 is "M0": the names must
    // equal those of the files delivered.
    for (const float bound : {min, max}) {
        name.append('-');
        if (bound < 0) name.append('M');
        name.append(dax::truncateToInt(std::fabs(bound)));
    }
    if (framerate != 0) name.append('-').append(int{framerate});
    return true;
}

void ConfigCali::reset() {
    std::vector<OpticsDef> builtIn(1);
    builtIn.front().FOV = kBuiltInFov;
    hold(std::move(builtIn));
    m_main = MainSection();
    loaded = false;
    serial = kNoSerial;
}

/// Replaces the list and the positions that belong to it; neither when memory is short.
void ConfigCali::hold(std::vector<OpticsDef> optics) {
    m_index = OpticsIndex(optics);
    m_optics = std::move(optics);
}

/// The first optics of a key; null when there is none.
const OpticsDef* ConfigCali::findOptics(int fov, const char* text) {
    if (m_lastAsked < m_optics.size() && m_optics[m_lastAsked].FOV == fov &&
        m_optics[m_lastAsked].Text.get() == text)
        return &m_optics[m_index.firstOfSame[m_lastAsked]];
    const OpticsKey wanted(fov, textOf(text));
    const auto& firsts = m_index.firstOfKey;
    const auto found = std::lower_bound(
        firsts.begin(), firsts.end(), wanted,
        [&](std::size_t at, const OpticsKey& key) { return keyOf(m_optics[at]) < key; });
    if (found == firsts.end() || keyOf(m_optics[*found]) != wanted) return nullptr;
    m_lastAsked = *found;
    return &m_optics[*found];
}

/// The first range of an optics with exactly these bounds; null when there is none.
const TemperatureRange* ConfigCali::findRange(int fov, const char* text, float min, float max) {
    const OpticsDef* const optics = findOptics(fov, text);
    if (optics == nullptr) return nullptr;
    const int position = positionOf(*optics, min, max);
    return position < 0 ? nullptr : &optics->TempRanges[static_cast<std::size_t>(position)];
}

const TemperatureRange* ConfigCali::rangeAt(int fov, const char* text, int index) {
    const OpticsDef* const optics = findOptics(fov, text);
    if (optics == nullptr || isPast(optics->TempRanges.size(), index)) return nullptr;
    return &optics->TempRanges[static_cast<std::size_t>(index)];
}
