// Each piece of the choice narrows the optics down; the first that leaves none is the finding.
#include "cli/ValidateCamera.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>

#include "cli/CharacterData.h"
#include "cli/ValidateMarkup.h"

namespace thermika::cli {

namespace {

using OpticsList = std::vector<dax::OpticsEntry>;

/// As a document's reader has it. A description may hold what can stand in no document.
std::string textOf(const dax::OpticsEntry& entry) {
    return readText(entry.text).value_or(entry.text);
}

/// As it has to stand in a document.
std::string writtenTextOf(const dax::OpticsEntry& entry) {
    return readText(entry.text) ? entry.text : writtenText(entry.text);
}

/// "a, b or c"; each once.
std::string oneOf(const std::vector<std::string>& all) {
    std::vector<std::string> words;
    for (const std::string& word : all)
        if (std::find(words.begin(), words.end(), word) == words.end()) words.push_back(word);
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) text += i + 1 == words.size() ? " or " : ", ";
        text += words[i];
    }
    return text;
}

std::string rangeText(long min, long max) {
    return std::to_string(min) + " to " + std::to_string(max);
}

std::string fieldsOfView(const OpticsList& optics) {
    std::vector<std::string> words;
    for (const dax::OpticsEntry& entry : optics) words.push_back(std::to_string(entry.fov));
    return oneOf(words);
}

std::string texts(const OpticsList& optics) {
    std::vector<std::string> words;
    for (const dax::OpticsEntry& entry : optics)
        if (!entry.text.empty()) words.push_back(inQuotes(writtenTextOf(entry)));
    return oneOf(words);
}

std::string ranges(const OpticsList& optics) {
    std::vector<std::string> words;
    for (const dax::OpticsEntry& entry : optics)
        for (const auto& [min, max] : entry.tempRanges) words.push_back(rangeText(min, max));
    return oneOf(words);
}

bool hasRange(const OpticsList& optics, long min, long max) {
    return std::any_of(optics.begin(), optics.end(), [min, max](const dax::OpticsEntry& entry) {
        return std::any_of(
            entry.tempRanges.begin(), entry.tempRanges.end(),
            [min, max](const auto& range) { return range.first == min && range.second == max; });
    });
}

template <typename Predicate>
OpticsList only(const OpticsList& optics, Predicate isWanted) {
    OpticsList kept;
    std::copy_if(optics.begin(), optics.end(), std::back_inserter(kept), isWanted);
    return kept;
}

bool hasText(const ImagerSettings& settings) {
    return settings.opticsText && !settings.opticsText->value.empty();
}

bool hasLimits(const ImagerSettings& settings) { return settings.minTempC && settings.maxTempC; }

std::string advice(const std::string& choices, const char* whenNone, const char* how = "") {
    return choices.empty() ? whenNone : "give " + choices + how;
}

std::vector<Finding> checkWithoutFieldOfView(const ImagerSettings& settings,
                                             const OpticsList& optics) {
    if (!hasLimits(settings) && !hasText(settings)) return {};
    const char* const what = hasLimits(settings) ? "limits stand" : "a text stands";
    const long line = hasLimits(settings) ? settings.minTempC->line : settings.opticsText->line;
    return {{line, std::string(what) + " without a field of view",
             advice(fieldsOfView(optics), "remove what stands: its description names no optics",
                    " as <fov> as well")}};
}

}  // namespace

bool choosesOptics(const ImagerSettings& settings) {
    return settings.fovDeg || hasLimits(settings) || hasText(settings);
}

std::vector<Finding> checkChoice(const ImagerSettings& settings,
                                 const std::vector<dax::OpticsEntry>& optics) {
    if (!settings.fovDeg) return checkWithoutFieldOfView(settings, optics);
    const DocumentNumber fov = *settings.fovDeg;
    std::string degrees = std::to_string(fov.value) + " degrees";

    OpticsList chosen =
        only(optics, [fov](const dax::OpticsEntry& entry) { return entry.fov == fov.value; });
    if (chosen.empty())
        return {{fov.line, "the camera has no optics of " + degrees,
                 advice(fieldsOfView(optics), "remove <fov>: its description names no optics")}};
    if (hasText(settings)) {
        const DocumentText& text = *settings.opticsText;
        const OpticsList named = only(
            chosen, [&text](const dax::OpticsEntry& entry) { return textOf(entry) == text.value; });
        if (named.empty())
            return {
                {text.line,
                 "no optics of " + degrees + " has the text " + inQuotes(writtenText(text.value)),
                 advice(texts(chosen), "leave it empty")}};
        chosen = named;
    } else {
        const OpticsList plain =
            only(chosen, [](const dax::OpticsEntry& entry) { return entry.text.empty(); });
        if (!plain.empty() && plain.size() < chosen.size()) degrees += " without a text";
        if (!plain.empty()) chosen = plain;
    }
    if (!hasLimits(settings))
        return {{fov.line, "a field of view stands without limits",
                 advice(ranges(chosen), "choose another: this optics has no ranges",
                        " as <temperature> as well")}};
    const long min = settings.minTempC->value;
    const long max = settings.maxTempC->value;
    if (hasRange(chosen, min, max)) return {};
    return {{settings.minTempC->line,
             "the optics of " + degrees + " was not calibrated for " + rangeText(min, max),
             advice(ranges(chosen), "choose another field of view: this optics has no ranges")}};
}

}  // namespace thermika::cli
