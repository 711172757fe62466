// One rule a line, so that the reason names the one that is broken.
#include "fetch/FileName.h"

#include <algorithm>
#include <cstddef>

namespace thermika::fetch {

namespace {

constexpr std::size_t kMaxNameBytes = 255;  // Linux takes no more in one path component

bool isControl(char letter) {
    const auto byte = static_cast<unsigned char>(letter);
    return byte < 0x20 || byte == 0x7f;
}

}  // namespace

bool isPartName(std::string_view name) {
    return name.size() > kPartPrefix.size() + kPartSuffix.size() &&
           name.substr(0, kPartPrefix.size()) == kPartPrefix &&
           name.substr(name.size() - kPartSuffix.size()) == kPartSuffix;
}

std::string nameRefusal(std::string_view name) {
    if (name.empty()) return "the file name is empty";
    if (name == "." || name == "..") return "the file name means a directory";
    if (name.find('/') != std::string_view::npos) return "the file name contains \"/\"";
    if (std::any_of(name.begin(), name.end(), isControl))
        return "the file name contains a control byte";
    if (name.size() > kMaxNameBytes) return "the file name is longer than 255 bytes";
    if (isPartName(name)) return "the file name is one of those used for unfinished files";
    return "";
}

}  // namespace thermika::fetch
