// Composes log lines and the log file's name, and writes the lines to the chosen sinks.
#include "sdk/Logger.h"

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <memory>

#include "sdk/base/WallClock.h"

namespace kelvra {

namespace {

constexpr const char* kLevelWords[] = {"ERROR ", "WARNING ", "INFO ", "DEBUG "};
constexpr std::size_t kW2CBytes = 1024;  // the last one stays the terminator

bool g_saidNotConfigured = false;

const char* levelWord(unsigned int severity) {
    return severity < std::size(kLevelWords) ? kLevelWords[severity] : kLevelWords[0];
}

/// Six significant digits with "." as the decimal point, as a stream in the classic locale shows
/// them; the calling thread's locale is left as it was.
std::string anySecondsText(long double seconds) {
    const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    const locale_t callers = uselocale(classic);
    char text[32];
    std::snprintf(text, sizeof text, "%Lg", seconds);
    uselocale(callers);
    freelocale(classic);
    return text;
}

/// The same, and much quicker for nearly all that a clock gives: what is shown without exponent and
/// does not lie halfway between two such texts.
std::string secondsText(long double seconds) {
    if (!(seconds >= 1e-4L && seconds < 999999)) return anySecondsText(seconds);
    const auto picoseconds = static_cast<std::uint64_t>(seconds * 1e12L);  // wrong by less than one
    std::uint64_t step = 1000;  // of the last digit that is shown
    std::size_t places = 9;     // digits after the point
    while (picoseconds >= step * 1000000) {
        step *= 10;
        --places;
    }
    const std::uint64_t rest = picoseconds % step;
    if (rest == step / 2) return anySecondsText(seconds);

    std::string text = std::to_string(picoseconds / step + (rest < step / 2 ? 0 : 1));
    if (places == 0) return text;
    if (text.size() <= places) text.insert(0, places + 1 - text.size(), '0');
    text.insert(text.size() - places, 1, '.');
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

std::string stampedName(const std::string& name) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    tzset();
    localtime_r(&now, &local);
    std::string stamped = name;
    for (const int number : {local.tm_mday, local.tm_mon + 1, local.tm_year + 1900, local.tm_hour})
        stamped.append("_").append(std::to_string(number));
    for (const int number : {local.tm_min, local.tm_sec})
        stamped.append("-").append(std::to_string(number));
    return stamped.append(".log");
}

long double elapsedSeconds(long double startMs) { return (wallClockMs() - startMs) / 1000.0L; }

/// What write() does, without what it asks around that: nothing more is written after a failure.
void appendTo(std::ofstream& file, const std::string& text) {
    const auto bytes = static_cast<std::streamsize>(text.size());
    if (file && file.rdbuf()->sputn(text.data(), bytes) != bytes) file.setstate(std::ios::badbit);
}

/// A line up to the message.
std::string lineStart(const char* word, const std::string& file, int line, long double seconds,
                      std::size_t messageChars) {
    std::string text;
    text.reserve(file.size() + messageChars + 64);
    text.append(word).append("[").append(file).append(":").append(std::to_string(line));
    return text.append("] @ ").append(secondsText(seconds)).append("s :");
}

}  // namespace

Logger* Logger::m_ = nullptr;

Logger* Logger::getInstance() {
    if (m_ == nullptr) m_ = std::make_unique<Logger>().release();
    return m_;
}

void Logger::releaseInstance() {
    delete m_;
    m_ = nullptr;
}

// Deliberate: constructing a logger forgets the one handed out so far; getInstance() stores the new
// one right afterwards.
Logger::Logger() : m_startMs(wallClockMs()) { m_ = nullptr; }

Logger::~Logger() = default;

void Logger::configure(const std::string& name, loggerConf_ conf, int fileLevel, int consoleLevel) {
    m_fileLevel = fileLevel;
    m_consoleLevel = consoleLevel;
    m_file.close();
    // Deliberate: compared with the stamped name, so a caller who passes the same base name again
    // in a later second gets a new file.
    if (name != m_fileName) m_fileName = stampedName(name);
    if ((conf & LOGGER_FILE) != 0) {
        // Unbuffered: a line is in the file once it is printed.
        m_file.rdbuf()->pubsetbuf(nullptr, 0);
        m_file.open(m_fileName, std::ios::out | std::ios::app);
    }
    m_configured = true;
    m_conf = conf;
}

void Logger::print(unsigned int severity, const std::string& file, int line,
                   const std::string& message) {
    if (!m_configured) {
        if (g_saidNotConfigured) return;
        const std::string warning =
            lineStart("", file, line, elapsedSeconds(m_startMs), 0) + " Logger not configured!\n";
        std::fputs(warning.c_str(), stderr);
        g_saidNotConfigured = true;
        return;
    }

    // Unsigned on both sides: a negative level lets every severity through.
    const bool toFile = isOn(LOGGER_FILE) && severity <= static_cast<unsigned int>(m_fileLevel);
    const bool toConsole =
        isOn(LOGGER_CONSOLE) && severity <= static_cast<unsigned int>(m_consoleLevel);
    if (!toFile && !toConsole) return;

    std::string text =
        lineStart(levelWord(severity), file, line, elapsedSeconds(m_startMs), message.size());
    text.append(message).append("\n");
    if (toFile) appendTo(m_file, text);
    // As a zero-terminated text: a message with a zero byte ends there.
    if (toConsole) std::fputs(text.c_str(), stderr);
}

const char* W2C(const wchar_t* text) {
    static char buffer[kW2CBytes];
    // Deliberate: all of it, so that a conversion that fails shows nothing of an earlier text.
    for (char& byte : buffer) byte = '\0';
    std::wcstombs(buffer, text, kW2CBytes - 1);
    return buffer;
}

const char* W2C(const char* text) { return text; }

}  // namespace kelvra
