// Searching a tree of folders that somebody else made, and may be changing: no link is followed,
// no file is opened, and nothing but the tree's size bounds how deep it goes.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "fetch/Descriptor.h"
#include "fetch/Stop.h"

namespace thermika::fetch {

/// What the walk shows of an entry that is no folder.
struct FolderEntry {
    int folder;        ///< descriptor of the folder that it is in
    std::string name;  ///< in that folder
    std::string path;  ///< below what the walk was given, which is its beginning
};

struct WalkResult {
    std::string problem;             ///< why there was no walk; "" otherwise
    std::size_t foldersSkipped = 0;  ///< that could not be read
    std::string firstSkipped;        ///< the first of them and why; "" without
};

/// Opens `root`, which may be a link. Closed when that went wrong, which `problem` then tells.
Descriptor openRoot(const std::string& root, std::string& problem);

/// Shows each entry that `isWanted` says yes to: a folder's own by the bytes of their names, then
/// those of its subfolders, in the same order. Ends early when `visit` answers false or `stop` is
/// due. `root` is opened as by openRoot().
WalkResult walkFolder(const std::string& root,
                      const std::function<bool(const std::string& name)>& isWanted,
                      const std::function<bool(const FolderEntry&)>& visit, const Stop& stop);

}  // namespace thermika::fetch
