// `thermika config`: a camera's configuration document, as `thermika-genconfig` prints it or with a
// choice made.
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "cli/Camera.h"
#include "cli/CharacterData.h"
#include "cli/ChosenDocument.h"
#include "cli/Commands.h"
#include "cli/Escape.h"
#include "cli/NewFile.h"
#include "cli/XmlMemory.h"
#include "sdk/IRCalibrationManager.h"

namespace thermika::cli {

namespace {

struct ConfigOptions {
    std::string serial;
    std::string optics;
    std::string range;
    std::string file;
    bool mayReplace = false;

    bool isChoice() const { return !optics.empty() || !range.empty(); }
};

std::string without(std::string_view bytes, std::string text) {
    const auto isUnwanted = [bytes](char byte) { return bytes.find(byte) != bytes.npos; };
    text.erase(std::remove_if(text.begin(), text.end(), isUnwanted), text.end());
    return text;
}

/// The document has it as it stands, so that it must read the same.
void refuseDirectory(const std::string& directory) {
    // What escaping would change is no text of a document of UTF-8; "\" is.
    const std::string plain = without("\\", directory);
    const bool isPlain = escaped(plain, true) == plain;
    const bool isReadAlike = readText(directory) == directory;
    if (!isPlain || !isReadAlike)
        throw Problem(Status::kFailed, "the directory \"" + directory +
                                           "\" cannot stand in an XML document (choose another "
                                           "with --dir)");
}

/// A terminal could act on what it does not show; a file or a pipe gets every byte.
void refuseUnshown(const std::string& document) {
    const std::string plain = without("\\\n", document);
    if (isatty(STDOUT_FILENO) == 1 && shown(plain) != plain)
        throw Problem(Status::kFailed,
                      "the document has characters that this terminal does not show (write it to a "
                      "file: -o FILE)");
}

std::string documentOfChoice(const Session& session, unsigned long serial,
                             const ConfigOptions& options) {
    endWithoutXmlMemory();
    return chosenDocument(loadDescription(session, serial),
                          {serial, session.directory, options.optics, options.range});
}

std::string suggestingDocument(const Session& session, unsigned long serial) {
    const Description description = openDescription(session, serial);
    if (description.cali == nullptr)
        session.output.note("the suggested field of view and limits are placeholders: " +
                            description.problem);
    dax::IRCalibrationManager* const manager = dax::IRCalibrationManager::getInstance();
    manager->setCalibrationDir(session.directory.c_str());
    return manager->generateConfiguration(serial);
}

Status runConfig(Session& session, const ConfigOptions& options) {
    if (options.file == "-")
        throw Problem(
            Status::kUsage,
            "--output: \"-\" is no file's name (leave the option out for standard output, "
            "or write ./-)");
    const unsigned long serial = chosenCamera(options.serial, "config");
    refuseDirectory(session.directory);
    // The tool for the first document ends with one more line feed, and so do we.
    const std::string document = (options.isChoice() ? documentOfChoice(session, serial, options)
                                                     : suggestingDocument(session, serial)) +
                                 "\n";
    Output& output = session.output;
    if (!options.file.empty()) {
        writeNewFile(options.file, document, options.mayReplace);
        output.note("wrote " + options.file);
    }
    if (output.isJson) {
        Json whole;
        whole["serial"] = serial;
        whole["file"] = options.file.empty() ? Json() : jsonText(options.file);
        whole["document"] = jsonText(document);
        output.addDocument(whole);
    } else if (options.file.empty()) {
        refuseUnshown(document);
        output.add(document);
    }
    return Status::kYes;
}

}  // namespace

Run addConfig(CLI::App& command) {
    const auto options = std::make_shared<ConfigOptions>();
    addSerialArgument(command, options->serial);
    command
        .add_option("--optics", options->optics,
                    "Choose this optics in place of suggesting the first")
        ->type_name("FOV[,TEXT]");
    command
        .add_option("--range", options->range,
                    "Choose this temperature range, in degrees Celsius, in place of suggesting "
                    "the first")
        ->type_name("MIN..MAX");
    CLI::Option* const file =
        command.add_option("-o,--output", options->file, "Write the document to this new file")
            ->type_name("FILE");
    command.add_flag("--force", options->mayReplace, "With -o: replace a file that is there")
        ->needs(file);
    command.footer("Example: thermika config --optics 33 --range -20..100 -o camera.xml");
    return [options](Session& session) { return runConfig(session, *options); };
}

}  // namespace thermika::cli
