// The literal tags that the searches look for.
#pragma once

#include <string>

#include "sdk/xml/TagSearch.h"

namespace thermika_test {

inline std::string tagOf(const std::string& name, dax::TagKind kind) {
    return (kind == dax::TagKind::kOpening ? "<" : "</") + name + ">";
}

}  // namespace thermika_test
