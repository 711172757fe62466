// The one source with <regex>.
#include "support/Matches.h"

#include <regex>

namespace thermika_test {

std::vector<std::vector<std::string>> matchesIn(const std::string& text,
                                                const std::string& expression) {
    const std::regex form(expression);
    std::vector<std::vector<std::string>> matches;
    for (std::sregex_iterator at(text.begin(), text.end(), form), end; at != end; ++at)
        matches.emplace_back(at->begin(), at->end());
    return matches;
}

}  // namespace thermika_test
