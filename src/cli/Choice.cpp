// What was typed is looked for among all that the description has, whose list is short.
#include "cli/Choice.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <string_view>
#include <system_error>

#include "cli/Command.h"
#include "cli/Output.h"
#include "sdk/base/Truncation.h"

namespace thermika::cli {

namespace {

constexpr std::string_view kBetweenBounds = "..";

/// Nothing unless all of `text` is one number.
template <typename Number>
std::optional<Number> parseNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    Number number{};
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (text.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return number;
}

struct OpticsKey {
    int fovDeg;
    std::string text;
};

std::vector<OpticsKey> allOptics(ConfigCali& cali) {
    std::vector<OpticsKey> all;
    for (int i = 0; i < cali.getOpticsCount(); ++i) {
        const std::unique_ptr<OPTICS> each(cali.getOptics(i));
        all.push_back({each->fov, each->text == nullptr ? "" : each->text});
    }
    return all;
}

std::vector<Range> allRanges(ConfigCali& cali, const OpticsKey& optics) {
    std::vector<Range> all;
    std::string text = optics.text;
    const int count = cali.getTempRangeCount(optics.fovDeg, text.data());
    all.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i)
        all.push_back(*std::unique_ptr<Range>(cali.getTempRange(optics.fovDeg, text.data(), i)));
    return all;
}

std::string typedForm(const OpticsKey& optics) {
    return std::to_string(optics.fovDeg) + (optics.text.empty() ? "" : "," + optics.text);
}

std::string typedForm(const Range& range) {
    return numberText(range.min).append(kBetweenBounds).append(numberText(range.max));
}

std::string listed(const std::vector<std::string>& choices) {
    std::string text;
    for (const std::string& each : choices)
        text.append(text.empty() ? "" : ", ").append("\"" + each + "\"");
    return text;
}

[[noreturn]] void refuse(const std::string& what, const std::vector<std::string>& choices) {
    throw Problem(Status::kUsage, what + " (there is: " + listed(choices) + ")");
}

OpticsKey chooseOptics(ConfigCali& cali, const std::string& typed) {
    const std::vector<OpticsKey> all = allOptics(cali);
    if (typed.empty()) return all.front();
    const std::optional<OpticsChoice> wanted = parseOptics(typed);
    if (!wanted) refuse("--optics: \"" + typed + "\" is not FOV or FOV,TEXT", opticsChoices(cali));
    std::vector<OpticsKey> found;
    for (const OpticsKey& each : all) {
        if (each.fovDeg != wanted->fovDeg) continue;
        if (wanted->text && each.text != *wanted->text) continue;
        const bool isKnown = std::any_of(found.begin(), found.end(), [&](const OpticsKey& other) {
            return other.text == each.text;
        });
        if (!isKnown) found.push_back(each);
    }
    if (found.empty())
        refuse("--optics: the camera was not calibrated for \"" + typed + "\"",
               opticsChoices(cali));
    if (found.size() == 1) return found.front();
    // Without a text, the optics that has none is meant.
    const auto plain = std::find_if(found.begin(), found.end(),
                                    [](const OpticsKey& each) { return each.text.empty(); });
    if (plain != found.end()) return *plain;
    std::vector<std::string> forms;
    forms.reserve(found.size());
    for (const OpticsKey& each : found) forms.push_back(typedForm(each));
    refuse("--optics: \"" + typed + "\" is more than one optics", forms);
}

Range chooseRange(ConfigCali& cali, const OpticsKey& optics, const std::string& typed) {
    const std::vector<Range> all = allRanges(cali, optics);
    const auto choices = rangeChoices(cali, optics.fovDeg, optics.text);
    const std::string ofOptics = "the optics \"" + typedForm(optics) + "\"";
    if (all.empty())
        throw Problem(Status::kFailed,
                      ofOptics + " has no temperature range (choose another: thermika optics)");
    if (typed.empty()) return all.front();
    const std::optional<Range> wanted = parseRange(typed);
    if (!wanted) refuse("--range: \"" + typed + "\" is not MIN..MAX", choices);
    const auto find = [&](auto isSame) {
        return std::find_if(all.begin(), all.end(), [&](const Range& each) {
            return isSame(each.min, wanted->min) && isSame(each.max, wanted->max);
        });
    };
    auto found = find([](float has, float wants) { return has == wants; });
    if (found == all.end())
        found = find([](float has, float wants) { return std::trunc(has) == wants; });
    if (found == all.end())
        refuse("--range: " + ofOptics + " was not calibrated for \"" + typed + "\"", choices);
    return *found;
}

}  // namespace

std::optional<OpticsChoice> parseOptics(const std::string& typed) {
    const std::size_t comma = typed.find(',');
    const auto fov = parseNumber<int>(std::string_view(typed).substr(0, comma));
    if (!fov) return std::nullopt;
    OpticsChoice choice{*fov, std::nullopt};
    if (comma != std::string::npos) choice.text = typed.substr(comma + 1);
    return choice;
}

std::optional<Range> parseRange(const std::string& typed) {
    const std::size_t between = typed.find(kBetweenBounds);
    if (between == std::string::npos) return std::nullopt;
    const std::string_view text = typed;
    const auto min = parseNumber<float>(text.substr(0, between));
    const auto max = parseNumber<float>(text.substr(between + kBetweenBounds.size()));
    if (!min || !max) return std::nullopt;
    return Range{*min, *max};
}

Choice choose(ConfigCali& cali, const std::string& optics, const std::string& range) {
    const OpticsKey chosen = chooseOptics(cali, optics);
    const Range bounds = chooseRange(cali, chosen, range);
    return {chosen.fovDeg, chosen.text, dax::truncateToInt(bounds.min),
            dax::truncateToInt(bounds.max)};
}

std::vector<std::string> opticsChoices(ConfigCali& cali) {
    std::vector<std::string> choices;
    for (const OpticsKey& each : allOptics(cali)) {
        const std::string form = typedForm(each);
        if (std::find(choices.begin(), choices.end(), form) == choices.end())
            choices.push_back(form);
    }
    return choices;
}

std::vector<std::string> rangeChoices(ConfigCali& cali, int fovDeg, const std::string& text) {
    std::vector<std::string> choices;
    for (const Range& each : allRanges(cali, {fovDeg, text})) choices.push_back(typedForm(each));
    return choices;
}

}  // namespace thermika::cli
