// `thermika validate`: what is wrong with a configuration document after somebody edited it.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/Camera.h"
#include "cli/Commands.h"
#include "cli/Escape.h"
#include "cli/ValidateCamera.h"
#include "cli/ValidateDocument.h"
#include "cli/XmlMemory.h"

namespace thermika::cli {

namespace {

struct ValidateArguments {
    std::string file;
    std::string serialText;
};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Every byte of the file, and one more than a document may have where it has more.
std::string readDocument(const std::string& path) {
    std::string bytes(kMostDocumentBytes + 1, '\0');
    errno = 0;
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rbe"));
    if (file) bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    const int reason = errno;
    if (!file || std::ferror(file.get()) != 0)
        throw Problem(Status::kFailed, "cannot read " + path + ": " + std::strerror(reason) +
                                           " (name the document that you edited)");
    return bytes;
}

/// What the schema cannot know: the document's camera and what that camera was calibrated for.
std::vector<Finding> checkAgainstCamera(const Session& session, const ImagerSettings& settings,
                                        const ValidateArguments& arguments) {
    const DocumentNumber serial = settings.serial.value();
    const auto number = static_cast<unsigned long>(serial.value);
    if (!arguments.serialText.empty() && chosenCamera(arguments.serialText, "validate") != number)
        return {{serial.line, "<serial> holds \"" + std::to_string(number) + "\"",
                 "give " + arguments.serialText + ": the number of the camera that it is for"}};
    if (!choosesOptics(settings)) return {};
    loadDescription(session, number);
    auto* const manager = dax::IRCalibrationManager::getInstance();
    return checkChoice(settings, *manager->getAvailableOptics(number));
}

Json document(const std::string& file, const DocumentFindings& result) {
    Json list = Json::array();
    for (const Finding& finding : result.findings) {
        Json each;
        each["line"] = finding.line;
        each["wrong"] = jsonText(finding.wrong);
        each["right"] = jsonText(finding.right);
        list.push_back(each);
    }
    Json whole;
    whole["file"] = jsonText(file);
    whole["serial"] = result.settings.serial ? Json(result.settings.serial->value) : Json();
    whole["findings"] = list;
    return whole;
}

Status runValidate(Session& session, const ValidateArguments& arguments) {
    endWithoutXmlMemory();
    if (!arguments.serialText.empty()) chosenCamera(arguments.serialText, "validate");
    DocumentFindings result = checkDocument(readDocument(arguments.file));
    if (result.findings.empty())
        result.findings = checkAgainstCamera(session, result.settings, arguments);
    Output& output = session.output;
    const std::string& file = arguments.file;
    if (output.isJson)
        output.addDocument(document(file, result));
    else
        for (const Finding& finding : result.findings)
            output.add(shown(file + ":" + std::to_string(finding.line) + ": " + finding.wrong +
                             "; " + finding.right) +
                       "\n");
    if (result.areMore)
        output.note("only the first " + std::to_string(kMostFindings) + " findings are shown");
    if (!result.findings.empty()) return Status::kNo;
    output.note(file + ": nothing is wrong with it");
    return Status::kYes;
}

}  // namespace

Run addValidate(CLI::App& command) {
    const auto arguments = std::make_shared<ValidateArguments>();
    command.add_option("FILE", arguments->file, "The configuration document")
        ->required()
        ->type_name("");
    addSerialArgument(command, arguments->serialText, "the one in the document");
    command.footer("Example: thermika validate camera.xml");
    return [arguments](Session& session) { return runValidate(session, *arguments); };
}

}  // namespace thermika::cli
