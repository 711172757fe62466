// The process-wide log sink: turns a severity, a source position and a message into one line for a
// file, for standard error, for both or for neither. dax::IRLogger is its usual front end. Nothing
// here is locked.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

namespace kelvra {

/// Severities of a line; any other number is shown as an error.
constexpr unsigned int kLogError = 0;
constexpr unsigned int kLogWarning = 1;
constexpr unsigned int kLogInfo = 2;
constexpr unsigned int kLogDebug = 3;

/// The log sink.
class Logger {
public:
    /// Which sinks are on; combined by bitwise or. Only LOGGER_FILE and LOGGER_CONSOLE are tested,
    /// the other two name a sink that is off.
    enum loggerConf_ : std::int32_t {
        LOGGER_FILE = 1,        ///< the log file
        LOGGER_NO_FILE = 2,     ///< without effect: says that the log file is off
        LOGGER_CONSOLE = 4,     ///< standard error
        LOGGER_NO_CONSOLE = 8,  ///< without effect: says that standard error is off
    };

    /// The one logger; it stays ours. Only an allocation failure propagates.
    /// Process: creates it, unconfigured, when there is none; its time starts then.
    static Logger* getInstance();

    /// Closes the log file and destroys the logger, if there is one; pointers to it are dead then.
    /// Process: the next getInstance() gives a fresh, unconfigured one whose time starts anew.
    static void releaseInstance();

    /// Prefer getInstance().
    /// Process: forgets the one logger without destroying it.
    Logger();
    ~Logger();  ///< of the one logger: use releaseInstance(), which forgets it as well
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// Chooses the sinks and, for each, the highest severity written to it (a negative level lets
    /// every severity through). May be called again at any time; the log file open until then is
    /// closed.
    ///
    /// The log file's path is `name` + "_day_month_year_hour-minute-second.log" in local time,
    /// numbers without leading zeros; only a `name` that is the current path already is taken as it
    /// stands (at first that is the empty one, which opens no file). With LOGGER_FILE it is created
    /// or appended to. A file that cannot be opened is not reported: its lines are lost, standard
    /// error keeps working. So are the lines after one that could not be written, until the next
    /// call.
    /// Process: creates the log file, or opens it to append, with LOGGER_FILE; programs that the
    /// process starts inherit its descriptor. Takes the time zone from the environment, as tzset()
    /// does.
    void configure(const std::string& name, loggerConf_ conf, int fileLevel, int consoleLevel);

    /// Writes "LEVEL [file:line] @ 1.5s :message" and a line break to every sink whose level is at
    /// least `severity`: "ERROR", "WARNING", "INFO" or "DEBUG".
    /// Seconds count from the logger's creation and follow no locale. `file` is the source file's
    /// stem. A message with a zero byte is cut there on standard error, line break and all; it is
    /// whole in the file.
    ///
    /// Before the first configure() the message is dropped; the first such call in the process says
    /// so in one line on standard error.
    /// Process: writing may raise SIGPIPE or SIGXFSZ, which end a process that does not ignore
    /// them; nothing here changes what it does with signals.
    void print(unsigned int severity, const std::string& file, int line,
               const std::string& message);

private:
    bool m_configured = false;
    std::string m_fileName;
    loggerConf_ m_conf = LOGGER_FILE;
    std::ofstream m_file;
    int m_fileLevel = 0;
    int m_consoleLevel = 0;
    long double m_startMs;

    static Logger* m_;

    bool isOn(loggerConf_ sink) const { return (m_conf & sink) != 0; }
};

/// `text` in the multibyte form of the current LC_CTYPE, at most 1023 bytes of it, terminated; it
/// ends early where a character has no such form. The buffer is static: the next call clears and
/// overwrites it.
const char* W2C(const wchar_t* text);

/// `text` itself.
const char* W2C(const char* text);

}  // namespace kelvra
