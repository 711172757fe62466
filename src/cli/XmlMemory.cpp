// See the header.
#include "cli/XmlMemory.h"

#include <libxml/xmlmemory.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "cli/Command.h"
#include "cli/Output.h"

namespace thermika::cli {

namespace {

/// Ends the process when it is null.
void* ensured(void* memory) {
    if (memory != nullptr) return memory;
    Output::complainOfMemory();
    _exit(static_cast<int>(Status::kFailed));
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc): libxml2 calls these in place of the C library's.
void* allocate(std::size_t size) { return ensured(std::malloc(size)); }

void* reallocate(void* memory, std::size_t size) {
    return ensured(std::realloc(memory, std::max<std::size_t>(size, 1)));
}

char* duplicate(const char* text) { return static_cast<char*>(ensured(strdup(text))); }
// NOLINTEND(cppcoreguidelines-no-malloc)

}  // namespace

void endWithoutXmlMemory() { xmlMemSetup(std::free, allocate, reallocate, duplicate); }

}  // namespace thermika::cli
