// Calibration descriptions for tests: short ones written as text, a ConfigCali of one's own that
// has loaded one, and what its queries hand out as values.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "imgproc/Cali.h"
#include "support/TestFiles.h"

namespace thermika_test {

constexpr int kSerial = 12345678;

/// A whole document: `content` between the root's lines.
std::string description(std::string_view content);

/// The content of a document with these optics, in the containers that they belong into.
std::string opticsList(std::string_view optics);

/// One optics: a field of view, a text and what "TempRanges" holds.
std::string opticsElement(int fov, std::string_view text, std::string_view ranges);

/// One range from `low` to `high`, with what else stands in it.
std::string rangeElement(std::string_view low, std::string_view high, std::string_view more = "");

/// Writes "Cali-<serial>.xml" into the folder.
void writeDescription(const TempDir& folder, int serial, std::string_view content);

/// What the reader makes of a document of this content.
MainSection mainOf(std::string_view content);
std::vector<OpticsDef> opticsOf(std::string_view content);

/// A calibration data object that loaded a document of this content as kSerial's.
class LoadedCali {
public:
    explicit LoadedCali(std::string_view content);

    ConfigCali* operator->() { return &m_cali; }
    ConfigCali& operator*() { return m_cali; }

private:
    TempDir m_folder;
    ConfigCali m_cali;
};

/// For the queries, which take texts without const and leave them alone.
char* asText(const char* text);

using Bounds = std::optional<std::pair<float, float>>;

/// What the record holds; frees it.
Bounds take(Range* range);

/// The same of an optics (throws when there is none): field of view and text ("(null)" when it has
/// none).
std::pair<int, std::string> take(OPTICS* optics);

}  // namespace thermika_test
