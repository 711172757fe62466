// What libxml2 does when memory runs out.
#pragma once

namespace thermika::cli {

/// Before the first use of libxml2: from now on the process ends where libxml2 gets no memory, as
/// the companion ends then. Left alone it goes on without: it judges half a document or crashes.
void endWithoutXmlMemory();

}  // namespace thermika::cli
