// The choice of an optics and a temperature range, as users type it and as a description has it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "imgproc/Cali.h"

namespace thermika::cli {

/// "FOV" or "FOV,TEXT".
struct OpticsChoice {
    int fovDeg = 0;
    std::optional<std::string> text;
};

/// Nothing when `typed` is none.
std::optional<OpticsChoice> parseOptics(const std::string& typed);

/// "MIN..MAX", in degrees Celsius. Nothing when `typed` is none.
std::optional<Range> parseRange(const std::string& typed);

/// An optics and one of its ranges, as a configuration document names them.
struct Choice {
    int fovDeg = 0;
    std::string text;
    int minTempC = 0;
    int maxTempC = 0;
};

/// The combination, of a description with at least one optics, that was typed ("": the first one
/// there is). Text and bounds are compared exactly; bounds without their fraction will do where no
/// exact ones are there. Without a text, the optics that has none is meant, or the only one. A
/// Problem, which names what there is, when there is no such combination, or more than one.
Choice choose(ConfigCali& cali, const std::string& optics, const std::string& range);

/// Each optics as parseOptics() takes it, once; each range of an optics as parseRange() takes it.
std::vector<std::string> opticsChoices(ConfigCali& cali);
std::vector<std::string> rangeChoices(ConfigCali& cali, int fovDeg, const std::string& text);

}  // namespace thermika::cli
