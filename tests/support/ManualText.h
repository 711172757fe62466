// The manuals in docs/man as text: their parts, lines and words.
#pragma once

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support/BuildPaths.h"
#include "support/TestFiles.h"

namespace thermika_test {

inline std::string manual(const std::string& name) {
    return readFile(std::string(THERMIKA_SOURCES) + "/docs/man/" + name);
}

inline std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

inline std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream in(line);
    return {std::istream_iterator<std::string>(in), {}};
}

/// The lines of the section SH, or the list entry "It Cm NAME", up to the next of its kind.
inline std::vector<std::string> partOf(const std::string& text, const std::string& begin,
                                       const std::vector<std::string>& ends) {
    std::vector<std::string> part;
    bool isIn = false;
    for (const std::string& line : linesOf(text)) {
        if (isIn && std::any_of(ends.begin(), ends.end(), [&line](const std::string& end) {
                return line.compare(0, end.size(), end) == 0;
            }))
            return part;
        if (isIn) part.push_back(line);
        isIn = isIn || line == begin || line.compare(0, begin.size() + 1, begin + " ") == 0;
    }
    return part;
}

}  // namespace thermika_test
