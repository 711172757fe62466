// Proving that files may be created in a directory, by creating one.
#pragma once

#include <string>

namespace dax {

/// 0 when a file could be created in `directory`, else the error number.
/// Process: creates or empties ".thermika_access" there and removes it; a link of that name is
/// followed when emptying, and removed itself.
int accessError(const std::string& directory);

}  // namespace dax
