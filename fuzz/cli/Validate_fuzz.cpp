// `thermika validate` on any bytes: findings that can be shown, in order, and no more than
// promised.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "cli/ValidateCamera.h"
#include "cli/ValidateDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using thermika::cli::Finding;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto result = thermika::cli::checkDocument(bytes);
    const auto& findings = result.findings;
    if (findings.size() > thermika::cli::kMostFindings) std::abort();
    if (!std::is_sorted(findings.begin(), findings.end(),
                        [](const Finding& a, const Finding& b) { return a.line < b.line; }))
        std::abort();
    // No more lines than line feeds; in an encoding that the document declares they may be other
    // bytes.
    const bool isEncoded = bytes.find("encoding") != bytes.npos || bytes.substr(0, 1) == "\x4C";
    const auto lineFeeds = std::count(bytes.begin(), bytes.end(), '\n');
    const auto lines = 1 + (isEncoded ? static_cast<std::ptrdiff_t>(size) : lineFeeds);
    for (const Finding& finding : findings)
        if (finding.line < 1 || finding.line > lines || finding.wrong.empty() ||
            finding.right.empty())
            std::abort();
    if (findings.empty() && !result.settings.serial) std::abort();
    static const std::vector<dax::OpticsEntry> kOptics = {
        {33, {{-20, 100}, {0, 250}}, ""}, {53, {{-20, 100}}, "O53"}, {53, {}, "HT"}};
    if (thermika::cli::checkChoice(result.settings, kOptics).size() > 1) std::abort();
    return 0;
}
