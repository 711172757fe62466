// The texts of libxml2: who frees them, and how they are looked at.
#pragma once

#include <libxml/xmlmemory.h>
#include <libxml/xmlstring.h>

#include <cstddef>
#include <memory>
#include <string_view>

namespace thermika::cli {

/// What XML takes for white space.
constexpr std::string_view kBlanks = " \t\r\n";

struct XmlTextDeleter {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlText = std::unique_ptr<xmlChar, XmlTextDeleter>;

inline std::string_view view(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

/// Without the blanks around it.
inline std::string_view trimmed(std::string_view text) {
    const std::size_t from = text.find_first_not_of(kBlanks);
    if (from == std::string_view::npos) return {};
    return text.substr(from, text.find_last_not_of(kBlanks) + 1 - from);
}

}  // namespace thermika::cli
