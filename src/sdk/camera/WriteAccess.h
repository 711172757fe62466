// Proving that a directory takes files, by writing one.
#pragma once

#include <string>

namespace dax {

/// 0 when ".thermika_access" in `directory` could be opened for writing, else the error number.
/// Process: creates or empties that file and removes it where that may be done; a link of that name
/// is followed when emptying, and removed itself.
int writeAccessError(const std::string& directory);

}  // namespace dax
