// Which element somebody may have meant who misspelt its name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/ValidateSchema.h"

namespace thermika::cli {

/// The element whose name differs from `name` in the fewest letters; "" when in more than a third
/// of its own.
std::string nearestName(std::string_view name, const std::vector<SchemaElement>& elements);

}  // namespace thermika::cli
