// Any message under any tag, line number, severity and verbosity: the log file holds exactly the
// promised line, or nothing. The input's first bytes are the numbers, the rest is tag and message.
#include "sdk/Logger.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "sdk/IRLogger.h"
#include "support/TestFiles.h"

namespace {

constexpr const char* kWords[] = {"ERROR ", "WARNING ", "INFO ", "DEBUG "};

struct Numbers {
    std::uint32_t severity;
    std::int32_t line;
    std::int32_t verbosity;
    std::uint8_t tagChars;
};

void require(bool kept) {
    if (!kept) std::abort();
}

/// What the one file of the folder holds ("" without one); the folder is empty afterwards.
std::string takeLog(const thermika_test::TempDir& folder) {
    std::string text;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        text += thermika_test::readFile(entry.path());
        std::filesystem::remove(entry.path());
    }
    return text;
}

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789.e-+") == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const thermika_test::TempDir folder;
    Numbers numbers{};
    if (size < sizeof numbers) return 0;
    std::memcpy(&numbers, data, sizeof numbers);
    std::string tag(reinterpret_cast<const char*>(data) + sizeof numbers, size - sizeof numbers);
    const std::string message = tag.substr(std::min<std::size_t>(numbers.tagChars, tag.size()));
    tag.resize(tag.size() - message.size());

    const auto verbosity = static_cast<dax::IRLoggerVerbosityLevel>(numbers.verbosity);
    dax::IRLogger::setVerbosity(dax::IRLOG_OFF, verbosity, (folder / "log").c_str());
    kelvra::Logger::getInstance()->print(numbers.severity, tag, numbers.line, message);
    kelvra::Logger::releaseInstance();

    const std::string log = takeLog(folder);
    const bool isGraded = verbosity >= dax::IRLOG_WARNING && verbosity <= dax::IRLOG_DEBUG;
    const auto shown = static_cast<std::uint32_t>(isGraded ? verbosity - dax::IRLOG_ERROR : 0);
    if (verbosity == dax::IRLOG_OFF || numbers.severity > shown) {
        require(log.empty());
        return 0;
    }
    const std::string start =
        kWords[numbers.severity] + ("[" + tag) + ":" + std::to_string(numbers.line) + "] @ ";
    const std::string end = "s :" + message + "\n";
    require(log.size() > start.size() + end.size() && log.compare(0, start.size(), start) == 0);
    const std::size_t seconds = log.size() - start.size() - end.size();
    require(isNumber(log.substr(start.size(), seconds)));
    require(log.compare(start.size() + seconds, end.size(), end) == 0);
    return 0;
}
