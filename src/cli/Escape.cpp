// Decodes UTF-8 strictly, character by character; whatever is none is escaped byte by byte.
#include "cli/Escape.h"

#include <langinfo.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cwchar>
#include <memory>
#include <type_traits>

namespace thermika::cli {

namespace {

constexpr char32_t kEscapedByte = 0x10FE00;  // plus the byte
constexpr char32_t kNoCharacter = 0xFFFFFFFF;
constexpr const char* kDigits = "0123456789ABCDEF";

struct Decoded {
    char32_t character = kNoCharacter;
    std::size_t bytes = 1;
};

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// The first character of `text`, which is not empty; kNoCharacter when its first byte begins none.
Decoded decodeFirst(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) return {first, 1};
    const std::size_t count = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < count) return {};
    char32_t character = first & (0x7FU >> count);
    for (const char byte : text.substr(1, count - 1)) {
        if (!isContinuation(byte)) return {};
        character = (character << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};  // others would be overlong
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < kSmallest[count] || character > 0x10FFFF || isSurrogate) return {};
    return {character, count};
}

/// Whether a terminal acts on it, or a reader takes what follows for something else.
bool isActedOn(char32_t character) {
    struct Span {
        char32_t first;
        char32_t last;
    };
    constexpr Span kSpans[] = {
        {0x00, 0x1F},       {0x7F, 0x9F},                        // controls
        {0xAD, 0xAD},       {0x61C, 0x61C},   {0x200B, 0x200F},  // invisible, direction
        {0x2028, 0x202E},                                        // line, paragraph, direction
        {0x2060, 0x206F},   {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB},  // invisible, direction
        {0xE0000, 0xE007F},                                      // tags
    };
    return std::any_of(std::begin(kSpans), std::end(kSpans), [character](const Span& span) {
        return character >= span.first && character <= span.last;
    });
}

void appendHex(std::string& out, std::string_view bytes) {
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        out.append("\\x").append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xFU]);
    }
}

/// As UTF-8; of four bytes, as all of this form are.
void appendEscapedByte(std::string& out, char byte) {
    const char32_t character = kEscapedByte + static_cast<unsigned char>(byte);
    out.push_back(static_cast<char>(0xF0U | (character >> 18U)));
    for (const unsigned int shift : {12U, 6U, 0U})
        out.push_back(static_cast<char>(0x80U | ((character >> shift) & 0x3FU)));
}

/// Null means the one that the process has.
using Locale = std::unique_ptr<std::remove_pointer_t<locale_t>, decltype(&freelocale)>;

/// The process's locale for as long as it lives has the characters of UTF-8; in this thread only.
class Utf8Characters {
public:
    Utf8Characters() { uselocale(m_locale.get()); }
    ~Utf8Characters() { uselocale(m_before); }
    Utf8Characters(const Utf8Characters&) = delete;
    Utf8Characters& operator=(const Utf8Characters&) = delete;

private:
    Locale m_locale{newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr), freelocale};
    locale_t m_before = uselocale(nullptr);
};

/// While Utf8Characters lives.
std::size_t widthOf(char32_t character) {
    const int width = wcwidth(static_cast<wchar_t>(character));
    return width < 0 ? 1 : static_cast<std::size_t>(width);
}

bool findUtf8Locale() {
    // Not setlocale(): the library makes LC_NUMERIC follow LC_CTYPE, and numbers are to be the same
    // everywhere.
    const Locale environment(newlocale(LC_CTYPE_MASK, "", nullptr), freelocale);
    return environment && nl_langinfo_l(CODESET, environment.get()) == std::string_view("UTF-8");
}

}  // namespace

bool isUtf8Locale() {
    static const bool isUtf8 = findUtf8Locale();
    return isUtf8;
}

std::string escaped(std::string_view bytes, bool keepUtf8) {
    std::string out;
    out.reserve(bytes.size());
    while (!bytes.empty()) {
        const auto [character, count] = decodeFirst(bytes);
        const std::string_view piece = bytes.substr(0, count);
        bytes.remove_prefix(count);
        if (character == '\\')
            out += "\\\\";
        else if (character == kNoCharacter || isActedOn(character) ||
                 (character > 0x7F && !keepUtf8))
            appendHex(out, piece);
        else
            out += piece;
    }
    return out;
}

std::string shown(std::string_view bytes) { return escaped(bytes, isUtf8Locale()); }

bool isShownAsItIs(std::string_view bytes) {
    std::string plain(bytes);
    plain.erase(std::remove(plain.begin(), plain.end(), '\\'), plain.end());
    return shown(plain) == plain;
}

std::string losslessUtf8(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    while (!bytes.empty()) {
        const auto [character, count] = decodeFirst(bytes);
        const std::string_view piece = bytes.substr(0, count);
        bytes.remove_prefix(count);
        const bool looksEscaped = (character & ~0xFFU) == kEscapedByte;
        if (character == kNoCharacter || looksEscaped)
            for (const char byte : piece) appendEscapedByte(out, byte);
        else
            out += piece;
    }
    return out;
}

std::size_t columnsOf(std::string_view text) {
    const Utf8Characters characters;
    std::size_t columns = 0;
    while (!text.empty()) {
        const auto [character, count] = decodeFirst(text);
        text.remove_prefix(count);
        columns += widthOf(character);
    }
    return columns;
}

std::size_t bytesWithin(std::string_view text, std::size_t columns) {
    const Utf8Characters characters;
    std::size_t bytes = 0;
    while (bytes < text.size()) {
        const auto [character, count] = decodeFirst(text.substr(bytes));
        const std::size_t width = widthOf(character);
        if (width > columns) break;
        columns -= width;
        bytes += count;
    }
    return bytes;
}

std::string shortened(std::string_view text, std::size_t most) {
    if (text.size() <= most) return std::string(text);
    std::size_t bytes = 0;
    for (std::size_t next = 0; next <= most; next += decodeFirst(text.substr(next)).bytes)
        bytes = next;
    return std::string(text.substr(0, bytes)) + "...";
}

}  // namespace thermika::cli
