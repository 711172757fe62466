// Counts letters to change, to add and to leave out.
#include "cli/ValidateNames.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace thermika::cli {

namespace {

constexpr std::size_t kMostLetters = 64;  // a longer name is none of ours

std::size_t lettersApart(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string nearestName(std::string_view name, const std::vector<SchemaElement>& elements) {
    std::string nearest;
    if (name.size() > kMostLetters) return nearest;
    std::size_t fewest = kMostLetters;
    for (const SchemaElement& element : elements) {
        const std::size_t apart = lettersApart(name, element.name);
        if (apart * 3 > element.name.size() || apart >= fewest) continue;
        fewest = apart;
        nearest = element.name;
    }
    return nearest;
}

}  // namespace thermika::cli
