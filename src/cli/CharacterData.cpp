// One pass without recursion: a description's text may have any length.
#include "cli/CharacterData.h"

#include <libxml/parserInternals.h>

#include <charconv>
#include <cstddef>
#include <system_error>

namespace thermika::cli {

namespace {

struct NamedRow {
    std::string_view name;
    const char* character;
};

constexpr NamedRow kNamed[] = {
    {"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"quot", "\""}, {"apos", "'"}};

constexpr std::size_t kMostCharacterBytes = 4;

/// XML 1.0, production 2.
bool isCharacter(unsigned number) {
    return number == '\t' || number == '\n' || number == '\r' ||
           (number >= 0x20 && number <= 0xD7FF) || (number >= 0xE000 && number <= 0xFFFD) ||
           (number >= 0x10000 && number <= 0x10FFFF);
}

std::optional<std::string> numberedCharacter(std::string_view digits, int base) {
    unsigned number = 0;
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number, base);
    if (result.ec != std::errc() || result.ptr != end || !isCharacter(number)) return std::nullopt;
    xmlChar bytes[kMostCharacterBytes];
    const int count = xmlCopyCharMultiByte(bytes, static_cast<int>(number));
    return std::string(bytes, bytes + count);
}

/// What stands between "&" and ";".
std::optional<std::string> referencedCharacter(std::string_view reference) {
    for (const NamedRow& row : kNamed)
        if (row.name == reference) return row.character;
    if (reference.substr(0, 2) == "#x") return numberedCharacter(reference.substr(2), 16);
    if (reference.substr(0, 1) == "#") return numberedCharacter(reference.substr(1), 10);
    return std::nullopt;
}

}  // namespace

std::optional<std::string> readText(std::string_view written) {
    if (written.find('<') != written.npos || written.find("]]>") != written.npos)
        return std::nullopt;
    std::string text;
    for (std::size_t from = written.find('&'); from != written.npos; from = written.find('&')) {
        const std::size_t end = written.find(';', from);
        if (end == written.npos) return std::nullopt;
        const auto character = referencedCharacter(written.substr(from + 1, end - from - 1));
        if (!character) return std::nullopt;
        text.append(written.substr(0, from)).append(*character);
        written.remove_prefix(end + 1);
    }
    return text.append(written);
}

std::string writtenText(std::string_view text) {
    std::string written;
    for (const char each : text) {
        if (each == '&')
            written += "&amp;";
        else if (each == '<')
            written += "&lt;";
        else
            written += each;
    }
    return written;
}

}  // namespace thermika::cli
