// One thing that is wrong with a configuration document.
#pragma once

#include <string>

namespace thermika::cli {

/// The texts may hold bytes of the document as they stand: escape them before a person sees them.
struct Finding {
    long line = 0;      ///< in the document, from 1 on
    std::string wrong;  ///< `<focus> holds "101"`
    std::string right;  ///< `give a number from 0 to 100`
};

}  // namespace thermika::cli
