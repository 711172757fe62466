// `thermika cameras`: what is attached, and whether each camera can be used.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "cli/Attached.h"
#include "cli/Camera.h"
#include "cli/Commands.h"
#include "cli/Escape.h"
#include "cli/Table.h"

namespace thermika::cli {

namespace {

using dax::AttachedDevice;
using dax::DeviceState;

struct CamerasOptions {
    bool isSerialsOnly = false;
};

bool isUsable(const AttachedDevice& device) { return device.state == DeviceState::kCamera; }

bool isUnreadable(const AttachedDevice& device) {
    return device.state == DeviceState::kSerialUnreadable;
}

const char* deviceWord(DeviceState state) {
    switch (state) {
        case DeviceState::kCamera:
            return "camera";
        case DeviceState::kSerialUnreadable:
            return "unreadable";
        case DeviceState::kSerialUnusable:
            return "no-serial";
        case DeviceState::kNoCamera:
            break;
    }
    return "no-camera";
}

Json filesDocument(const CameraFiles& files) {
    Json result;
    result["description"] = stateWord(files.description.file.state);
    result["complete"] = files.isComplete();
    const bool isKnown = files.description.cali != nullptr;
    result["expected"] = isKnown ? Json(files.files.size()) : Json();
    result["missing"] = isKnown ? Json(files.lacking()) : Json();
    result["problem"] = isKnown ? Json() : jsonText(files.description.problem);
    return result;
}

Json document(const Session& session, const dax::BusListing& bus) {
    Json list = Json::array();
    for (const AttachedDevice& device : bus.devices) {
        Json each;
        each["entry"] = jsonText(device.entry);
        each["state"] = deviceWord(device.state);
        each["serial"] = isUsable(device) ? Json(device.serial) : Json();
        each["serialText"] = jsonText(device.serialText);
        each["vendor"] = jsonText(device.vendor);
        each["product"] = jsonText(device.product);
        each["productText"] = jsonText(device.productText);
        each["problem"] = isUsable(device) ? Json() : jsonText(sentenceAbout(device));
        each["files"] =
            isUsable(device) ? filesDocument(lookAtFiles(session, device.serial)) : Json();
        list.push_back(each);
    }
    Json whole;
    whole["directory"] = jsonText(session.directory);
    whole["devices"] = list;
    whole["problem"] = bus.reason == 0 ? Json() : jsonText(busProblem(bus));
    return whole;
}

std::string table(const Session& session, const dax::BusListing& bus) {
    Table result({{"SERIAL"}, {"ENTRY"}, {"PRODUCT"}, {"FILES"}});
    for (const AttachedDevice& device : bus.devices) {
        if (!isUsable(device)) continue;
        const CameraFiles files = lookAtFiles(session, device.serial);
        result.add({{std::to_string(device.serial)},
                    {shown(device.entry)},
                    {device.productText.empty() ? "-" : shown(device.productText)},
                    {filesText(files), files.isComplete() ? Style::kGood : Style::kDoubtful}});
    }
    return result.text(session.output, terminalColumns());
}

std::string serials(const dax::BusListing& bus) {
    std::string text;
    for (const AttachedDevice& device : bus.devices)
        if (isUsable(device)) text += std::to_string(device.serial) + "\n";
    return text;
}

Status statusOf(const dax::BusListing& bus) {
    if (bus.reason != 0 || std::any_of(bus.devices.begin(), bus.devices.end(), isUnreadable))
        return Status::kFailed;
    return std::any_of(bus.devices.begin(), bus.devices.end(), isUsable) ? Status::kYes
                                                                         : Status::kNo;
}

void explain(const Output& output, const dax::BusListing& bus) {
    if (bus.reason != 0) return Output::complain(busProblem(bus));
    bool isAnyCamera = false;
    for (const AttachedDevice& device : bus.devices) {
        isAnyCamera = isAnyCamera || device.state != DeviceState::kNoCamera;
        if (isUnreadable(device))
            Output::complain(sentenceAbout(device));
        else if (!isUsable(device))
            output.note(sentenceAbout(device));
    }
    if (!isAnyCamera) output.note(noCameraSentence());
}

Status runCameras(Session& session, const CamerasOptions& options) {
    const dax::BusListing bus = attachedDevices();
    Output& output = session.output;
    const bool isAnyUsable = std::any_of(bus.devices.begin(), bus.devices.end(), isUsable);
    if (output.isJson)
        output.addDocument(document(session, bus));
    else if (options.isSerialsOnly)
        output.add(serials(bus));
    else if (isAnyUsable)
        output.add(table(session, bus));
    explain(output, bus);
    return statusOf(bus);
}

}  // namespace

Run addCameras(CLI::App& command) {
    const auto options = std::make_shared<CamerasOptions>();
    command.add_flag("--serials", options->isSerialsOnly,
                     "Print the serial numbers alone, a line each");
    command.footer("Example: thermika cameras --serials");
    return [options](Session& session) { return runCameras(session, *options); };
}

}  // namespace thermika::cli
