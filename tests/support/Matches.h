// Regular expressions, in one source: each that includes <regex> takes seconds to compile.
#pragma once

#include <string>
#include <vector>

namespace thermika_test {

/// What matches `expression` in `text`, one after the other: the whole match, then each group.
std::vector<std::vector<std::string>> matchesIn(const std::string& text,
                                                const std::string& expression);

}  // namespace thermika_test
