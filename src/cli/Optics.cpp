// `thermika optics`: what a camera was calibrated for.
#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/Camera.h"
#include "cli/Commands.h"
#include "cli/Escape.h"
#include "cli/Table.h"

namespace thermika::cli {

namespace {

struct RangeOfOptics {
    Range normal;
    Range extended;
    unsigned short decimals = 0;
    bool hasFramerates = false;  ///< without a list any rate is allowed, by an empty one none
    std::vector<unsigned short> framerates;
    std::size_t lacking = 0;  ///< files of it that are not present
};

struct Optics {
    int fovDeg = 0;
    std::string text;
    std::vector<RangeOfOptics> ranges;

    bool isComplete() const {
        return std::all_of(ranges.begin(), ranges.end(),
                           [](const RangeOfOptics& each) { return each.lacking == 0; });
    }
};

RangeOfOptics rangeAt(ConfigCali& cali, OPTICS& key, int index) {
    RangeOfOptics result;
    result.normal = *std::unique_ptr<Range>(cali.getTempRange(&key, index));
    result.extended = *std::unique_ptr<Range>(cali.getExtendedTempRange(&key, index));
    result.decimals =
        cali.getTempRangeDecimal(key.fov, key.text, result.normal.min, result.normal.max);
    const int count = cali.getFramerateCount(&key, &result.normal);
    for (int i = 0; i < count; ++i)
        result.framerates.push_back(cali.getFramerate(&key, &result.normal, i));
    unsigned short rate = 0;
    result.hasFramerates = count > 0 || !cali.checkFramerate(&key, &result.normal, rate);
    return result;
}

std::vector<Optics> listOptics(ConfigCali& cali) {
    std::vector<Optics> all;
    for (int i = 0; i < cali.getOpticsCount(); ++i) {
        const std::unique_ptr<OPTICS> key(cali.getOptics(i));
        Optics& optics = all.emplace_back();
        optics.fovDeg = key->fov;
        optics.text = key->text == nullptr ? "" : key->text;
        const int ranges = cali.getTempRangeCount(key.get());
        for (int j = 0; j < ranges; ++j) optics.ranges.push_back(rangeAt(cali, *key, j));
    }
    return all;
}

/// A file that several ranges need is lacking in each of them.
void countLacking(const CameraFiles& files, unsigned long serial, std::vector<Optics>& all) {
    std::unordered_set<std::string_view> lacking;
    for (const CameraFile& each : files.files)
        if (!each.isPresent()) lacking.insert(each.file.name);
    for (const dax::ExpectedFile& each : dax::expectedFiles(static_cast<int>(serial))) {
        if (each.opticsIndex < 0 || lacking.count(each.name) == 0) continue;
        auto& ranges = all[static_cast<std::size_t>(each.opticsIndex)].ranges;
        ++ranges[static_cast<std::size_t>(each.rangeIndex)].lacking;
    }
}

Json document(unsigned long serial, const std::vector<Optics>& all) {
    Json list = Json::array();
    for (const Optics& optics : all) {
        Json ranges = Json::array();
        for (const RangeOfOptics& range : optics.ranges) {
            Json each;
            each["min"] = jsonNumber(range.normal.min);
            each["max"] = jsonNumber(range.normal.max);
            each["extendedMin"] = jsonNumber(range.extended.min);
            each["extendedMax"] = jsonNumber(range.extended.max);
            each["decimals"] = range.decimals;
            each["framerates"] = range.hasFramerates ? Json(range.framerates) : Json();
            each["missing"] = range.lacking;
            ranges.push_back(each);
        }
        Json each;
        each["fov"] = optics.fovDeg;
        each["text"] = jsonText(optics.text);
        each["complete"] = optics.isComplete();
        each["ranges"] = ranges;
        list.push_back(each);
    }
    Json whole;
    whole["serial"] = serial;
    whole["optics"] = list;
    return whole;
}

std::string boundsText(const Range& range) {
    return numberText(range.min) + ".." + numberText(range.max);
}

std::string framerateText(const RangeOfOptics& range) {
    if (range.framerates.empty()) return range.hasFramerates ? "none" : "any";
    std::string text;
    for (const unsigned short each : range.framerates)
        text.append(text.empty() ? "" : " ").append(std::to_string(each));
    return text;
}

Cell filesCell(const RangeOfOptics& range) {
    if (range.lacking == 0) return {"complete", Style::kGood};
    return {std::to_string(range.lacking) + " missing", Style::kBad};
}

Table table(const std::vector<Optics>& all) {
    Table result(
        {{"FOV", true}, {"TEXT"}, {"RANGE"}, {"EXTENDED"}, {"DECIMALS", true}, {"FILES"}, {"HZ"}});
    for (const Optics& optics : all) {
        const Cell fov{std::to_string(optics.fovDeg)};
        const Cell text{optics.text.empty() ? "-" : shown(optics.text)};
        if (optics.ranges.empty()) result.add({fov, text, {"-"}, {"-"}, {"-"}, {"-"}, {"-"}});
        for (const RangeOfOptics& range : optics.ranges)
            result.add({fov,
                        text,
                        {boundsText(range.normal)},
                        {boundsText(range.extended)},
                        {std::to_string(range.decimals)},
                        filesCell(range),
                        {framerateText(range)}});
    }
    return result;
}

Status runOptics(Session& session, const std::string& serialText) {
    const unsigned long serial = chosenCamera(serialText, "optics");
    const CameraFiles files = lookAtFiles(session, serial);
    if (files.description.cali == nullptr)
        throw Problem(Status::kFailed, files.description.problem);
    std::vector<Optics> all = listOptics(*files.description.cali);
    countLacking(files, serial, all);
    Output& output = session.output;
    if (output.isJson)
        output.addDocument(document(serial, all));
    else
        output.add(table(all).text(output, terminalColumns()));
    return Status::kYes;
}

}  // namespace

Run addOptics(CLI::App& command) {
    const auto serial = std::make_shared<std::string>();
    addSerialArgument(command, *serial);
    command.footer("Example: thermika optics 14080045");
    return [serial](Session& session) { return runOptics(session, *serial); };
}

}  // namespace thermika::cli
