// What libxml2 does when memory runs out.
#pragma once

namespace thermika::cli {

/// Before the first use of libxml2: from now on the process ends, with its message and status, where
/// libxml2 gets no memory. Left alone it goes on without: it judges half a document or crashes.
void endWithoutXmlMemory();

}  // namespace thermika::cli
