// Opening a name in a folder that somebody else writes to: only where a regular file lies there.
#pragma once

#include <cstdint>
#include <string>

#include "fetch/Descriptor.h"

namespace thermika::fetch {

struct RegularFile {
    Descriptor file;          ///< to be read; closed when it cannot be
    std::uint64_t bytes = 0;  ///< its size
    std::string problem;      ///< why it cannot be read, in English; "" when it is open
};

/// The file `name` in `folder`. Anything else there is neither followed nor opened: a FIFO's writer
/// keeps waiting, and a device does not start.
RegularFile openRegularFile(int folder, const std::string& name);

}  // namespace thermika::fetch
