// Copying a camera's files out of a tree of folders.
#pragma once

#include "fetch/Call.h"

namespace thermika::fetch {

/// Gives every wanted file of `call` its outcome, or `call` its problem. In a plan nothing is
/// copied.
void fetchFromFolder(const Folder& folder, Call& call);

}  // namespace thermika::fetch
