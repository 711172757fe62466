// The library writes log lines as they are, with whatever a camera or a description put into them.
// So `stderr` becomes a stream of our own that escapes them on their way.
#include "cli/LogStream.h"

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "cli/Escape.h"
#include "cli/WriteAll.h"
#include "fetch/Memory.h"
#include "sdk/IRLogger.h"

namespace thermika::cli {

namespace {

/// Line feeds stay.
ssize_t writeEscaped(void* /*unused*/, const char* bytes, std::size_t size) {
    std::string text;
    for (std::string_view rest(bytes, size); !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        text += shown(line);
        rest.remove_prefix(line.size());
        if (rest.empty()) break;
        text += '\n';
        rest.remove_prefix(1);
    }
    return writeAll(STDERR_FILENO, text) ? static_cast<ssize_t>(size) : -1;
}

}  // namespace

void configureLog(bool isShown) {
    const auto level = isShown ? dax::IRLOG_DEBUG : dax::IRLOG_OFF;
    dax::IRLogger::setVerbosity(level, dax::IRLOG_OFF, "thermika");
    if (!isShown) return;
    cookie_io_functions_t functions{};
    functions.write = writeEscaped;
    std::FILE* const stream = fopencookie(nullptr, "w", functions);
    fetch::ensureMemory(stream != nullptr);
    std::setvbuf(stream, nullptr, _IOLBF, BUFSIZ);
    stderr = stream;
}

}  // namespace thermika::cli
