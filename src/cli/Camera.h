// The camera that a command is about, its calibration description and its calibration files.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "cli/Command.h"
#include "imgproc/Cali.h"
#include "sdk/camera/FileCheck.h"

namespace thermika::cli {

/// Adds the argument SERIAL, which ends up in `text`; `otherwise` says what is meant without it.
void addSerialArgument(CLI::App& command, std::string& text,
                       const std::string& otherwise = "the only attached camera");

/// The camera of that serial number, or the only one that is attached when it is "". A Problem when
/// it is no serial number, or as onlyAttachedCamera() says.
unsigned long chosenCamera(const std::string& serialText, const std::string& command);

/// "Cali-<serial>.xml".
std::string descriptionName(unsigned long serial);

std::string pathOf(const Session& session, const std::string& name);

/// What lies at the place of the camera's description, and whether it can be used. Nothing is
/// created.
struct Description {
    dax::FileStatus file;
    std::string problem;         ///< why it cannot be used, and what to do; "" when it is loaded
    ConfigCali* cali = nullptr;  ///< holds it; null when it cannot be used
};

Description openDescription(const Session& session, unsigned long serial);

/// More files than any camera needs, and more optics. A description can list far more in some
/// kilobytes; names that come twice count twice.
constexpr std::size_t kMostFiles = 20000;

/// The description; a Problem when it cannot be used or lists more than kMostFiles.
ConfigCali& loadDescription(const Session& session, unsigned long serial);

struct CameraFile {
    dax::ExpectedFile file;
    dax::FileStatus status;

    bool isPresent() const { return status.state == dax::FileState::kPresent; }
};

/// What a camera needs and what of it lies in the session's directory.
struct CameraFiles {
    Description description;  ///< one that lists more than kMostFiles cannot be used
    /// In the description's order, each name once; the description alone when it cannot be used.
    std::vector<CameraFile> files;

    std::size_t lacking() const;  ///< that are not present
    bool isComplete() const { return description.cali != nullptr && lacking() == 0; }
};

CameraFiles lookAtFiles(const Session& session, unsigned long serial);

/// "present", "missing", "empty", "not-regular" or "unreadable".
const char* stateWord(dax::FileState state);

/// The same for people, with the reason.
std::string stateText(const dax::FileStatus& status);

/// What the files amount to, in a few words: "complete (41 files)".
std::string filesText(const CameraFiles& files);

}  // namespace thermika::cli
