// See the header.
#include "support/LogLines.h"

#include <regex>
#include <sstream>
#include <stdexcept>

#include "sdk/IRLogger.h"
#include "sdk/Logger.h"

namespace thermika_test {

LogLines::LogLines() { dax::IRLogger::setVerbosity(dax::IRLOG_DEBUG, dax::IRLOG_OFF, "unused"); }

LogLines::~LogLines() { kelvra::Logger::releaseInstance(); }

std::vector<std::string> LogLines::all() {
    static const std::regex form(
        R"(((ERROR|WARNING|INFO|DEBUG) \[\w+):[0-9]+(\] )@ [0-9.e+-]+s :(.*))");
    std::vector<std::string> lines;
    std::istringstream text(m_captured.text());
    for (std::string line; std::getline(text, line);) {
        std::smatch parts;
        if (!std::regex_match(line, parts, form))
            throw std::runtime_error("not a line of the log: " + line);
        lines.push_back(parts[1].str() + parts[3].str() + parts[4].str());
    }
    return lines;
}

}  // namespace thermika_test
