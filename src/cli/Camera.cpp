// What the library would do on its way (create the directory, end the process for a long path) is
// ruled out before it is asked.
#include "cli/Camera.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "cli/Attached.h"

namespace thermika::cli {

namespace {

constexpr std::size_t kSerialDigits = 8;
constexpr int kNoCamera = 0;

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

/// A name with a "/" would lead out of the directory. No file in it has such a name.
dax::FileStatus statusOf(const Session& session, const std::string& name) {
    if (name.find('/') != std::string::npos) return {};
    return dax::fileStatus(pathOf(session, name));
}

/// `file` tells that the description is not there as it should be.
std::string absenceText(const dax::FileStatus& file) {
    if (file.state == dax::FileState::kUnreadable)
        return std::string(": ") + std::strerror(file.reason) + " (is it yours?)";
    return std::string(" is ") + stateText(file);
}

std::string tooLongText(const Session& session, unsigned long serial) {
    return pathOf(session, descriptionName(serial)) + " lists more than " +
           std::to_string(kMostFiles) +
           " files or optics, which no camera needs (fetch it anew: " + "thermika fetch " +
           std::to_string(serial) + " --all)";
}

/// The files that the description calls for. One that lists too much cannot be used afterwards.
std::vector<dax::ExpectedFile> filesOf(const Session& session, unsigned long serial,
                                       Description& description) {
    std::vector<dax::ExpectedFile> files;
    if (description.cali == nullptr) return files;
    const auto optics = static_cast<std::size_t>(description.cali->getOpticsCount());
    if (optics <= kMostFiles)
        files = dax::expectedFiles(static_cast<int>(serial), {}, kMostFiles + 1);
    if (optics <= kMostFiles && files.size() <= kMostFiles) return files;
    description.cali = nullptr;
    description.problem = tooLongText(session, serial);
    return {};
}

}  // namespace

void addSerialArgument(CLI::App& command, std::string& text, const std::string& otherwise) {
    command.add_option("SERIAL", text, "Serial number; without it " + otherwise)->type_name("");
}

unsigned long chosenCamera(const std::string& serialText, const std::string& command) {
    if (serialText.empty()) return onlyAttachedCamera(command);
    const bool isNumber = serialText.size() == kSerialDigits && serialText.front() != '0' &&
                          std::all_of(serialText.begin(), serialText.end(), isDigit);
    if (!isNumber)
        throw Problem(Status::kUsage, "\"" + serialText +
                                          "\" is no serial number: it has 8 digits and does not "
                                          "begin with 0 (see: thermika cameras)");
    return std::stoul(serialText);
}

std::string descriptionName(unsigned long serial) {
    return "Cali-" + std::to_string(serial) + ".xml";
}

std::string pathOf(const Session& session, const std::string& name) {
    return session.directory + "/" + name;
}

Description openDescription(const Session& session, unsigned long serial) {
    const std::string path = pathOf(session, descriptionName(serial));
    const std::string fetching = " (fetch it: thermika fetch " + std::to_string(serial) + ")";
    Description result;
    result.file = dax::fileStatus(path);
    if (result.file.state != dax::FileState::kPresent) {
        result.problem = "the calibration description " + path + absenceText(result.file);
        if (result.file.state != dax::FileState::kUnreadable) result.problem += fetching;
        return result;
    }
    ConfigCali* const cali = ConfigCali::getInstance();
    const int status = cali->load(session.directory.c_str(), static_cast<int>(serial));
    if (status == 0 && cali->getOpticsCount() > 0) {
        result.cali = cali;
        return result;
    }
    result.problem = path +
                     (status == 0 ? " lists no optics, so it is no calibration description"
                                  : " is no calibration description that can be read") +
                     fetching;
    // What is held would count as loaded when another file has come. No camera has this number.
    if (status == 0) cali->load(session.directory.c_str(), kNoCamera);
    return result;
}

ConfigCali& loadDescription(const Session& session, unsigned long serial) {
    Description description = openDescription(session, serial);
    filesOf(session, serial, description);
    if (description.cali == nullptr) throw Problem(Status::kFailed, description.problem);
    return *description.cali;
}

std::size_t CameraFiles::lacking() const {
    return files.size() - static_cast<std::size_t>(std::count_if(
                              files.begin(), files.end(), std::mem_fn(&CameraFile::isPresent)));
}

CameraFiles lookAtFiles(const Session& session, unsigned long serial) {
    CameraFiles result;
    result.description = openDescription(session, serial);
    auto expected = filesOf(session, serial, result.description);
    if (result.description.cali == nullptr) {
        result.files.push_back({{descriptionName(serial)}, result.description.file});
        return result;
    }
    std::unordered_set<std::string_view> names;
    result.files.reserve(expected.size());
    for (dax::ExpectedFile& each : expected) {
        if (!names.insert(each.name).second) continue;
        result.files.push_back({each, statusOf(session, each.name)});
    }
    return result;
}

const char* stateWord(dax::FileState state) {
    switch (state) {
        case dax::FileState::kPresent:
            return "present";
        case dax::FileState::kEmpty:
            return "empty";
        case dax::FileState::kNotRegular:
            return "not-regular";
        case dax::FileState::kUnreadable:
            return "unreadable";
        case dax::FileState::kMissing:
            break;
    }
    return "missing";
}

std::string stateText(const dax::FileStatus& status) {
    if (status.state == dax::FileState::kNotRegular) return "not a regular file";
    std::string text = stateWord(status.state);
    if (status.state == dax::FileState::kUnreadable)
        text.append(": ").append(std::strerror(status.reason));
    return text;
}

std::string filesText(const CameraFiles& files) {
    if (files.description.cali == nullptr)
        return files.description.file.state == dax::FileState::kPresent
                   ? "description unusable"
                   : "description " + stateText(files.description.file);
    const std::string count = std::to_string(files.files.size());
    if (files.isComplete()) return "complete (" + count + " files)";
    return std::to_string(files.lacking()) + " of " + count + " files not present";
}

}  // namespace thermika::cli
