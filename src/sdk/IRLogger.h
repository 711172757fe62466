// The one place where the system chooses what is logged where.
#pragma once

namespace dax {

/// How much of the log a sink shows. Any other value shows errors only.
enum IRLoggerVerbosityLevel : int {
    IRLOG_OFF = 1,      ///< nothing
    IRLOG_ERROR = 2,    ///< errors
    IRLOG_WARNING = 3,  ///< errors and warnings
    IRLOG_INFO = 4,     ///< errors, warnings and information
    IRLOG_DEBUG = 5,    ///< errors, warnings, information and debugging
};

/// Front end of kelvra::Logger.
class IRLogger {
public:
    IRLogger() = default;
    ~IRLogger() = default;

    /// Configures the process-wide logger; may be called again.
    /// `consoleLevel` is for standard error, `fileLevel` for the log file, whose path is `logFile`
    /// ("rqthermika.log" when null or empty) followed by a time stamp and ".log". A file that
    /// cannot be opened is not reported.
    /// Process: creates the logger when there is none; takes the time zone from the environment, as
    /// tzset() does; unless `fileLevel` is IRLOG_OFF, creates the log file (in the working
    /// directory unless `logFile` names another) or opens it to append, and programs that the
    /// process starts inherit its descriptor.
    static void setVerbosity(IRLoggerVerbosityLevel consoleLevel, IRLoggerVerbosityLevel fileLevel,
                             const char* logFile);
};

}  // namespace dax
