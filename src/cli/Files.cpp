// `thermika files`: every calibration file that a camera needs, and its state.
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "cli/Camera.h"
#include "cli/Commands.h"
#include "cli/Escape.h"
#include "cli/Table.h"

namespace thermika::cli {

namespace {

struct FilesOptions {
    std::string serial;
    bool isMissingOnly = false;
    bool isZeroSeparated = false;
};

const char* kindWord(dax::FileKind kind) {
    switch (kind) {
        case dax::FileKind::kData:
            return "data";
        case dax::FileKind::kCurve:
            return "curve";
        case dax::FileKind::kDescription:
            break;
    }
    return "description";
}

Json document(const Session& session, unsigned long serial, const CameraFiles& files,
              const FilesOptions& options) {
    Json list = Json::array();
    for (const CameraFile& file : files.files) {
        if (options.isMissingOnly && file.isPresent()) continue;
        Json each;
        each["name"] = jsonText(file.file.name);
        each["kind"] = kindWord(file.file.kind);
        each["state"] = stateWord(file.status.state);
        each["bytes"] = file.isPresent() ? Json(file.status.bytes) : Json();
        each["reason"] = file.isPresent() ? Json() : jsonText(stateText(file.status));
        list.push_back(each);
    }
    Json whole;
    whole["serial"] = serial;
    whole["directory"] = jsonText(session.directory);
    whole["complete"] = files.isComplete();
    whole["problem"] =
        files.description.cali != nullptr ? Json() : jsonText(files.description.problem);
    whole["files"] = list;
    return whole;
}

std::string table(const Session& session, const CameraFiles& files) {
    Table result({{"SIZE", true}, {"STATE"}, {"NAME"}});
    for (const CameraFile& file : files.files) {
        const bool isHere = file.isPresent();
        result.add({{isHere ? std::to_string(file.status.bytes) : "-"},
                    {stateText(file.status), isHere ? Style::kGood : Style::kBad},
                    {shown(file.file.name)}});
    }
    // Names stay whole, to be copied from the terminal.
    return result.text(session.output, 0);
}

std::string missingNames(const CameraFiles& files, bool isZeroSeparated) {
    std::string names;
    for (const CameraFile& file : files.files) {
        if (file.isPresent()) continue;
        // Zero bytes are for programs, which want the names as they are.
        names += isZeroSeparated ? file.file.name : shown(file.file.name);
        names += isZeroSeparated ? '\0' : '\n';
    }
    return names;
}

/// A description that is there and cannot be used leaves open what is needed.
Status statusOf(const CameraFiles& files) {
    const dax::FileState state = files.description.file.state;
    const bool isUnusable =
        files.description.cali == nullptr &&
        (state == dax::FileState::kPresent || state == dax::FileState::kUnreadable);
    if (isUnusable) return Status::kFailed;
    return files.isComplete() ? Status::kYes : Status::kNo;
}

Status runFiles(Session& session, const FilesOptions& options) {
    const unsigned long serial = chosenCamera(options.serial, "files");
    const CameraFiles files = lookAtFiles(session, serial);
    const Status status = statusOf(files);
    Output& output = session.output;
    if (output.isJson)
        output.addDocument(document(session, serial, files, options));
    else if (options.isMissingOnly)
        output.add(missingNames(files, options.isZeroSeparated));
    else
        output.add(table(session, files));
    if (status == Status::kFailed)
        Output::complain(files.description.problem);
    else if (files.description.cali == nullptr)
        output.note(files.description.problem);
    else if (!files.isComplete())
        output.note(filesText(files) + " in " + session.directory +
                    " (fetch them: thermika fetch " + std::to_string(serial) + ")");
    return status;
}

}  // namespace

Run addFiles(CLI::App& command) {
    const auto options = std::make_shared<FilesOptions>();
    addSerialArgument(command, options->serial);
    CLI::Option* const missing = command.add_flag("--missing", options->isMissingOnly,
                                                  "Print only the names of what is not there");
    command.add_flag("-0", options->isZeroSeparated, "With --missing: zero bytes between names")
        ->needs(missing);
    command.footer("Example: thermika files 14080045 --missing");
    return [options](Session& session) { return runFiles(session, *options); };
}

}  // namespace thermika::cli
