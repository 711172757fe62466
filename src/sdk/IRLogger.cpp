// Maps verbosity levels to the log sink's flags and thresholds.
#include "sdk/IRLogger.h"

#include <string>

#include "sdk/Logger.h"

namespace dax {

namespace {

constexpr const char* kDefaultLogFile = "rqthermika.log";

/// The highest severity that a sink of this verbosity shows.
int threshold(IRLoggerVerbosityLevel level) {
    switch (level) {
        case IRLOG_WARNING:
            return kelvra::kLogWarning;
        case IRLOG_INFO:
            return kelvra::kLogInfo;
        case IRLOG_DEBUG:
            return kelvra::kLogDebug;
        default:
            return kelvra::kLogError;
    }
}

}  // namespace

void IRLogger::setVerbosity(IRLoggerVerbosityLevel consoleLevel, IRLoggerVerbosityLevel fileLevel,
                            const char* logFile) {
    using kelvra::Logger;
    const int file = fileLevel != IRLOG_OFF ? Logger::LOGGER_FILE : Logger::LOGGER_NO_FILE;
    const int console =
        consoleLevel != IRLOG_OFF ? Logger::LOGGER_CONSOLE : Logger::LOGGER_NO_CONSOLE;
    const bool isNamed = logFile != nullptr && *logFile != '\0';
    Logger::getInstance()->configure(isNamed ? logFile : kDefaultLogFile,
                                     static_cast<Logger::loggerConf_>(file | console),
                                     threshold(fileLevel), threshold(consoleLevel));
}

}  // namespace dax
