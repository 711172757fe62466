// Reading the entries of a directory that is open already.
#pragma once

#include <dirent.h>

#include <memory>

#include "fetch/Descriptor.h"

namespace thermika::fetch {

struct CloseDirectory {
    void operator()(DIR* entries) const { closedir(entries); }
};
using DirectoryStream = std::unique_ptr<DIR, CloseDirectory>;

/// Reads with `directory`'s own position. Null, with errno, when it is no directory; errno stays as
/// it was when nothing is open.
inline DirectoryStream openStream(Descriptor directory) {
    if (!directory.isOpen()) return nullptr;
    DIR* const entries = fdopendir(directory.get());
    if (entries != nullptr) directory.release();
    return DirectoryStream(entries);
}

}  // namespace thermika::fetch
