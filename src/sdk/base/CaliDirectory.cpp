// The default directory of everything that is looked for without one.
#include "sdk/base/CaliDirectory.h"

#include <unistd.h>

namespace dax {

namespace {

constexpr const char* kDefaultSubdirectory = "Imager";

}  // namespace

std::optional<std::string> caliDirectory(const char* dir, std::size_t bytes,
                                         std::size_t nameChars) {
    if (*dir != '\0') return dir;
    std::string current(bytes, '\0');
    if (getcwd(current.data(), bytes) == nullptr) return std::nullopt;
    current.resize(current.find('\0'));
    return current.append(1, '/').append(kDefaultSubdirectory, 0, nameChars);
}

}  // namespace dax
